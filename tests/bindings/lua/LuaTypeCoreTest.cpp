#include "bindings/lua/types/LuaTypeCore.h"

#include <gtest/gtest.h>

#include <memory>

namespace tbScripts::test
{

class LuaTypeCoreTest : public ::testing::Test
{
protected:
    LuaTypeCoreTest() { m_core->setTable(&m_table); }

    ~LuaTypeCoreTest() override { m_handle.close(); }

    const tbMemory::String* find() const { return m_handle.getSlot()->findType(&m_table); }

    const char m_table = 0; // only its address counts
    lua::LuaStateHandle m_handle = lua::LuaStateHandle::open();
    std::unique_ptr<lua::LuaTypeCore> m_core = std::make_unique<lua::LuaTypeCore>(m_handle, "T");
};

TEST_F(LuaTypeCoreTest, TableLeadsToTheNameOfItsType)
{
    ASSERT_NE(find(), nullptr);
    EXPECT_EQ(*find(), "T");
}

TEST_F(LuaTypeCoreTest, ForgottenTableIsThatOfNoType)
{
    m_core->forgetTable();
    EXPECT_EQ(find(), nullptr);
    EXPECT_EQ(m_core->table, nullptr);
}

// Another table may lie in its place later.
TEST_F(LuaTypeCoreTest, TableIsForgottenWithTheCore)
{
    m_core.reset();
    EXPECT_EQ(find(), nullptr);
}

TEST_F(LuaTypeCoreTest, TableThatALaterTypeUsesIsLeftToThat)
{
    lua::LuaTypeCore later(m_handle, "T");
    later.setTable(&m_table);
    m_core.reset();
    EXPECT_EQ(find(), &later.fullName);
}

} // namespace tbScripts::test

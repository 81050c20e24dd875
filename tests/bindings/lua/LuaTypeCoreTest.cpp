#include "bindings/lua/types/LuaTypeCore.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace tbScripts::test
{

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;

class LuaTypeCoreTest : public ::testing::Test
{
protected:
    LuaTypeCoreTest()
    {
        m_core->setTable(&m_table);
        destroysInto(*m_core, m_destroyed);
    }

    ~LuaTypeCoreTest() override { m_handle.close(); }

    static void destroysInto(lua::LuaTypeCore& core, std::vector<void*>& destroyed)
    {
        core.destructor =
            makeCounted<lua::DestructorDefinition>(std::make_shared<const tbMemory::String>("T"));
        editDefinition(core.destructor).callable = [&destroyed](void* object)
        { destroyed.push_back(object); };
    }

    void own(void* object)
    {
        lua::LuaOwnedObjects& owned = m_core->identity->owned;
        owned.reserve(object); // the address of its instance does not matter
        owned.own(object, object);
    }

    const lua::LuaTypeIdentity* find() const { return m_handle.getSlot()->findType(&m_table); }

    const char m_table = 0; // only its address counts
    int m_object = 0;
    std::vector<void*> m_destroyed;
    lua::LuaStateHandle m_handle = lua::LuaStateHandle::open();
    std::unique_ptr<lua::LuaTypeCore> m_core = std::make_unique<lua::LuaTypeCore>(m_handle, "T");
};

TEST_F(LuaTypeCoreTest, TableLeadsToItsType)
{
    ASSERT_EQ(find(), m_core->identity.get());
    EXPECT_EQ(find()->fullName, "T");
}

// Another table may lie in its place later.
TEST_F(LuaTypeCoreTest, TableIsForgottenWithTheCore)
{
    m_core.reset();
    EXPECT_EQ(find(), nullptr);
}

TEST_F(LuaTypeCoreTest, TableIsSharedUntilTheLastCoreIsGone)
{
    auto later = std::make_unique<lua::LuaTypeCore>(m_handle, "T");
    later->setTable(&m_table);
    EXPECT_EQ(later->identity, m_core->identity);
    m_core.reset();
    EXPECT_EQ(find(), later->identity.get());
    later.reset();
    EXPECT_EQ(find(), nullptr);
}

TEST_F(LuaTypeCoreTest, ObjectsThatAreLeftAreDestroyedWithTheCore)
{
    own(&m_object);
    m_core.reset();
    EXPECT_THAT(m_destroyed, ElementsAre(&m_object));
}

TEST_F(LuaTypeCoreTest, ObjectsThatAreLeftAreDestroyedOnce)
{
    own(&m_object);
    m_core->destroyLeftObjects();
    m_core->destroyLeftObjects();
    m_core.reset();
    EXPECT_THAT(m_destroyed, ElementsAre(&m_object));
}

TEST_F(LuaTypeCoreTest, ObjectsOfASharedTableAreDestroyedByTheLastCore)
{
    std::vector<void*> destroyedLast;
    {
        lua::LuaTypeCore later(m_handle, "T");
        later.setTable(&m_table);
        destroysInto(later, destroyedLast);
        own(&m_object);
        m_core.reset();
        EXPECT_THAT(m_destroyed, IsEmpty());
    }
    EXPECT_THAT(destroyedLast, ElementsAre(&m_object));
}

TEST_F(LuaTypeCoreTest, DestructorThatThrowsKeepsNoOtherFromBeingCalled)
{
    int other = 0;
    editDefinition(m_core->destructor).callable = [this](void* object)
    {
        m_destroyed.push_back(object);
        throw 1;
    };
    own(&m_object);
    own(&other);
    m_core.reset();
    EXPECT_THAT(m_destroyed, UnorderedElementsAre(&m_object, &other));
}

} // namespace tbScripts::test

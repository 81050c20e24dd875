#include "core/lua/LuaTypeDirectory.h"

#include <gtest/gtest.h>

#include <array>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace tbScripts::test
{

class LuaTypeDirectoryTest : public ::testing::Test
{
protected:
    static constexpr std::size_t MANY = 5000;

    LuaTypeDirectoryTest()
    {
        for (const char& table : m_tables)
            m_types.push_back(std::make_unique<lua::LuaTypeIdentity>(&table, nameOf(&table)));
    }

    tbMemory::String nameOf(const char* table) const
    {
        return tbMemory::String(std::to_string(table - m_tables.data()));
    }

    // Adds `MANY` types, each with a table and a name of its own.
    void addMany()
    {
        for (const auto& type : m_types)
            m_directory.add(*type);
    }

    const lua::LuaTypeIdentity* find(std::size_t number) const
    {
        return m_directory.find(&m_tables[number]);
    }

    lua::LuaTypeDirectory m_directory;
    std::array<char, MANY> m_tables{}; // only their addresses count
    std::vector<std::unique_ptr<lua::LuaTypeIdentity>> m_types;
};

TEST_F(LuaTypeDirectoryTest, KnowsNothingAtFirst)
{
    EXPECT_EQ(find(0), nullptr);
    EXPECT_EQ(m_directory.find(nullptr), nullptr);
}

TEST_F(LuaTypeDirectoryTest, FindsTheTypeOfEachTable)
{
    addMany();

    for (std::size_t i = 0; i < MANY; ++i)
        ASSERT_EQ(find(i), m_types[i].get()) << i;
}

TEST_F(LuaTypeDirectoryTest, VisitsEachTypeOnce)
{
    addMany();
    std::set<const lua::LuaTypeIdentity*> visited;

    m_directory.forEach([&visited](const lua::LuaTypeIdentity& type)
                        { EXPECT_TRUE(visited.insert(&type).second); });

    EXPECT_EQ(visited.size(), MANY);
}

TEST_F(LuaTypeDirectoryTest, RemovingUnknownTypesDoesNothing)
{
    m_directory.remove(*m_types[0]);
    m_directory.add(*m_types[1]);
    m_directory.remove(*m_types[0]);
    const lua::LuaTypeIdentity twin(&m_tables[1], "1");
    m_directory.remove(twin);

    EXPECT_EQ(find(1), m_types[1].get());
}

// Whatever order they go in: those behind a gap have to be found all the same.
TEST_F(LuaTypeDirectoryTest, OthersAreFoundWhileTypesAreRemoved)
{
    constexpr std::size_t STEP = 1777; // has no divisor in common with the number
    addMany();

    for (std::size_t removed = 0; removed < MANY; ++removed)
    {
        const std::size_t gone = removed * STEP % MANY;
        m_directory.remove(*m_types[gone]);
        ASSERT_EQ(find(gone), nullptr) << gone;
        const std::size_t next = (removed + 1) * STEP % MANY;
        const std::size_t last = (MANY - 1) * STEP % MANY;
        if (removed + 1 < MANY)
        {
            ASSERT_EQ(find(next), m_types[next].get()) << next;
            ASSERT_EQ(find(last), m_types[last].get()) << last;
        }
    }
}

TEST_F(LuaTypeDirectoryTest, TypesCanBeAddedAgain)
{
    addMany();
    for (const auto& type : m_types)
        m_directory.remove(*type);

    addMany();

    EXPECT_EQ(find(MANY / 2), m_types[MANY / 2].get());
}

TEST_F(LuaTypeDirectoryTest, LaterTypeOfANameReplacesTheOneBefore)
{
    lua::LuaTypeIdentity second(&m_tables[1], "0");
    lua::LuaTypeIdentity third(&m_tables[2], "0");
    m_directory.add(*m_types[0]);
    EXPECT_FALSE(m_types[0]->isReplaced);

    m_directory.add(second);
    EXPECT_TRUE(m_types[0]->isReplaced);
    EXPECT_FALSE(second.isReplaced);
    EXPECT_EQ(find(0), m_types[0].get());

    m_directory.remove(*m_types[0]); // the name stays that of the second
    m_types[0].reset();
    m_directory.add(third);
    EXPECT_TRUE(second.isReplaced);
}

TEST_F(LuaTypeDirectoryTest, TypeAfterTheEndOfTheOneBeforeReplacesNone)
{
    m_directory.add(*m_types[0]);
    m_directory.remove(*m_types[0]);
    lua::LuaTypeIdentity second(&m_tables[1], "0");

    m_directory.add(second);

    EXPECT_FALSE(m_types[0]->isReplaced);
    EXPECT_FALSE(second.isReplaced);
}

} // namespace tbScripts::test

#include "core/lua/LuaTypeDirectory.h"

#include <gtest/gtest.h>

#include <array>
#include <deque>

namespace tbScripts::test
{

class LuaTypeDirectoryTest : public ::testing::Test
{
protected:
    static constexpr std::size_t MANY = 5000;

    struct Type final : lua::LuaTypeIdentity
    {
        Type()
            : LuaTypeIdentity("T")
        {
        }
    };

    LuaTypeDirectoryTest()
        : m_types(MANY)
    {
    }

    // Adds `MANY` tables, each of a type of its own.
    void addMany()
    {
        for (std::size_t i = 0; i < MANY; ++i)
            m_directory.add(&m_tables[i], m_types[i]);
    }

    lua::LuaTypeDirectory m_directory;
    std::array<char, MANY> m_tables{}; // only their addresses count
    std::deque<Type> m_types;
};

TEST_F(LuaTypeDirectoryTest, KnowsNothingAtFirst)
{
    EXPECT_EQ(m_directory.find(&m_tables[0]), nullptr);
    EXPECT_EQ(m_directory.find(nullptr), nullptr);
}

TEST_F(LuaTypeDirectoryTest, FindsTheTypeOfEachTable)
{
    addMany();

    for (std::size_t i = 0; i < MANY; ++i)
        ASSERT_EQ(m_directory.find(&m_tables[i]), &m_types[i]) << i;
}

TEST_F(LuaTypeDirectoryTest, TableIsRemovedUnlessItIsOfAnotherTypeByNow)
{
    m_directory.add(&m_tables[0], m_types[0]);
    m_directory.add(&m_tables[0], m_types[1]);
    EXPECT_EQ(m_directory.find(&m_tables[0]), &m_types[1]);

    m_directory.remove(&m_tables[0], m_types[0]);
    EXPECT_EQ(m_directory.find(&m_tables[0]), &m_types[1]);
    m_directory.remove(&m_tables[0], m_types[1]);

    EXPECT_EQ(m_directory.find(&m_tables[0]), nullptr);
}

TEST_F(LuaTypeDirectoryTest, RemovingUnknownTablesDoesNothing)
{
    m_directory.remove(&m_tables[0], m_types[0]);
    m_directory.add(&m_tables[1], m_types[1]);
    m_directory.remove(&m_tables[0], m_types[0]);

    EXPECT_EQ(m_directory.find(&m_tables[1]), &m_types[1]);
}

// Whatever order they go in: those behind a gap have to be found all the same.
TEST_F(LuaTypeDirectoryTest, OthersAreFoundWhileTablesAreRemoved)
{
    constexpr std::size_t STEP = 1777; // has no divisor in common with the number
    addMany();

    for (std::size_t removed = 0; removed < MANY; ++removed)
    {
        const std::size_t gone = removed * STEP % MANY;
        m_directory.remove(&m_tables[gone], m_types[gone]);
        ASSERT_EQ(m_directory.find(&m_tables[gone]), nullptr) << gone;
        const std::size_t next = (removed + 1) * STEP % MANY;
        const std::size_t last = (MANY - 1) * STEP % MANY;
        if (removed + 1 < MANY)
        {
            ASSERT_EQ(m_directory.find(&m_tables[next]), &m_types[next]) << next;
            ASSERT_EQ(m_directory.find(&m_tables[last]), &m_types[last]) << last;
        }
    }
}

TEST_F(LuaTypeDirectoryTest, TablesCanBeAddedAgain)
{
    addMany();
    for (std::size_t i = 0; i < MANY; ++i)
        m_directory.remove(&m_tables[i], m_types[i]);

    addMany();

    EXPECT_EQ(m_directory.find(&m_tables[MANY / 2]), &m_types[MANY / 2]);
}

} // namespace tbScripts::test

#include "core/lua/LuaTypeDirectory.h"

#include <gtest/gtest.h>

#include <array>
#include <vector>

namespace tbScripts::test
{

class LuaTypeDirectoryTest : public ::testing::Test
{
protected:
    static constexpr std::size_t MANY = 5000;

    // Adds `MANY` tables, each with a name of its own.
    void addMany()
    {
        for (std::size_t i = 0; i < MANY; ++i)
            m_directory.add(&m_tables[i], m_names[i]);
    }

    lua::LuaTypeDirectory m_directory;
    std::array<char, MANY> m_tables{}; // only their addresses count
    std::vector<tbMemory::String> m_names = std::vector<tbMemory::String>(MANY, "T");
};

TEST_F(LuaTypeDirectoryTest, KnowsNothingAtFirst)
{
    EXPECT_EQ(m_directory.find(&m_tables[0]), nullptr);
    EXPECT_EQ(m_directory.find(nullptr), nullptr);
}

TEST_F(LuaTypeDirectoryTest, FindsTheNameOfEachTable)
{
    addMany();

    for (std::size_t i = 0; i < MANY; ++i)
        ASSERT_EQ(m_directory.find(&m_tables[i]), &m_names[i]) << i;
}

TEST_F(LuaTypeDirectoryTest, TableIsRemovedUnlessItHasAnotherNameByNow)
{
    m_directory.add(&m_tables[0], m_names[0]);
    m_directory.add(&m_tables[0], m_names[1]);
    EXPECT_EQ(m_directory.find(&m_tables[0]), &m_names[1]);

    m_directory.remove(&m_tables[0], m_names[0]);
    EXPECT_EQ(m_directory.find(&m_tables[0]), &m_names[1]);
    m_directory.remove(&m_tables[0], m_names[1]);

    EXPECT_EQ(m_directory.find(&m_tables[0]), nullptr);
}

TEST_F(LuaTypeDirectoryTest, RemovingUnknownTablesDoesNothing)
{
    m_directory.remove(&m_tables[0], m_names[0]);
    m_directory.add(&m_tables[1], m_names[1]);
    m_directory.remove(&m_tables[0], m_names[0]);

    EXPECT_EQ(m_directory.find(&m_tables[1]), &m_names[1]);
}

// Whatever order they go in: those behind a gap have to be found all the same.
TEST_F(LuaTypeDirectoryTest, OthersAreFoundWhileTablesAreRemoved)
{
    constexpr std::size_t STEP = 1777; // has no divisor in common with the number
    addMany();

    for (std::size_t removed = 0; removed < MANY; ++removed)
    {
        const std::size_t gone = removed * STEP % MANY;
        m_directory.remove(&m_tables[gone], m_names[gone]);
        ASSERT_EQ(m_directory.find(&m_tables[gone]), nullptr) << gone;
        const std::size_t next = (removed + 1) * STEP % MANY;
        const std::size_t last = (MANY - 1) * STEP % MANY;
        if (removed + 1 < MANY)
        {
            ASSERT_EQ(m_directory.find(&m_tables[next]), &m_names[next]) << next;
            ASSERT_EQ(m_directory.find(&m_tables[last]), &m_names[last]) << last;
        }
    }
}

TEST_F(LuaTypeDirectoryTest, TablesCanBeAddedAgain)
{
    addMany();
    for (std::size_t i = 0; i < MANY; ++i)
        m_directory.remove(&m_tables[i], m_names[i]);

    addMany();

    EXPECT_EQ(m_directory.find(&m_tables[MANY / 2]), &m_names[MANY / 2]);
}

} // namespace tbScripts::test

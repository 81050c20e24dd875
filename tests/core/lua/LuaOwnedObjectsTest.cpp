#include "core/lua/LuaOwnedObjects.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <vector>

namespace tbScripts::test
{

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class LuaOwnedObjectsTest : public ::testing::Test
{
protected:
    void own(std::size_t number)
    {
        m_owned.reserve(&m_blocks[number]);
        m_owned.own(&m_blocks[number], &m_objects[number]);
    }

    std::vector<void*> drain()
    {
        std::vector<void*> drained;
        m_owned.drain([&drained](void* object) { drained.push_back(object); });
        return drained;
    }

    lua::LuaOwnedObjects m_owned;
    std::array<char, 100> m_blocks{}; // only their addresses count
    std::array<int, 100> m_objects{};
};

TEST_F(LuaOwnedObjectsTest, HoldsNothingAtFirst)
{
    EXPECT_FALSE(m_owned.remove(&m_blocks[0]));
    EXPECT_THAT(drain(), IsEmpty());
}

TEST_F(LuaOwnedObjectsTest, ObjectIsRemovedOnce)
{
    own(0);
    own(1);
    EXPECT_TRUE(m_owned.remove(&m_blocks[0]));
    EXPECT_FALSE(m_owned.remove(&m_blocks[0]));
    EXPECT_THAT(drain(), ElementsAre(&m_objects[1]));
    EXPECT_THAT(drain(), IsEmpty());
}

TEST_F(LuaOwnedObjectsTest, RoomAloneDestroysNothing)
{
    m_owned.reserve(&m_blocks[0]);
    EXPECT_THAT(drain(), IsEmpty());
}

TEST_F(LuaOwnedObjectsTest, RoomCanBeGivenBack)
{
    m_owned.reserve(&m_blocks[0]);
    EXPECT_TRUE(m_owned.remove(&m_blocks[0]));
    EXPECT_FALSE(m_owned.remove(&m_blocks[0]));
}

TEST_F(LuaOwnedObjectsTest, AllThatAreListedAreDrainedOnceEach)
{
    std::vector<void*> expected;
    for (std::size_t i = 0; i < m_blocks.size(); ++i)
    {
        own(i);
        expected.push_back(&m_objects[i]);
    }
    EXPECT_THAT(drain(), ::testing::UnorderedElementsAreArray(expected));
}

TEST_F(LuaOwnedObjectsTest, WhatIsListedMeanwhileIsDrainedToo)
{
    own(0);
    std::vector<void*> drained;
    m_owned.drain(
        [&](void* object)
        {
            drained.push_back(object);
            if (drained.size() == 1)
                own(1);
        });
    EXPECT_THAT(drained, ElementsAre(&m_objects[0], &m_objects[1]));
}

} // namespace tbScripts::test

// What is taken out of compiled code; whether it is whole is tested beside its first user.

#include "environments/lua/chunks/LuaDump.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <string>

namespace tbScripts::test
{

using namespace std::string_literals;

TEST(LuaDumpTest, TailIsTheLastFunctionWithTheEnd)
{
    const std::string chunk = "\x1BLJ\x02\x08\x01n\x01"
                              "a"
                              "\x02"
                              "bc"
                              "\0"s;

    const lua::LuaDumpTail tail = lua::tailOf(chunk);

    EXPECT_EQ(tail.bytes, chunk.substr(chunk.size() - 4));
    EXPECT_EQ(tail.flags, 8U);
}

TEST(LuaDumpTest, DumpsThatAreNotWholeOrNotTheLastBytesHaveNoTail)
{
    const std::string chunk = "\x1BLJ\x02\x02\x01"
                              "a"
                              "\0"s;
    ASSERT_FALSE(lua::tailOf(chunk).bytes.empty());

    for (std::size_t size = 0; size < chunk.size(); ++size)
        EXPECT_TRUE(lua::tailOf(chunk.substr(0, size)).bytes.empty()) << size;
    EXPECT_TRUE(lua::tailOf(chunk + "x").bytes.empty());
    EXPECT_TRUE(lua::tailOf("\x1BLJ\x02\x02\0"s).bytes.empty()); // without functions
}

TEST(LuaDumpTest, NameIsNoFunctionAndMayBeEmpty)
{
    const std::string named = "\x1BLJ\x02\x08\x01n\0"s;
    const std::string unnamed = "\x1BLJ\x02\x08\0\x01"
                                "a"
                                "\0"s;

    EXPECT_TRUE(lua::tailOf(named).bytes.empty());
    EXPECT_EQ(lua::tailOf(unnamed).bytes, unnamed.substr(unnamed.size() - 3));
    EXPECT_FALSE(lua::isWholeDump(unnamed.substr(0, unnamed.size() - 1)));
}

TEST(LuaDumpTest, FrontIsAllButTheEnd)
{
    const std::string chunk = "\x1BLJ\x02\x02\x01"
                              "a"
                              "\0"s;
    const std::string front = chunk.substr(0, chunk.size() - 1);
    constexpr std::uint64_t FOREIGN_FUNCTIONS = 4;

    EXPECT_EQ(lua::frontForTail(chunk, 2), front);
    EXPECT_EQ(lua::frontForTail(chunk, 2 | FOREIGN_FUNCTIONS), front);
    EXPECT_TRUE(lua::frontForTail(chunk, 0).empty());
    EXPECT_TRUE(lua::frontForTail(front, 2).empty());
    EXPECT_TRUE(lua::frontForTail(chunk.substr(0, 4), 2).empty());
    EXPECT_TRUE(lua::frontForTail("", 2).empty());
}

} // namespace tbScripts::test

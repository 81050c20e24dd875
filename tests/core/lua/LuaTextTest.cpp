#include "core/lua/LuaText.h"

#include "core/lua/LuaErrorText.h"
#include "core/lua/LuaNumber.h"
#include "support/InjectedAllocator.h"
#include "support/LuaStateFixture.h"
#include "support/RowName.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

namespace tbScripts::test
{

namespace
{

class LuaTextTest : public LuaStateFixture
{
protected:
    // The text on top of the stack, which is popped.
    std::string popText()
    {
        std::size_t size = 0;
        const char* const data = lua_tolstring(state(), -1, &size);
        const std::string text = data ? std::string(data, size) : "no text";
        lua_pop(state(), 1);
        return text;
    }
};

TEST_F(LuaTextTest, EndsAtItsFirstZeroOrTheEndOfItsView)
{
    EXPECT_EQ(lua::upToFirstNul(tbMemory::StringView("one\0two\0", 8)), "one");
    EXPECT_EQ(lua::upToFirstNul(tbMemory::StringView("\0one", 4)), "");
    EXPECT_EQ(lua::upToFirstNul(tbMemory::StringView("onetwo", 3)), "one");
}

TEST_F(LuaTextTest, EveryZeroOfEveryLengthIsFound)
{
    for (std::size_t size = 0; size < 140; ++size)
    {
        std::string text(size, '\x80'); // its top bit set, as the search for zeros looks at those
        EXPECT_EQ(lua::upToFirstNul(tbMemory::StringView(text.data(), size)).size(), size);
        for (std::size_t position = 0; position < size; ++position)
        {
            text[position] = '\0';
            EXPECT_EQ(lua::upToFirstNul(tbMemory::StringView(text.data(), size)).size(), position);
            text[position] = '\x01';
        }
    }
}

TEST_F(LuaTextTest, ReadsNoByteBehindAViewThatIsNotTerminated)
{
    const std::vector<char> bytes = {'o', 'n', 'e'};

    EXPECT_EQ(lua::upToFirstNul(tbMemory::StringView(bytes.data(), bytes.size())), "one");
}

TEST_F(LuaTextTest, NullTextStaysNull)
{
    EXPECT_TRUE(lua::upToFirstNul(tbMemory::StringView()).isNull());
    EXPECT_FALSE(lua::upToFirstNul("").isNull());
}

TEST_F(LuaTextTest, NamesAndStringsArePushedUpToTheirFirstZero)
{
    lua::pushName(state(), tbMemory::StringView("one\0two", 7));
    EXPECT_EQ(popText(), "one");
    lua::pushText(state(), tbMemory::StringView("three\0four", 10));
    EXPECT_EQ(popText(), "three");
}

TEST_F(LuaTextTest, NullIsPushedAsTheEmptyNameButAsNoString)
{
    lua::pushName(state(), tbMemory::StringView());
    lua::pushText(state(), "");
    lua::pushText(state(), tbMemory::StringView());

    EXPECT_TRUE(lua_isnil(state(), -1));
    lua_pop(state(), 1);
    for (int i = 0; i < 2; ++i)
    {
        ASSERT_EQ(lua_type(state(), -1), LUA_TSTRING);
        EXPECT_EQ(popText(), "");
    }
}

TEST_F(LuaTextTest, StringsAreReadWithAllTheirBytesNumbersAsStringsAndOtherValuesAsNull)
{
    push("return 'one\\0two\\255'");
    EXPECT_EQ(lua::textAt(state(), -1), tbMemory::StringView("one\0two\xff", 8));
    push("return 2.5");
    EXPECT_EQ(lua::textAt(state(), -1), "2.5");
    EXPECT_EQ(lua_type(state(), -1), LUA_TSTRING);
    push("return {}");
    EXPECT_TRUE(lua::textAt(state(), -1).isNull());
    lua_settop(state(), 0);
}

constexpr double INFINITE = std::numeric_limits<double>::infinity();
constexpr double NOT_A_NUMBER = std::numeric_limits<double>::quiet_NaN();

struct Conversion
{
    const char* row;
    double number;
    int truncated;
    int lowBits;
};

using LuaNumberToIntTest = OnRows<::testing::Test, Conversion>;

ROWS(
    LuaNumberToIntTest,
    {"Zero", 0.0, 0, 0},
    {"NegativeZero", -0.0, 0, 0},
    {"Whole", 7.0, 7, 7},
    {"Fraction", 2.99, 2, 2},
    {"NegativeFraction", -2.99, -2, -2},
    {"LessThanOne", -0.5, 0, 0},
    {"Highest", 2147483647.0, 2147483647, 2147483647},
    {"FractionAboveHighest", 2147483647.5, 2147483647, 2147483647},
    {"OneAboveHighest", 2147483648.0, 2147483647, -2147483647 - 1},
    {"Lowest", -2147483648.0, -2147483647 - 1, -2147483647 - 1},
    {"FractionBelowLowest", -2147483648.5, -2147483647 - 1, -2147483647 - 1},
    {"OneBelowLowest", -2147483649.0, -2147483647 - 1, 2147483647},
    {"AllBitsOf32", 4294967295.0, 2147483647, -1},
    {"OneAbove32Bits", 4294967297.0, 2147483647, 1},
    {"OneBelow32Bits", -4294967297.0, -2147483647 - 1, -1},
    {"HighestOf64Bits", 9223372036854774784.0, 2147483647, -1024},
    {"Above64Bits", 9223372036854775808.0, 2147483647, 0},
    {"LowestOf64Bits", -9223372036854775808.0, -2147483647 - 1, 0},
    {"Huge", 1e300, 2147483647, 0},
    {"NegativeHuge", -1e300, -2147483647 - 1, 0},
    {"Infinite", INFINITE, 2147483647, 0},
    {"NegativeInfinite", -INFINITE, -2147483647 - 1, 0},
    {"NotANumber", NOT_A_NUMBER, 0, 0});

TEST_P(LuaNumberToIntTest, TruncatesTowardZeroAndSaturatesOrKeepsTheLowBits)
{
    EXPECT_EQ(lua::truncateToInt(GetParam().number), GetParam().truncated);
    EXPECT_EQ(lua::lowBitsToInt(GetParam().number), GetParam().lowBits);
}

TEST(LuaNumberToFloatTest, KeepsWhatAFloatCanHoldAndRounds)
{
    EXPECT_EQ(lua::narrowToFloat(0.5), 0.5F);
    EXPECT_EQ(lua::narrowToFloat(-3.0), -3.0F);
    EXPECT_EQ(lua::narrowToFloat(0.1), 0.1F);
    EXPECT_EQ(lua::narrowToFloat(1e-60), 0.0F);
    EXPECT_TRUE(std::isnan(lua::narrowToFloat(NOT_A_NUMBER)));
}

TEST(LuaNumberToFloatTest, IsInfiniteFromHalfAStepAboveTheLargestFloatOn)
{
    constexpr float INFINITE_FLOAT = std::numeric_limits<float>::infinity();
    EXPECT_EQ(lua::narrowToFloat(3.4028234663852886e38), 3.4028234663852886e38F);
    EXPECT_EQ(lua::narrowToFloat(-3.4028234663852886e38), -3.4028234663852886e38F);
    EXPECT_EQ(lua::narrowToFloat(3.4028235e38), 3.4028234663852886e38F);
    EXPECT_EQ(lua::narrowToFloat(-3.4028235e38), -3.4028234663852886e38F);

    EXPECT_EQ(lua::narrowToFloat(3.4028235677973366e38), INFINITE_FLOAT);
    EXPECT_EQ(lua::narrowToFloat(1e39), INFINITE_FLOAT);
    EXPECT_EQ(lua::narrowToFloat(-1e39), -INFINITE_FLOAT);
    EXPECT_EQ(lua::narrowToFloat(INFINITE), INFINITE_FLOAT);
}

struct ErrorValue
{
    const char* row;
    const char* code; // returns the error value
    std::string text;
};

using test::operator<<;

using LuaErrorTextTest = OnRows<LuaStateFixture, ErrorValue>;

ROWS(
    LuaErrorTextTest,
    {"Text", "return 'out of fuel'", "out of fuel"},
    {"EmptyText", "return ''", ""},
    {"TextWithAZero", "return 'a\\0b'", std::string("a\0b", 3)},
    {"WholeNumber", "return 42", "42"},
    {"NegativeFraction", "return -0.5", "-0.5"},
    {"LongFraction", "return 1 / 3", "0.33333333333333"},
    {"LargeNumber", "return 1e300", "1e+300"},
    {"Infinity", "return math.huge", "inf"},
    {"NegativeInfinity", "return -math.huge", "-inf"},
    {"NotANumber", "return 0/0", "nan"},
    {"Nil", "return nil", "(error object is a nil value)"},
    {"Boolean", "return false", "(error object is a boolean value)"},
    {"Table", "return {}", "(error object is a table value)"},
    {"Function", "return print", "(error object is a function value)"},
    {"Userdata", "return newproxy()", "(error object is a userdata value)"},
    {"Coroutine", "return coroutine.create(print)", "(error object is a thread value)"},
    {"TableWithATextOfItsOwn",
     "return setmetatable({}, { __tostring = function() return 'hidden' end })",
     "(error object is a table value)"},
    {"ForeignInteger",
     "return require('ffi').new('int64_t', 7)",
     "(error object is a cdata value)"});

TEST_P(LuaErrorTextTest, IsTheStringOrTheKindWithoutAnAllocationOrAChange)
{
    push(GetParam().code);
    const int type = lua_type(state(), -1);
    InjectedAllocator allocator(state());
    allocator.refuseAfter(0);

    EXPECT_EQ(lua::errorTextAt(state(), -1), GetParam().text);

    EXPECT_FALSE(allocator.hasRefused());
    allocator.allowAll();
    EXPECT_EQ(lua_gettop(state()), 1);
    EXPECT_EQ(lua_type(state(), -1), type);
    lua_settop(state(), 0);
}

} // namespace

} // namespace tbScripts::test

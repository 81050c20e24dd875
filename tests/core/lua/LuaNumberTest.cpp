#include "core/lua/LuaNumber.h"

#include "support/RowName.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <ostream>

namespace tbScripts::test
{

namespace
{

constexpr double INFINITE = std::numeric_limits<double>::infinity();
constexpr double NOT_A_NUMBER = std::numeric_limits<double>::quiet_NaN();

struct Conversion
{
    const char* row;
    double number;
    int truncated;
    int lowBits;
};

void PrintTo(const Conversion& conversion, std::ostream* stream) // the framework's name for this
{
    *stream << conversion.number;
}

} // namespace

class LuaNumberToIntTest : public ::testing::TestWithParam<Conversion>
{
};

INSTANTIATE_TEST_SUITE_P(
    Numbers,
    LuaNumberToIntTest,
    ::testing::Values(
        Conversion{"Zero", 0.0, 0, 0},
        Conversion{"NegativeZero", -0.0, 0, 0},
        Conversion{"Whole", 7.0, 7, 7},
        Conversion{"Fraction", 2.99, 2, 2},
        Conversion{"NegativeFraction", -2.99, -2, -2},
        Conversion{"LessThanOne", -0.5, 0, 0},
        Conversion{"Highest", 2147483647.0, 2147483647, 2147483647},
        Conversion{"FractionAboveHighest", 2147483647.5, 2147483647, 2147483647},
        Conversion{"OneAboveHighest", 2147483648.0, 2147483647, -2147483647 - 1},
        Conversion{"Lowest", -2147483648.0, -2147483647 - 1, -2147483647 - 1},
        Conversion{"FractionBelowLowest", -2147483648.5, -2147483647 - 1, -2147483647 - 1},
        Conversion{"OneBelowLowest", -2147483649.0, -2147483647 - 1, 2147483647},
        Conversion{"AllBitsOf32", 4294967295.0, 2147483647, -1},
        Conversion{"OneAbove32Bits", 4294967297.0, 2147483647, 1},
        Conversion{"OneBelow32Bits", -4294967297.0, -2147483647 - 1, -1},
        Conversion{"HighestOf64Bits", 9223372036854774784.0, 2147483647, -1024},
        Conversion{"Above64Bits", 9223372036854775808.0, 2147483647, 0},
        Conversion{"LowestOf64Bits", -9223372036854775808.0, -2147483647 - 1, 0},
        Conversion{"Huge", 1e300, 2147483647, 0},
        Conversion{"NegativeHuge", -1e300, -2147483647 - 1, 0},
        Conversion{"Infinite", INFINITE, 2147483647, 0},
        Conversion{"NegativeInfinite", -INFINITE, -2147483647 - 1, 0},
        Conversion{"NotANumber", NOT_A_NUMBER, 0, 0}),
    RowName());

TEST_P(LuaNumberToIntTest, TruncatesTowardZeroAndSaturates)
{
    EXPECT_EQ(lua::truncateToInt(GetParam().number), GetParam().truncated);
}

TEST_P(LuaNumberToIntTest, KeepsTheLowBitsOfThe64BitInteger)
{
    EXPECT_EQ(lua::lowBitsToInt(GetParam().number), GetParam().lowBits);
}

TEST(LuaNumberToFloatTest, KeepsWhatAFloatCanHold)
{
    EXPECT_EQ(lua::narrowToFloat(0.5), 0.5F);
    EXPECT_EQ(lua::narrowToFloat(-3.0), -3.0F);
    EXPECT_EQ(lua::narrowToFloat(0.1), 0.1F);
}

TEST(LuaNumberToFloatTest, LargestFloatIsKept)
{
    EXPECT_EQ(lua::narrowToFloat(3.4028234663852886e38), 3.4028234663852886e38F);
    EXPECT_EQ(lua::narrowToFloat(-3.4028234663852886e38), -3.4028234663852886e38F);
}

TEST(LuaNumberToFloatTest, NumbersThatRoundToTheLargestFloatAreNotInfinite)
{
    EXPECT_EQ(lua::narrowToFloat(3.4028235e38), 3.4028234663852886e38F);
    EXPECT_EQ(lua::narrowToFloat(-3.4028235e38), -3.4028234663852886e38F);
}

TEST(LuaNumberToFloatTest, IsInfiniteFromHalfAStepAboveTheLargestOn)
{
    EXPECT_EQ(lua::narrowToFloat(3.4028235677973366e38), std::numeric_limits<float>::infinity());
}

TEST(LuaNumberToFloatTest, IsInfiniteBeyondTheRange)
{
    EXPECT_EQ(lua::narrowToFloat(1e39), std::numeric_limits<float>::infinity());
    EXPECT_EQ(lua::narrowToFloat(-1e39), -std::numeric_limits<float>::infinity());
    EXPECT_EQ(lua::narrowToFloat(INFINITE), std::numeric_limits<float>::infinity());
}

TEST(LuaNumberToFloatTest, IsZeroBelowTheSmallest)
{
    EXPECT_EQ(lua::narrowToFloat(1e-60), 0.0F);
}

TEST(LuaNumberToFloatTest, NotANumberStaysNone)
{
    EXPECT_TRUE(std::isnan(lua::narrowToFloat(NOT_A_NUMBER)));
}

} // namespace tbScripts::test

// Globals that the host sets and reads, kind by kind.

#include "support/EnvironmentFixture.h"

#include <cmath>
#include <cstring>
#include <limits>

namespace tbScripts::test
{

using ::testing::ElementsAre;

// An expression; the interpreter itself makes such values here only.
constexpr const char* LIGHT_USERDATA =
    "(function() local x  return debug.upvalueid(function() return x end, 1) end)()";

class EnvironmentGlobalsTest : public EnvironmentFixture
{
};

namespace
{

// What a script sees of what the host set.
struct SetRow
{
    const char* name;
    std::function<void(Environment&)> set; // sets global v
    const char* expectation;               // of a script
};

void PrintTo(const SetRow& row, std::ostream* stream)
{
    *stream << row.name;
}

double injectedNan()
{
    const std::uint64_t bits = 0xFFFFFFFFFFFFFFFFU;
    double number = 0;
    std::memcpy(&number, &bits, sizeof(number));
    return number;
}

} // namespace

class EnvironmentSetVarTest : public EnvironmentFixture,
                              public ::testing::WithParamInterface<SetRow>
{
};

TEST_P(EnvironmentSetVarTest, IsSeenByScripts)
{
    GetParam().set(environment());

    run(std::string("assert(") + GetParam().expectation + ")");
}

INSTANTIATE_TEST_SUITE_P(
    Values,
    EnvironmentSetVarTest,
    ::testing::Values(
        SetRow{"True", [](Environment& world) { world.setVar("v", true); }, "v == true"},
        SetRow{"False", [](Environment& world) { world.setVar("v", false); }, "v == false"},
        SetRow{"Int", [](Environment& world) { world.setVar("v", 42); }, "v == 42"},
        SetRow{
            "LowestInt",
            [](Environment& world) { world.setVar("v", std::numeric_limits<int>::min()); },
            "v == -2147483648"},
        SetRow{
            "HighestInt",
            [](Environment& world) { world.setVar("v", std::numeric_limits<int>::max()); },
            "v == 2147483647"},
        SetRow{
            "FloatIsWidened",
            [](Environment& world) { world.setVar("v", 0.1F); },
            "v == 0.100000001490116119384765625"},
        SetRow{"Double", [](Environment& world) { world.setVar("v", 0.1); }, "v == 0.1"},
        SetRow{
            "Infinity",
            [](Environment& world) { world.setVar("v", std::numeric_limits<double>::infinity()); },
            "v == math.huge"},
        SetRow{
            "NotANumber",
            [](Environment& world) { world.setVar("v", injectedNan()); },
            "type(v) == 'number' and v ~= v"},
        SetRow{"Text", [](Environment& world) { world.setVar("v", "text"); }, "v == 'text'"},
        SetRow{"EmptyText", [](Environment& world) { world.setVar("v", ""); }, "v == ''"},
        SetRow{
            "TextView",
            [](Environment& world) { world.setVar("v", tbMemory::StringView("textual", 4)); },
            "v == 'text'"},
        SetRow{
            "TextEndsAtItsFirstNul",
            [](Environment& world) { world.setVar("v", tbMemory::StringView("te\0xt", 5)); },
            "v == 'te'"},
        SetRow{
            "EmptyTextView",
            [](Environment& world) { world.setVar("v", tbMemory::StringView("", 0)); },
            "v == ''"},
        SetRow{
            "NumericTextStaysText",
            [](Environment& world) { world.setVar("v", "12"); },
            "v == '12'"}),
    [](const auto& row) { return std::string(row.param.name); });

// A null text is no text: the global is gone afterwards, not empty.
TEST_F(EnvironmentGlobalsTest, NullTextIsNil)
{
    environment().setVar("v", 1);

    environment().setVar("v", static_cast<const char*>(nullptr));

    EXPECT_FALSE(environment().isVarSet("v"));
}

TEST_F(EnvironmentGlobalsTest, NullTextViewIsNil)
{
    environment().setVar("v", 1);

    environment().setVar("v", tbMemory::StringView());

    EXPECT_FALSE(environment().isVarSet("v"));
}

TEST_F(EnvironmentGlobalsTest, SettingReplacesAValueOfAnotherKind)
{
    environment().setVar("v", "text");

    environment().setVar("v", 2);

    EXPECT_EQ(environment().getVar("v", -1), 2);
}

namespace
{

// What each form of reading makes of one and the same global.
struct ReadRow
{
    const char* name;
    const char* value; // an expression
    bool isSet;
    bool asBool; // the default is true
    int asInt;   // the default is 77, as for the next two
    float asFloat;
    double asDouble;
    std::string asText; // the default is "else"
};

void PrintTo(const ReadRow& row, std::ostream* stream)
{
    *stream << row.name;
}

} // namespace

class EnvironmentGetVarTest : public EnvironmentFixture,
                              public ::testing::WithParamInterface<ReadRow>
{
protected:
    void SetUp() override { run(std::string("v = ") + GetParam().value); }
};

TEST_P(EnvironmentGetVarTest, TellsWhetherItIsSet)
{
    EXPECT_EQ(environment().isVarSet("v"), GetParam().isSet);
}

TEST_P(EnvironmentGetVarTest, ReadsABool)
{
    EXPECT_EQ(environment().getVar("v", true), GetParam().asBool);
}

TEST_P(EnvironmentGetVarTest, ReadsAnInt)
{
    EXPECT_EQ(environment().getVar("v", 77), GetParam().asInt);
}

TEST_P(EnvironmentGetVarTest, ReadsAFloat)
{
    EXPECT_EQ(environment().getVar("v", 77.0F), GetParam().asFloat);
}

TEST_P(EnvironmentGetVarTest, ReadsADouble)
{
    EXPECT_EQ(environment().getVar("v", 77.0), GetParam().asDouble);
}

TEST_P(EnvironmentGetVarTest, ReadsAText)
{
    EXPECT_EQ(environment().getVar("v", tbMemory::StringView("else")), GetParam().asText);
}

TEST_P(EnvironmentGetVarTest, ReadsATextWithAPointerAsDefault)
{
    EXPECT_EQ(environment().getVar("v", "else"), GetParam().asText);
}

INSTANTIATE_TEST_SUITE_P(
    Values,
    EnvironmentGetVarTest,
    ::testing::Values(
        ReadRow{"Nil", "nil", false, true, 77, 77.0F, 77.0, "else"},
        ReadRow{"True", "true", true, true, 77, 77.0F, 77.0, "else"},
        ReadRow{"False", "false", true, false, 77, 77.0F, 77.0, "else"},
        ReadRow{"Zero", "0", true, true, 0, 0.0F, 0.0, "0"},
        ReadRow{"One", "1", true, true, 1, 1.0F, 1.0, "1"},
        ReadRow{"Fraction", "2.9", true, true, 2, 2.9F, 2.9, "2.9"},
        ReadRow{"NegativeFraction", "-2.9", true, true, -2, -2.9F, -2.9, "-2.9"},
        ReadRow{"NumericText", "'12'", true, true, 12, 12.0F, 12.0, "12"},
        ReadRow{"HexadecimalText", "'0x10'", true, true, 16, 16.0F, 16.0, "0x10"},
        ReadRow{"PaddedNumericText", "' 12 '", true, true, 12, 12.0F, 12.0, " 12 "},
        ReadRow{"OtherText", "'twelve'", true, true, 77, 77.0F, 77.0, "twelve"},
        ReadRow{"EmptyText", "''", true, true, 77, 77.0F, 77.0, ""},
        ReadRow{"TextWithNul", "'te\\0xt'", true, true, 77, 77.0F, 77.0, std::string("te\0xt", 5)},
        ReadRow{"Table", "{}", true, true, 77, 77.0F, 77.0, "else"},
        ReadRow{"Function", "print", true, true, 77, 77.0F, 77.0, "else"},
        ReadRow{"Coroutine", "coroutine.create(print)", true, true, 77, 77.0F, 77.0, "else"},
        ReadRow{"Userdata", "newproxy()", true, true, 77, 77.0F, 77.0, "else"},
        ReadRow{"LightUserdata", LIGHT_USERDATA, true, true, 77, 77.0F, 77.0, "else"},
        ReadRow{"ForeignInteger", "12LL", true, true, 77, 77.0F, 77.0, "else"}),
    [](const auto& row) { return std::string(row.param.name); });

TEST_F(EnvironmentGlobalsTest, DefaultTextIsGivenBackAsItIs)
{
    const char* const fallback = "else";

    const tbMemory::StringView text = environment().getVar("v", fallback);

    EXPECT_EQ(text.data(), fallback);
}

TEST_F(EnvironmentGlobalsTest, NullDefaultTextIsGivenBackAsNull)
{
    const tbMemory::StringView text = environment().getVar("v", static_cast<const char*>(nullptr));

    EXPECT_TRUE(text.isNull());
}

TEST_F(EnvironmentGlobalsTest, EmptyTextIsNotNull)
{
    run("v = ''");

    const tbMemory::StringView text = environment().getVar("v", "else");

    EXPECT_FALSE(text.isNull());
    EXPECT_EQ(text.size(), 0U);
}

TEST_F(EnvironmentGlobalsTest, FalseDefaultIsGivenForANumber)
{
    run("v = 1");

    EXPECT_FALSE(environment().getVar("v", false));
}

TEST_F(EnvironmentGlobalsTest, ReadingAsTextLeavesTheNumber)
{
    run("v = 12");

    environment().getVar("v", "else");

    run("assert(type(v) == 'number')");
}

TEST_F(EnvironmentGlobalsTest, TextOfANumberOutlivesCollectionsAndOtherCalls)
{
    run("v = 1234.5  w = 'other'");
    const tbMemory::StringView text = environment().getVar("v", "else");

    run("v = nil  for i = 1, 1000 do local t = {tostring(i)} end");
    environment().requestGarbageCollection();
    environment().getVar("w", 0);

    EXPECT_EQ(text, "1234.5");
}

TEST_F(EnvironmentGlobalsTest, TextOutlivesOtherReadingsWhileItsValueLives)
{
    run("v = 'text' .. 1  n = 12");
    const tbMemory::StringView text = environment().getVar("v", "else");

    environment().getVar("n", "else");
    environment().requestGarbageCollection();

    EXPECT_EQ(text, "text1");
}

namespace
{

// The int form takes the interpreter's own conversion and keeps the low 32 bits.
struct IntRow
{
    const char* name;
    const char* value; // an expression
    int expected;
};

void PrintTo(const IntRow& row, std::ostream* stream)
{
    *stream << row.name;
}

} // namespace

class EnvironmentGetIntTest : public EnvironmentFixture,
                              public ::testing::WithParamInterface<IntRow>
{
};

TEST_P(EnvironmentGetIntTest, KeepsTheLowBits)
{
    run(std::string("v = ") + GetParam().value);

    EXPECT_EQ(environment().getVar("v", 77), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Values,
    EnvironmentGetIntTest,
    ::testing::Values(
        IntRow{"HighestInt", "2147483647", 2147483647},
        IntRow{"OneMoreThanTheHighestInt", "2147483648", std::numeric_limits<int>::min()},
        IntRow{"LowestInt", "-2147483648", std::numeric_limits<int>::min()},
        IntRow{"OneLessThanTheLowestInt", "-2147483649", 2147483647},
        IntRow{"HighestUnsigned", "4294967295", -1},
        IntRow{"Bit32", "4294967296", 0},
        IntRow{"Bit32AndOne", "4294967297", 1},
        IntRow{"MinusBit32AndOne", "-4294967297", -1},
        IntRow{"Bit62AndManyMore", "4611686018427389952", 2048},
        IntRow{"Bit63", "9223372036854775808", 0},
        IntRow{"Huge", "1e300", 0},
        IntRow{"HugeNegative", "-1e300", 0},
        IntRow{"Infinity", "math.huge", 0},
        IntRow{"NegativeInfinity", "-math.huge", 0},
        IntRow{"NotANumber", "0/0", 0},
        IntRow{"HugeText", "'4294967297'", 1},
        IntRow{"AlmostOne", "0.999999", 0},
        IntRow{"AlmostMinusOne", "-0.999999", 0}),
    [](const auto& row) { return std::string(row.param.name); });

TEST_F(EnvironmentGlobalsTest, FloatBeyondItsRangeIsInfinite)
{
    run("v, w = 1e300, -1e300");

    EXPECT_EQ(environment().getVar("v", 0.0F), std::numeric_limits<float>::infinity());
    EXPECT_EQ(environment().getVar("w", 0.0F), -std::numeric_limits<float>::infinity());
}

TEST_F(EnvironmentGlobalsTest, NotANumberIsReadAsOne)
{
    run("v = 0/0");

    EXPECT_TRUE(std::isnan(environment().getVar("v", 0.0)));
    EXPECT_TRUE(std::isnan(environment().getVar("v", 0.0F)));
}

TEST_F(EnvironmentGlobalsTest, DoubleSurvivesTheWayThereAndBack)
{
    environment().setVar("v", 0.1);

    EXPECT_EQ(environment().getVar("v", 0.0), 0.1);
}

TEST_F(EnvironmentGlobalsTest, TextOfAFractionHasFourteenDigits)
{
    run("v = 1/3");

    EXPECT_EQ(environment().getVar("v", "else"), "0.33333333333333");
}

} // namespace tbScripts::test

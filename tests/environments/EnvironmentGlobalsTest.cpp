// Globals that the host sets and reads, kind by kind.

#include "support/EnvironmentFixture.h"
#include "support/RowName.h"

#include <climits>
#include <cmath>
#include <cstring>
#include <limits>

namespace tbScripts::test
{

namespace
{

using tbMemory::StringView;

using View = tbMemory::StringView;

// An expression; the interpreter itself makes such values here only.
constexpr const char* LIGHT_USERDATA =
    "(function() local x  return debug.upvalueid(function() return x end, 1) end)()";

using EnvironmentGlobalsTest = EnvironmentFixture;

// What a script sees of what the host set.
struct SetRow
{
    const char* row;
    std::function<void(Environment&)> set; // sets global v
    const char* expectation;               // of a script
};

double injectedNan()
{
    const std::uint64_t bits = 0xFFFFFFFFFFFFFFFFU;
    double number = 0;
    std::memcpy(&number, &bits, sizeof(number));
    return number;
}

using EnvironmentSetVarTest = OnRows<EnvironmentFixture, SetRow>;

TEST_P(EnvironmentSetVarTest, IsSeenByScripts)
{
    GetParam().set(environment());

    run(std::string("assert(") + GetParam().expectation + ")");
}

ROWS(
    EnvironmentSetVarTest,
    {"True", [](Environment& e) { e.setVar("v", true); }, "v == true"},
    {"False", [](Environment& e) { e.setVar("v", false); }, "v == false"},
    {"Int", [](Environment& e) { e.setVar("v", 42); }, "v == 42"},
    {"LowestInt", [](Environment& e) { e.setVar("v", INT_MIN); }, "v == -2147483648"},
    {"HighestInt", [](Environment& e) { e.setVar("v", INT_MAX); }, "v == 2147483647"},
    {"FloatIsWidened",
     [](Environment& e) { e.setVar("v", 0.1F); },
     "v == 0.100000001490116119384765625"},
    {"Double", [](Environment& e) { e.setVar("v", 0.1); }, "v == 0.1"},
    {"Infinity", [](Environment& e) { e.setVar("v", HUGE_VAL); }, "v == math.huge"},
    {"NotANumber",
     [](Environment& e) { e.setVar("v", injectedNan()); },
     "type(v) == 'number' and v ~= v"},
    {"String", [](Environment& e) { e.setVar("v", "text"); }, "v == 'text'"},
    {"EmptyString", [](Environment& e) { e.setVar("v", ""); }, "v == ''"},
    {"View", [](Environment& e) { e.setVar("v", View("textual", 4)); }, "v == 'text'"},
    {"EndsAtItsNul", [](Environment& e) { e.setVar("v", View("a\0b", 3)); }, "v == 'a'"},
    {"EmptyView", [](Environment& e) { e.setVar("v", View("", 0)); }, "v == ''"},
    {"NumericString", [](Environment& e) { e.setVar("v", "12"); }, "v == '12'"});

// A null string is no string: the global is gone afterwards, not empty.
TEST_F(EnvironmentGlobalsTest, NullStringIsNil)
{
    run("v, w = 1, 1");

    environment().setVar("v", static_cast<const char*>(nullptr));
    environment().setVar("w", View());

    EXPECT_FALSE(environment().isVarSet("v"));
    EXPECT_FALSE(environment().isVarSet("w"));
}

TEST_F(EnvironmentGlobalsTest, SettingReplacesAValueOfAnotherKind)
{
    environment().setVar("v", "text");

    environment().setVar("v", 2);

    EXPECT_EQ(environment().getVar("v", -1), 2);
}

// What each form of reading makes of one and the same global.
struct ReadRow
{
    const char* row;
    const char* value; // an expression
    bool isSet;
    bool asBool; // the default is true
    int asInt;   // the default is 77, as for the next two
    float asFloat;
    double asDouble;
    std::string asText; // the default is "else"
};

class EnvironmentGetVarTest : public OnRows<EnvironmentFixture, ReadRow>
{
protected:
    void SetUp() override { run(std::string("v = ") + GetParam().value); }
};

TEST_P(EnvironmentGetVarTest, IsReadAsEachKind)
{
    EXPECT_EQ(environment().isVarSet("v"), GetParam().isSet);
    EXPECT_EQ(environment().getVar("v", true), GetParam().asBool);
    EXPECT_EQ(environment().getVar("v", 77), GetParam().asInt);
    EXPECT_EQ(environment().getVar("v", 77.0F), GetParam().asFloat);
    EXPECT_EQ(environment().getVar("v", 77.0), GetParam().asDouble);
    EXPECT_EQ(environment().getVar("v", View("else")), GetParam().asText);
    EXPECT_EQ(environment().getVar("v", "else"), GetParam().asText);
}

ROWS(
    EnvironmentGetVarTest,
    {"Nil", "nil", false, true, 77, 77.0F, 77.0, "else"},
    {"True", "true", true, true, 77, 77.0F, 77.0, "else"},
    {"False", "false", true, false, 77, 77.0F, 77.0, "else"},
    {"Zero", "0", true, true, 0, 0.0F, 0.0, "0"},
    {"One", "1", true, true, 1, 1.0F, 1.0, "1"},
    {"Fraction", "2.9", true, true, 2, 2.9F, 2.9, "2.9"},
    {"NegativeFraction", "-2.9", true, true, -2, -2.9F, -2.9, "-2.9"},
    {"NumericText", "'12'", true, true, 12, 12.0F, 12.0, "12"},
    {"HexadecimalText", "'0x10'", true, true, 16, 16.0F, 16.0, "0x10"},
    {"PaddedNumericText", "' 12 '", true, true, 12, 12.0F, 12.0, " 12 "},
    {"OtherText", "'twelve'", true, true, 77, 77.0F, 77.0, "twelve"},
    {"EmptyText", "''", true, true, 77, 77.0F, 77.0, ""},
    {"TextWithNul", "'te\\0xt'", true, true, 77, 77.0F, 77.0, std::string("te\0xt", 5)},
    {"Table", "{}", true, true, 77, 77.0F, 77.0, "else"},
    {"Function", "print", true, true, 77, 77.0F, 77.0, "else"},
    {"Coroutine", "coroutine.create(print)", true, true, 77, 77.0F, 77.0, "else"},
    {"Userdata", "newproxy()", true, true, 77, 77.0F, 77.0, "else"},
    {"LightUserdata", LIGHT_USERDATA, true, true, 77, 77.0F, 77.0, "else"},
    {"ForeignInteger", "12LL", true, true, 77, 77.0F, 77.0, "else"});

TEST_F(EnvironmentGlobalsTest, DefaultStringIsReturnedAsItIs)
{
    const char* const fallback = "else";

    EXPECT_EQ(environment().getVar("v", fallback).data(), fallback);
    EXPECT_TRUE(environment().getVar("v", static_cast<const char*>(nullptr)).isNull());
}

TEST_F(EnvironmentGlobalsTest, EmptyStringIsNotNull)
{
    run("v = ''");

    const View value = environment().getVar("v", "else");

    EXPECT_FALSE(value.isNull());
    EXPECT_EQ(value.size(), 0U);
}

TEST_F(EnvironmentGlobalsTest, FalseDefaultIsReturnedForANumber)
{
    run("v = 1");

    EXPECT_FALSE(environment().getVar("v", false));
}

TEST_F(EnvironmentGlobalsTest, ReadingAsStringLeavesTheNumber)
{
    run("v = 12");

    environment().getVar("v", "else");

    run("assert(type(v) == 'number')");
}

TEST_F(EnvironmentGlobalsTest, StringOfANumberOutlivesCollectionsAndOtherCalls)
{
    run("v = 1234.5  w = 'other'");
    const View value = environment().getVar("v", "else");

    run("v = nil  for i = 1, 1000 do local t = {tostring(i)} end");
    environment().requestGarbageCollection();
    environment().getVar("w", 0);

    EXPECT_EQ(value, "1234.5");
}

TEST_F(EnvironmentGlobalsTest, StringOutlivesOtherReadingsWhileItsValueLives)
{
    run("v = 'text' .. 1  n = 12");
    const View value = environment().getVar("v", "else");

    environment().getVar("n", "else");
    environment().requestGarbageCollection();

    EXPECT_EQ(value, "text1");
}

// The int form takes the interpreter's own conversion and keeps the low 32 bits.
struct IntRow
{
    const char* row;
    const char* value; // an expression
    int expected;
};

using EnvironmentGetIntTest = OnRows<EnvironmentFixture, IntRow>;

TEST_P(EnvironmentGetIntTest, KeepsTheLowBits)
{
    run(std::string("v = ") + GetParam().value);

    EXPECT_EQ(environment().getVar("v", 77), GetParam().expected);
}

ROWS(
    EnvironmentGetIntTest,
    {"HighestInt", "2147483647", 2147483647},
    {"OneMoreThanTheHighestInt", "2147483648", INT_MIN},
    {"LowestInt", "-2147483648", INT_MIN},
    {"OneLessThanTheLowestInt", "-2147483649", 2147483647},
    {"HighestUnsigned", "4294967295", -1},
    {"Bit32", "4294967296", 0},
    {"Bit32AndOne", "4294967297", 1},
    {"MinusBit32AndOne", "-4294967297", -1},
    {"Bit62AndManyMore", "4611686018427389952", 2048},
    {"Bit63", "9223372036854775808", 0},
    {"Huge", "1e300", 0},
    {"HugeNegative", "-1e300", 0},
    {"Infinity", "math.huge", 0},
    {"NegativeInfinity", "-math.huge", 0},
    {"NotANumber", "0/0", 0},
    {"HugeText", "'4294967297'", 1},
    {"AlmostOne", "0.999999", 0},
    {"AlmostMinusOne", "-0.999999", 0});

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

// Names of globals: plain keys, that end at their first NUL or with the view.
using EnvironmentNamesTest = EnvironmentFixture;

TEST_F(EnvironmentNamesTest, DottedNameIsOneKeyAndReachesIntoNoTable)
{
    run("a = {b = 1}");
    EXPECT_FALSE(environment().isVarSet("a.b"));
    const ScriptObjectReference function = environment().getScriptFunction("string.format");
    EXPECT_EQ(function.getInterpreterReference(), nullptr);

    environment().setVar("a.b", 2);

    run("assert(a.b == 1 and _G['a.b'] == 2)");
    EXPECT_EQ(environment().getVar("a.b", -1), 2);
}

TEST_F(EnvironmentNamesTest, NameEndsAtItsFirstNul)
{
    int object = 0;

    environment().setVar(StringView("a\0b", 3), 1);
    environment().setObject(StringView("o\0b", 3), "T", &object);

    run("assert(a == 1 and _G['a\\0b'] == nil)  _G['a\\0b'] = 2");
    EXPECT_EQ(environment().getVar(StringView("a\0b", 3), -1), 1);
    EXPECT_EQ(environment().getObject("o", StringView()), &object);
}

TEST_F(EnvironmentNamesTest, NameEndsWithItsView)
{
    environment().setVar(StringView("abc", 2), 1);

    run("assert(ab == 1 and abc == nil)  abc = 2  function de() end");
    EXPECT_EQ(environment().getVar(StringView("abc", 2), -1), 1);
    EXPECT_EQ(
        environment().getScriptFunction(StringView("def", 2)).getType(),
        PARAM_TYPE_SCRIPT_FUNCTION);
}

TEST_F(EnvironmentNamesTest, EmptyNameIsAKey)
{
    environment().setVar("", 1);

    run("assert(_G[''] == 1)");
}

TEST_F(EnvironmentNamesTest, NullNameIsTheEmptyName)
{
    environment().setVar(StringView(), 1);

    EXPECT_EQ(environment().getVar("", -1), 1);
    EXPECT_EQ(environment().getVar(StringView(), -1), 1);
}

TEST_F(EnvironmentNamesTest, NameOfOnlyANulIsTheEmptyName)
{
    environment().setVar(StringView("\0", 1), 1);

    EXPECT_TRUE(environment().isVarSet(""));
}

TEST_F(EnvironmentNamesTest, NumericNameIsNotTheNumber)
{
    run("_G[1] = 'number'");

    EXPECT_FALSE(environment().isVarSet("1"));
}

// The registry of functions keeps all bytes of a name, the script sees those before the first NUL.
TEST_F(EnvironmentNamesTest, FunctionIsRegisteredUnderAllBytesOfItsName)
{
    const std::string name("f\0one", 5);
    Function* const first = environment().setFunc(name);
    Function* const second = environment().setFunc(StringView("f\0two", 5));

    EXPECT_NE(first, second);
    EXPECT_EQ(environment().getFunc(name), first);
    EXPECT_FALSE(environment().isFuncSet("f"));
    EXPECT_TRUE(environment().isVarSet("f"));

    environment().setFunc(name);
    expectLogged(
        "Function '" + name +
            "' already existant. Resetting its state before returning it. This might break "
            "previous usage of the function.",
        "Environment");
}

TEST_F(EnvironmentNamesTest, FunctionNameEndsWithItsView)
{
    environment().setFunc(StringView("fgh", 1));

    EXPECT_TRUE(environment().isFuncSet("f"));
    run("assert(f and not fgh)");
}

TEST_F(EnvironmentNamesTest, FunctionMayHaveTheEmptyNameWhichIsAlsoTheNullName)
{
    Function* const function = environment().setFunc(StringView());

    ASSERT_NE(function, nullptr);
    EXPECT_EQ(function->getName(), "");
    EXPECT_EQ(environment().getFunc(""), function);
    EXPECT_TRUE(environment().isFuncSet(StringView()));
    run("assert(type(_G['']) == 'function')");
}

} // namespace

} // namespace tbScripts::test

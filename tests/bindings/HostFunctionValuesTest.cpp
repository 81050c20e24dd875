#include "support/EnvironmentFixture.h"
#include "support/RowName.h"

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>

namespace tbScripts::test
{

namespace
{

// A NaN that the interpreter would take for something else than a number.
double rawNan()
{
    const std::uint64_t bits = 0xFFFFFFFFFFFFFFFFU;
    double number = 0.0;
    std::memcpy(&number, &bits, sizeof(number));
    return number;
}

struct Argument
{
    const char* row;
    FUNCTION_PARAMETER_TYPE type;
    const char* expression;
    std::string expected;
};

using HostFunctionArgumentTest = OnRows<EnvironmentFixture, Argument>;

TEST_P(HostFunctionArgumentTest, ArrivesAsTheDeclaredKind)
{
    std::vector<std::string> received;
    declare("take", {GetParam().type}, recording(received));
    run(std::string("take(") + GetParam().expression + ")");
    EXPECT_THAT(received, ::testing::ElementsAre(GetParam().expected));
}

ROWS(
    HostFunctionArgumentTest,
    {"BoolTrue", PARAM_TYPE_BOOL, "true", "true"},
    {"BoolFalse", PARAM_TYPE_BOOL, "false", "false"},
    {"BoolNil", PARAM_TYPE_BOOL, "nil", "false"},
    {"BoolMissing", PARAM_TYPE_BOOL, "", "false"},
    {"BoolZero", PARAM_TYPE_BOOL, "0", "true"},
    {"BoolNumber", PARAM_TYPE_BOOL, "1.5", "true"},
    {"BoolEmptyText", PARAM_TYPE_BOOL, "''", "true"},
    {"BoolTable", PARAM_TYPE_BOOL, "{}", "true"},
    {"BoolFunction", PARAM_TYPE_BOOL, "print", "true"},
    {"IntWhole", PARAM_TYPE_INT, "7", "7"},
    {"IntFractionIsCutOff", PARAM_TYPE_INT, "2.9", "2"},
    {"IntNegativeFractionIsCutOff", PARAM_TYPE_INT, "-2.9", "-2"},
    {"IntNumericText", PARAM_TYPE_INT, "'5'", "5"},
    {"IntNumericTextWithFraction", PARAM_TYPE_INT, "'-5.7'", "-5"},
    {"IntHexadecimalText", PARAM_TYPE_INT, "'0x10'", "16"},
    {"IntGreatest", PARAM_TYPE_INT, "2147483647", "2147483647"},
    {"IntBeyondGreatest", PARAM_TYPE_INT, "2147483648", "2147483647"},
    {"IntLeast", PARAM_TYPE_INT, "-2147483648", "-2147483648"},
    {"IntBeyondLeast", PARAM_TYPE_INT, "-2147483649", "-2147483648"},
    {"IntFarBeyond", PARAM_TYPE_INT, "4294967297", "2147483647"},
    {"IntHuge", PARAM_TYPE_INT, "1e300", "2147483647"},
    {"IntNegativeHuge", PARAM_TYPE_INT, "-1e300", "-2147483648"},
    {"IntInfinite", PARAM_TYPE_INT, "1/0", "2147483647"},
    {"IntNotANumber", PARAM_TYPE_INT, "0/0", "0"},
    {"FloatRounded", PARAM_TYPE_FLOAT, "0.1", "0.100000001"},
    {"FloatNumericText", PARAM_TYPE_FLOAT, "'2.5'", "2.5"},
    {"FloatHuge", PARAM_TYPE_FLOAT, "1e300", "inf"},
    {"FloatNegativeHuge", PARAM_TYPE_FLOAT, "-1e300", "-inf"},
    {"FloatNotANumber", PARAM_TYPE_FLOAT, "0/0", "nan"},
    {"DoubleExact", PARAM_TYPE_DOUBLE, "0.123456789", "0.123456789"},
    {"DoubleNumericText", PARAM_TYPE_DOUBLE, "'1e2'", "100"},
    {"DoubleHuge", PARAM_TYPE_DOUBLE, "1e300", "1e+300"},
    {"DoubleNotANumber", PARAM_TYPE_DOUBLE, "0/0", "nan"},
    {"StringText", PARAM_TYPE_STRING, "'spear'", "spear"},
    {"StringEmpty", PARAM_TYPE_STRING, "''", ""},
    {"StringWholeNumber", PARAM_TYPE_STRING, "7", "7"},
    {"StringFraction", PARAM_TYPE_STRING, "-0.5", "-0.5"},
    {"StringKeepsZeroBytes", PARAM_TYPE_STRING, "'a\\0b'", std::string("a\0b", 3)});

struct Result
{
    const char* row;
    FunctionParameter value;
    const char* description;
};

using HostFunctionResultTest = OnRows<EnvironmentFixture, Result>;

TEST_P(HostFunctionResultTest, ArrivesInTheScript)
{
    declare("give", {}, returning(GetParam().value));
    run("function describe(...)"
        "  local value = ..."
        "  if value ~= value then value = 'not itself' end"
        "  if type(value) == 'number' then value = string.format('%.17g', value) end"
        "  return select('#', ...) .. ' ' .. type((...)) .. ' ' .. tostring(value)"
        " end");
    is("describe(give())", GetParam().description);
}

ROWS(
    HostFunctionResultTest,
    {"Void", FunctionParameter::VOID, "0 nil nil"},
    {"True", true, "1 boolean true"},
    {"False", false, "1 boolean false"},
    {"Int", -7, "1 number -7"},
    {"LeastInt", std::numeric_limits<int>::min(), "1 number -2147483648"},
    {"FloatIsWidened", 0.1F, "1 number 0.10000000149011612"},
    {"FloatNan", std::nanf(""), "1 number not itself"},
    {"Double", 0.1, "1 number 0.10000000000000001"},
    {"DoubleNan", rawNan(), "1 number not itself"},
    {"Text", "spear", "1 string spear"},
    {"EmptyText", "", "1 string "},
    {"TextEndsAtItsFirstZero", FunctionParameter(tbMemory::StringView("a\0b", 3)), "1 string a"},
    {"NullObject", FunctionParameter(nullptr, "Enemy", false), "0 nil nil"},
    {"NullOwnedObject", FunctionParameter(nullptr, "Enemy", true), "0 nil nil"},
    {"EmptyReference", ScriptObjectReference(), "1 nil nil"},
    {"EmptyFunctionReference", FunctionParameter::ofType(PARAM_TYPE_SCRIPT_FUNCTION), "1 nil nil"});

using HostFunctionUnhandledKindTest = OnValues<EnvironmentFixture, int>;

TEST_P(HostFunctionUnhandledKindTest, AsParameterFailsEveryCall)
{
    declare("spawn", {static_cast<FUNCTION_PARAMETER_TYPE>(GetParam())}, uncallable());
    const char* const message =
        "Error while requesting parameter for function 'spawn', parameter type not handled.";
    raises("spawn(1)", message);
    expectLogged(message, "LuaFunction");
}

TEST_P(HostFunctionUnhandledKindTest, AsResultIsLoggedAndGivesNone)
{
    const auto type = static_cast<FUNCTION_PARAMETER_TYPE>(GetParam());
    declare("spawn", {}, returning(FunctionParameter::ofType(type)));
    is("select('#', spawn())", "0");
    if (GetParam() == PARAM_TYPE_VOID)
        return; // says that there is none
    expectLogged(
        "Error while filling output for function 'spawn', parameter type not handled.",
        "LuaFunction");
}

INSTANTIATE_TEST_SUITE_P(Kinds, HostFunctionUnhandledKindTest, ::testing::Values(0, 10, 255));

} // namespace

} // namespace tbScripts::test

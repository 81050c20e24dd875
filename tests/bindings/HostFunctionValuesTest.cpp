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

} // namespace

using HostFunctionArgumentTest = OnRows<EnvironmentFixture, Argument>;

TEST_P(HostFunctionArgumentTest, ArrivesAsTheDeclaredKind)
{
    std::vector<std::string> received;
    declare("take", {GetParam().type}, recording(received));
    run(std::string("take(") + GetParam().expression + ")");
    EXPECT_THAT(received, ::testing::ElementsAre(GetParam().expected));
}

INSTANTIATE_TEST_SUITE_P(
    Bool,
    HostFunctionArgumentTest,
    ::testing::Values(
        Argument{"True", PARAM_TYPE_BOOL, "true", "true"},
        Argument{"False", PARAM_TYPE_BOOL, "false", "false"},
        Argument{"Nil", PARAM_TYPE_BOOL, "nil", "false"},
        Argument{"Missing", PARAM_TYPE_BOOL, "", "false"},
        Argument{"Zero", PARAM_TYPE_BOOL, "0", "true"},
        Argument{"Number", PARAM_TYPE_BOOL, "1.5", "true"},
        Argument{"EmptyText", PARAM_TYPE_BOOL, "''", "true"},
        Argument{"Table", PARAM_TYPE_BOOL, "{}", "true"},
        Argument{"Function", PARAM_TYPE_BOOL, "print", "true"}),
    RowName());

INSTANTIATE_TEST_SUITE_P(
    Int,
    HostFunctionArgumentTest,
    ::testing::Values(
        Argument{"Whole", PARAM_TYPE_INT, "7", "7"},
        Argument{"FractionIsCutOff", PARAM_TYPE_INT, "2.9", "2"},
        Argument{"NegativeFractionIsCutOff", PARAM_TYPE_INT, "-2.9", "-2"},
        Argument{"NumericText", PARAM_TYPE_INT, "'5'", "5"},
        Argument{"NumericTextWithFraction", PARAM_TYPE_INT, "'-5.7'", "-5"},
        Argument{"HexadecimalText", PARAM_TYPE_INT, "'0x10'", "16"},
        Argument{"Greatest", PARAM_TYPE_INT, "2147483647", "2147483647"},
        Argument{"BeyondGreatest", PARAM_TYPE_INT, "2147483648", "2147483647"},
        Argument{"Least", PARAM_TYPE_INT, "-2147483648", "-2147483648"},
        Argument{"BeyondLeast", PARAM_TYPE_INT, "-2147483649", "-2147483648"},
        Argument{"FarBeyond", PARAM_TYPE_INT, "4294967297", "2147483647"},
        Argument{"Huge", PARAM_TYPE_INT, "1e300", "2147483647"},
        Argument{"NegativeHuge", PARAM_TYPE_INT, "-1e300", "-2147483648"},
        Argument{"Infinite", PARAM_TYPE_INT, "1/0", "2147483647"},
        Argument{"NotANumber", PARAM_TYPE_INT, "0/0", "0"}),
    RowName());

INSTANTIATE_TEST_SUITE_P(
    Float,
    HostFunctionArgumentTest,
    ::testing::Values(
        Argument{"Rounded", PARAM_TYPE_FLOAT, "0.1", "0.100000001"},
        Argument{"NumericText", PARAM_TYPE_FLOAT, "'2.5'", "2.5"},
        Argument{"Huge", PARAM_TYPE_FLOAT, "1e300", "inf"},
        Argument{"NegativeHuge", PARAM_TYPE_FLOAT, "-1e300", "-inf"},
        Argument{"NotANumber", PARAM_TYPE_FLOAT, "0/0", "nan"}),
    RowName());

INSTANTIATE_TEST_SUITE_P(
    Double,
    HostFunctionArgumentTest,
    ::testing::Values(
        Argument{"Exact", PARAM_TYPE_DOUBLE, "0.123456789", "0.123456789"},
        Argument{"NumericText", PARAM_TYPE_DOUBLE, "'1e2'", "100"},
        Argument{"Huge", PARAM_TYPE_DOUBLE, "1e300", "1e+300"},
        Argument{"NotANumber", PARAM_TYPE_DOUBLE, "0/0", "nan"}),
    RowName());

INSTANTIATE_TEST_SUITE_P(
    String,
    HostFunctionArgumentTest,
    ::testing::Values(
        Argument{"Text", PARAM_TYPE_STRING, "'spear'", "spear"},
        Argument{"Empty", PARAM_TYPE_STRING, "''", ""},
        Argument{"WholeNumber", PARAM_TYPE_STRING, "7", "7"},
        Argument{"Fraction", PARAM_TYPE_STRING, "-0.5", "-0.5"},
        Argument{"KeepsZeroBytes", PARAM_TYPE_STRING, "'a\\0b'", std::string("a\0b", 3)}),
    RowName());

namespace
{

struct Result
{
    const char* row;
    FunctionParameter value;
    const char* description;
};

} // namespace

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

INSTANTIATE_TEST_SUITE_P(
    Results,
    HostFunctionResultTest,
    ::testing::Values(
        Result{"Void", FunctionParameter::VOID, "0 nil nil"},
        Result{"True", true, "1 boolean true"},
        Result{"False", false, "1 boolean false"},
        Result{"Int", -7, "1 number -7"},
        Result{"LeastInt", std::numeric_limits<int>::min(), "1 number -2147483648"},
        Result{"FloatIsWidened", 0.1F, "1 number 0.10000000149011612"},
        Result{"FloatNan", std::nanf(""), "1 number not itself"},
        Result{"Double", 0.1, "1 number 0.10000000000000001"},
        Result{"DoubleNan", rawNan(), "1 number not itself"},
        Result{"Text", "spear", "1 string spear"},
        Result{"EmptyText", "", "1 string "},
        Result{
            "TextEndsAtItsFirstZero",
            FunctionParameter(tbMemory::StringView("a\0b", 3)),
            "1 string a"},
        Result{"NullObject", FunctionParameter(nullptr, "Enemy", false), "0 nil nil"},
        Result{"NullOwnedObject", FunctionParameter(nullptr, "Enemy", true), "0 nil nil"},
        Result{"EmptyReference", ScriptObjectReference(), "1 nil nil"},
        Result{
            "EmptyFunctionReference",
            FunctionParameter::ofType(PARAM_TYPE_SCRIPT_FUNCTION),
            "1 nil nil"}),
    RowName());

class HostFunctionUnhandledKindTest : public EnvironmentFixture,
                                      public ::testing::WithParamInterface<int>
{
};

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

} // namespace tbScripts::test

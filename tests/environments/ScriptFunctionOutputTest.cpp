// Results of script functions, read into outputs whose kind says what is expected.

#include "support/EnvironmentFixture.h"
#include "support/Execution.h"
#include "support/RowName.h"

#include <limits>

namespace tbScripts::test
{

namespace
{

FunctionParameter outputOf(FUNCTION_PARAMETER_TYPE type)
{
    return FunctionParameter::ofType(type);
}

class ScriptFunctionOutputTest : public EnvironmentFixture
{
protected:
    // Defines a function that gives `results`, and calls it.
    bool callGiving(const std::string& results, std::vector<FunctionParameter>& outputs)
    {
        run("function f() return " + results + " end");
        Parameters view(outputs);
        return environment().callScriptFunction(
            environment().getScriptFunction("f"), Parameters(), view);
    }

    static LogEntry notUnpacked(const std::string& index)
    {
        return {
            "Could not unpack parameter " + index +
                " of output from lua function, type mismatch. Aborting unpack.",
            "LuaEnvironmentStrategy"};
    }
};

TEST_F(ScriptFunctionOutputTest, EveryValueIsABool)
{
    std::vector<FunctionParameter> outputs(7, outputOf(PARAM_TYPE_BOOL));

    callGiving("true, 0, '', {}, print, false, nil", outputs);

    for (std::size_t i = 0; i < outputs.size(); ++i)
        EXPECT_EQ(outputs[i].getBool(), i < 5) << i;
}

struct IntRow
{
    const char* row;
    const char* result; // an expression
    int expected;
};

using ScriptFunctionIntOutputTest = OnRows<ScriptFunctionOutputTest, IntRow>;

TEST_P(ScriptFunctionIntOutputTest, TruncatesAndSaturates)
{
    std::vector<FunctionParameter> outputs{FunctionParameter(77)};

    callGiving(GetParam().result, outputs);

    EXPECT_EQ(outputs[0].getInt(), GetParam().expected);
}

ROWS(
    ScriptFunctionIntOutputTest,
    {"Zero", "0", 0},
    {"Whole", "42", 42},
    {"Fraction", "2.9", 2},
    {"NegativeFraction", "-2.9", -2},
    {"NumericText", "'5'", 5},
    {"HighestInt", "2147483647", 2147483647},
    {"OneMoreThanTheHighestInt", "2147483648", 2147483647},
    {"LowestInt", "-2147483648", std::numeric_limits<int>::min()},
    {"OneLessThanTheLowestInt", "-2147483649", std::numeric_limits<int>::min()},
    {"Bit32AndOne", "4294967297", 2147483647},
    {"Huge", "1e300", 2147483647},
    {"HugeNegative", "-1e300", std::numeric_limits<int>::min()},
    {"Infinity", "math.huge", 2147483647},
    {"NotANumber", "0/0", 0});

TEST_F(ScriptFunctionOutputTest, FloatsAndDoublesAreRead)
{
    std::vector<FunctionParameter> outputs(3, outputOf(PARAM_TYPE_FLOAT));
    outputs.resize(5, outputOf(PARAM_TYPE_DOUBLE));

    callGiving("0.1, '2.5', 1e300, 0.1, '2.5'", outputs);

    EXPECT_EQ(outputs[0].getFloat(), 0.1F);
    EXPECT_EQ(outputs[1].getFloat(), 2.5F);
    EXPECT_EQ(outputs[2].getFloat(), std::numeric_limits<float>::infinity());
    EXPECT_EQ(outputs[3].getDouble(), 0.1);
    EXPECT_EQ(outputs[4].getDouble(), 2.5);
}

TEST_F(ScriptFunctionOutputTest, StringIsReadWholeAndReplacesAnEarlierOne)
{
    std::vector<FunctionParameter> outputs(3, outputOf(PARAM_TYPE_STRING));
    outputs.emplace_back("an earlier and longer text");

    callGiving("'text', 7, 'te\\0xt', 'text'", outputs);

    EXPECT_EQ(outputs[0].getString(), "text");
    EXPECT_EQ(outputs[1].getString(), "7");
    EXPECT_EQ(outputs[2].getString(), tbMemory::StringView("te\0xt", 5));
    EXPECT_EQ(outputs[3].getString(), "text");
}

TEST_F(ScriptFunctionOutputTest, FunctionsAndTablesAreRead)
{
    std::vector<FunctionParameter> outputs{
        outputOf(PARAM_TYPE_SCRIPT_FUNCTION), outputOf(PARAM_TYPE_SCRIPT_OBJECT)};

    callGiving("function() called = true end, {answer = 42}", outputs);
    Parameters nothing;
    environment().callScriptFunction(outputs[0].getScriptObject(), Parameters(), nothing);
    environment().setVar("v", outputs[1].getScriptObject());

    EXPECT_EQ(outputs[0].getScriptObject().getType(), PARAM_TYPE_SCRIPT_FUNCTION);
    EXPECT_EQ(outputs[1].getScriptObject().getType(), PARAM_TYPE_SCRIPT_OBJECT);
    run("assert(called and v.answer == 42)");
}

using ScriptFunctionNullObjectOutputTest =
    OnValues<ScriptFunctionOutputTest, FUNCTION_PARAMETER_TYPE>;

TEST_P(ScriptFunctionNullObjectOutputTest, IsReadFromNil)
{
    int object = 0;
    std::vector<FunctionParameter> outputs{
        FunctionParameter(&object, "T", GetParam() == PARAM_TYPE_USER_TYPE_OWNED)};

    callGiving("nil", outputs);

    EXPECT_EQ(outputs[0].getType(), GetParam());
    EXPECT_EQ(outputs[0].getUserTypeObject(), nullptr);
    EXPECT_EQ(outputs[0].getUserTypeName(), "T");
}

INSTANTIATE_TEST_SUITE_P(
    Kinds,
    ScriptFunctionNullObjectOutputTest,
    ::testing::Values(PARAM_TYPE_USER_TYPE_OWNED, PARAM_TYPE_USER_TYPE),
    [](const ::testing::TestParamInfo<FUNCTION_PARAMETER_TYPE>& row)
    { return row.param == PARAM_TYPE_USER_TYPE_OWNED ? "Owned" : "Kept"; });

// A result of another kind: logged, no failure of the call.
struct MismatchRow
{
    const char* row;
    std::uint32_t type; // of the output
    const char* result; // an expression
};

using ScriptFunctionMismatchTest = OnRows<ScriptFunctionOutputTest, MismatchRow>;

TEST_P(ScriptFunctionMismatchTest, IsLoggedAndNoFailure)
{
    std::vector<FunctionParameter> outputs{
        outputOf(static_cast<FUNCTION_PARAMETER_TYPE>(GetParam().type))};

    const bool isDone = callGiving(GetParam().result, outputs);

    EXPECT_TRUE(isDone);
    EXPECT_EQ(lastOutcome(environment()), Outcome(0, true, ""));
    EXPECT_EQ(outputs[0].getType(), static_cast<FUNCTION_PARAMETER_TYPE>(GetParam().type));
    expectLogged({notUnpacked("0")});
}

ROWS(
    ScriptFunctionMismatchTest,
    {"VoidFromNumber", 0, "1"},
    {"VoidFromNil", 0, "nil"},
    {"IntFromText", 2, "'twelve'"},
    {"IntFromNil", 2, "nil"},
    {"IntFromBool", 2, "true"},
    {"IntFromTable", 2, "{}"},
    {"FloatFromText", 3, "'twelve'"},
    {"FloatFromNil", 3, "nil"},
    {"DoubleFromText", 4, "'twelve'"},
    {"DoubleFromNil", 4, "nil"},
    {"TextFromNil", 5, "nil"},
    {"TextFromBool", 5, "true"},
    {"TextFromTable", 5, "{}"},
    {"OwnedObjectFromNumber", 6, "1"},
    {"OwnedObjectFromFile", 6, "io.stdout"},
    {"ObjectFromTable", 7, "{}"},
    {"ObjectFromFile", 7, "io.stdout"},
    {"ObjectFromEmptyBlock", 7, "newproxy()"},
    {"FunctionFromNil", 8, "nil"},
    {"FunctionFromTable", 8, "{}"},
    {"TableFromNil", 9, "nil"},
    {"TableFromFunction", 9, "print"},
    {"TableFromText", 9, "'text'"},
    {"KindTenFromNumber", 10, "1"},
    {"Kind255FromNumber", 255, "1"});

TEST_F(ScriptFunctionOutputTest, MismatchLeavesTheValueOfTheOutput)
{
    int object = 0;
    run("v = {}");
    std::vector<FunctionParameter> number{FunctionParameter(42)};
    std::vector<FunctionParameter> string{FunctionParameter("before")};
    std::vector<FunctionParameter> reference{FunctionParameter(environment().getVar("v"))};
    std::vector<FunctionParameter> hostObject{FunctionParameter(&object, "T", false)};

    callGiving("'twelve'", number);
    callGiving("{}", string);
    callGiving("42", reference);
    callGiving("42", hostObject);

    m_log.takeEntries();
    EXPECT_EQ(number[0].getInt(), 42);
    EXPECT_EQ(string[0].getString(), "before");
    environment().setVar("w", reference[0].getScriptObject());
    run("assert(v == w)");
    EXPECT_EQ(hostObject[0].getUserTypeObject(), &object);
}

TEST_F(ScriptFunctionOutputTest, MismatchEndsTheReading)
{
    std::vector<FunctionParameter> outputs{
        FunctionParameter(1), FunctionParameter(2), FunctionParameter(3)};

    callGiving("10, 'twenty', 30", outputs);

    EXPECT_EQ(outputs[0].getInt(), 10);
    EXPECT_EQ(outputs[1].getInt(), 2);
    EXPECT_EQ(outputs[2].getInt(), 3);
    expectLogged({notUnpacked("1")});
}

TEST_F(ScriptFunctionOutputTest, MismatchIsLoggedWithADecimalIndex)
{
    std::vector<FunctionParameter> outputs(13, FunctionParameter(0));

    callGiving("0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 'twelve'", outputs);

    expectLogged({notUnpacked("12")});
}

TEST_F(ScriptFunctionOutputTest, FurtherResultsAreDropped)
{
    std::vector<FunctionParameter> outputs{FunctionParameter(0)};

    EXPECT_TRUE(callGiving("1, 2, 3", outputs));

    EXPECT_EQ(outputs[0].getInt(), 1);
}

TEST_F(ScriptFunctionOutputTest, FurtherOutputsStay)
{
    std::vector<FunctionParameter> outputs{
        FunctionParameter(0), FunctionParameter(8), FunctionParameter("nine")};

    EXPECT_TRUE(callGiving("1", outputs));
    EXPECT_TRUE(callGiving("", outputs));
    EXPECT_THAT(m_log.takeEntries(), IsEmpty());
    EXPECT_FALSE(callGiving("error('boom', 0)", outputs));

    expectLogged("boom", "LuaEnvironment");
    EXPECT_EQ(outputs[0].getInt(), 1);
    EXPECT_EQ(outputs[1].getInt(), 8);
    EXPECT_EQ(outputs[2].getString(), "nine");
}

TEST_F(ScriptFunctionOutputTest, TenThousandResultsAreRead)
{
    run("function echo(...) return ... end");
    std::vector<FunctionParameter> inputs(10000, FunctionParameter(1));
    inputs.back() = FunctionParameter(2);
    std::vector<FunctionParameter> outputs(10000, FunctionParameter(0));

    call("echo", inputs, outputs);

    EXPECT_EQ(outputs[0].getInt(), 1);
    EXPECT_EQ(outputs[9998].getInt(), 1);
    EXPECT_EQ(outputs[9999].getInt(), 2);
}

// The interpreter's stack ends at about 65,000 values, and each of these is there twice.
TEST_F(ScriptFunctionOutputTest, ResultsBeyondTheStackFailWithCode5)
{
    run("function echo(...) return ... end");
    const std::vector<FunctionParameter> inputs(40000, FunctionParameter(1));
    std::vector<FunctionParameter> outputs{FunctionParameter(42)};
    Parameters view(outputs);

    const bool isDone =
        environment().callScriptFunction(environment().getScriptFunction("echo"), inputs, view);

    EXPECT_FALSE(isDone);
    EXPECT_EQ(outputs[0].getInt(), 42);
    const Outcome outcome(
        5, false, "[string \"function echo(...) return ... end\"]:1: stack overflow");
    EXPECT_EQ(lastOutcome(environment()), outcome);
    expectLogged(std::get<2>(outcome), "LuaEnvironment");
}

TEST_F(ScriptFunctionOutputTest, TenThousandResultsMayBeTables)
{
    run("function echo(...) return ... end  shared = {}");
    const FunctionParameter shared(environment().getVar("shared"));
    std::vector<FunctionParameter> outputs(10000, outputOf(PARAM_TYPE_SCRIPT_OBJECT));

    call("echo", std::vector<FunctionParameter>(10000, shared), outputs);
    environment().setVar("v", outputs[9999].getScriptObject());

    run("assert(v == shared)");
}

} // namespace

} // namespace tbScripts::test

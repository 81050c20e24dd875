// Scripts that fail in every way a script can: the outcome is an error with a defined text, and the
// environment goes on.

#include "support/CallContextFixture.h"
#include "support/Sanitizers.h"

#include <string>
#include <vector>

namespace tbScripts::test
{

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

namespace
{

struct ErrorRow
{
    const char* name;
    const char* script;
    const char* text;
};

std::ostream& operator<<(std::ostream& stream, const ErrorRow& row)
{
    return stream << row.name;
}

std::vector<ErrorRow> allErrors()
{
    return {
        {"Text", "error('lost', 0)", "lost"},
        {"TextWithPlace", "error('lost')", "[string \"error('lost')\"]:1: lost"},
        {"EmptyText", "error('', 0)", ""},
        {"TextWithManyLines", "error('one\\ntwo', 0)", "one\ntwo"},
        {"Number", "error(12, 0)", "12"},
        {"Fraction", "error(0.5, 0)", "0.5"},
        {"Infinity", "error(1/0, 0)", "inf"},
        {"Nil", "error(nil)", "(error object is a nil value)"},
        {"NoArgument", "error()", "(error object is a nil value)"},
        {"Boolean", "error(false)", "(error object is a boolean value)"},
        {"Table", "error({})", "(error object is a table value)"},
        {"TableWithFailingConversion",
         "error(setmetatable({}, {__tostring = function() error('inner') end}))",
         "(error object is a table value)"},
        {"Function", "error(print)", "(error object is a function value)"},
        {"Coroutine", "error(coroutine.create(print))", "(error object is a thread value)"},
        {"Userdata", "error(newproxy(true))", "(error object is a userdata value)"},
        {"CallOfNil",
         "local nothing nothing()",
         "[string \"local nothing nothing()\"]:1: attempt to call local 'nothing' (a nil value)"},
        {"IndexOfNil",
         "local nothing return nothing.field",
         "[string \"local nothing return nothing.field\"]:1: attempt to index local 'nothing' (a "
         "nil "
         "value)"},
        {"NanAsKey", "rawset(_G, 0/0, 1)", "table index is NaN"}};
}

} // namespace

class ScriptErrorTextTest : public EnvironmentFixture,
                            public ::testing::WithParamInterface<ErrorRow>
{
};

INSTANTIATE_TEST_SUITE_P(
    Errors,
    ScriptErrorTextTest,
    ::testing::ValuesIn(allErrors()),
    ::testing::PrintToStringParamName());

TEST_P(ScriptErrorTextTest, IsLoggedByAnExecution)
{
    EXPECT_FALSE(runScript(environment(), GetParam().script, "round"));

    const std::string message =
        std::string("Error while executing script 'round' : ") + GetParam().text;
    EXPECT_EQ(environment().getLastExecutionResult().code, 5);
    EXPECT_EQ(environment().getLastExecutionResult().message, message);
    EXPECT_THAT(m_log.takeEntries(), ElementsAre(LogEntry{message, "LuaEnvironment"}));
}

TEST_P(ScriptErrorTextTest, IsLoggedByAScriptFunctionCall)
{
    environment().setVar("source", GetParam().script);
    run("fail = loadstring(source)");
    Parameters outputs;

    EXPECT_FALSE(
        environment().callScriptFunction(environment().getScriptFunction("fail"), {}, outputs));

    EXPECT_EQ(environment().getLastExecutionResult().message, GetParam().text);
    EXPECT_THAT(m_log.takeEntries(), ElementsAre(LogEntry{GetParam().text, "LuaEnvironment"}));
}

TEST_P(ScriptErrorTextTest, IsLoggedByAReadingWhoseMetamethodRaisesIt)
{
    environment().setVar("source", GetParam().script);
    run("setmetatable(_G, {__index = loadstring(source)})");

    const int score = environment().getVar("score", -1);

    EXPECT_EQ(score, -1);
    EXPECT_THAT(m_log.takeEntries(), ElementsAre(LogEntry{GetParam().text, "LuaEnvironment"}));
}

class ScriptErrorTest : public CallContextFixture
{
};

TEST_F(ScriptErrorTest, ErrorOfAnErrorHandlerIsReported)
{
    run("works, text = xpcall(function() error('outer') end, function() error('inner') end)");

    EXPECT_FALSE(environment().getVar("works", true));
    EXPECT_TRUE(environment().isVarSet("text"));
}

TEST_F(ScriptErrorTest, RecursionInsideAnErrorHandlerIsReported)
{
    run("function recurse() return 1 + recurse() end works = xpcall(recurse, recurse)");

    EXPECT_FALSE(environment().getVar("works", true));
    EXPECT_EQ(environment().getVar("works", 1), 1); // and the environment goes on
}

TEST_F(ScriptErrorTest, EndlessRecursionFailsTheExecution)
{
    EXPECT_FALSE(runScript(environment(), "local function f() return 1 + f() end f()", "round"));

    EXPECT_EQ(environment().getLastExecutionResult().code, 5);
    EXPECT_THAT(m_log.takeEntries().at(0).message, HasSubstr("stack overflow"));
}

TEST_F(ScriptErrorTest, ManyErrorsWithTracebackAreSwallowed)
{
    environment().setVar("rounds", repetitions(100000));

    run("for i = 1, rounds do xpcall(error, debug.traceback, 'lost') end");

    EXPECT_THAT(m_log.takeEntries(), IsEmpty());
}

TEST_F(ScriptErrorTest, YieldInAScriptFunctionThatAHostFunctionCallsIsAnError)
{
    run("function yields() coroutine.yield(1) finished = true end");
    const ScriptObjectReference yields = environment().getScriptFunction("yields");
    bool hasSucceeded = true;
    declare(
        "callBack",
        {},
        [&](const Parameters&)
        {
            Parameters outputs;
            hasSucceeded = environment().callScriptFunction(yields, {}, outputs);
            return FunctionParameter::VOID;
        });

    run("local thread = coroutine.create(function() callBack() return 'end' end)"
        "works, value = coroutine.resume(thread) state = coroutine.status(thread)");

    EXPECT_FALSE(hasSucceeded);
    EXPECT_FALSE(environment().isVarSet("finished"));
    EXPECT_EQ(environment().getVar("value", ""), "end"); // the coroutine was not suspended
    EXPECT_EQ(environment().getVar("state", ""), "dead");
    EXPECT_THAT(
        m_log.takeEntries(),
        ElementsAre(LogEntry{
            "[string \"function yields() coroutine.yield(1) finished...\"]:1: attempt to yield "
            "across C-call boundary",
            "LuaEnvironment"}));
}

TEST_F(ScriptErrorTest, YieldOutsideOfACoroutineFailsTheExecution)
{
    EXPECT_FALSE(runScript(environment(), "coroutine.yield(1)", "round"));

    EXPECT_THAT(
        m_log.takeEntries(),
        ElementsAre(LogEntry{
            "Error while executing script 'round' : [string \"coroutine.yield(1)\"]:1: attempt to "
            "yield across C-call boundary",
            "LuaEnvironment"}));
}

TEST_F(ScriptErrorTest, YieldInAMetamethodOfTheGlobalsIsContained)
{
    run("setmetatable(_G, {__index = function() return coroutine.yield(1) end})");
    int score = 0;
    declare(
        "read",
        {},
        [&](const Parameters&)
        {
            score = environment().getVar("score", -1);
            return FunctionParameter::VOID;
        });

    run("state = coroutine.resume(coroutine.create(read))");

    EXPECT_EQ(score, -1);
    EXPECT_THAT(
        m_log.takeEntries(),
        ElementsAre(LogEntry{"attempt to yield across C-call boundary", "LuaEnvironment"}));
}

TEST_F(ScriptErrorTest, CallingWhatIsNoFunctionFails)
{
    run("list = {}");
    Parameters outputs;

    EXPECT_FALSE(environment().callScriptFunction(environment().getVar("list"), {}, outputs));
    EXPECT_FALSE(environment().callScriptFunction(ScriptObjectReference(), {}, outputs));

    EXPECT_THAT(
        m_log.takeEntries(),
        ElementsAre(
            LogEntry{"attempt to call a table value", "LuaEnvironment"},
            LogEntry{"attempt to call a nil value", "LuaEnvironment"}));
}

TEST_F(ScriptErrorTest, CallableTableIsCalled)
{
    run("callable = setmetatable({}, {__call = function(_, n) return n + 1 end})");
    const std::vector<FunctionParameter> inputs{FunctionParameter(1)};
    std::vector<FunctionParameter> outputs{FunctionParameter(0)};
    Parameters outputView(outputs);

    EXPECT_TRUE(
        environment().callScriptFunction(environment().getVar("callable"), inputs, outputView));

    EXPECT_EQ(outputs[0].getInt(), 2);
}

} // namespace tbScripts::test

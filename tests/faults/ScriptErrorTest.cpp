// Scripts that fail in every way a script can: the outcome is an error with a defined text, and the
// environment goes on.

#include "support/CallContextFixture.h"
#include "support/Execution.h"
#include "support/RowName.h"
#include "support/Sanitizers.h"

#include <string>
#include <vector>

namespace tbScripts::test
{

namespace
{

struct ErrorRow
{
    const char* row;
    const char* script;
    std::string text;
};

std::vector<ErrorRow> allErrors()
{
    return {
        {"Text", "error('lost', 0)", "lost"},
        {"TextWithPlace", "error('lost')", "[string \"error('lost')\"]:1: lost"},
        {"EmptyText", "error('', 0)", ""},
        {"TextWithManyLines", "error('one\\ntwo', 0)", "one\ntwo"},
        {"StringWithNul", "error('bo\\0om', 0)", std::string("bo\0om", 5)},
        {"Number", "error(12, 0)", "12"},
        {"LongFraction", "error(1/3, 0)", "0.33333333333333"},
        {"HugeNumber", "error(1e100, 0)", "1e+100"},
        {"Fraction", "error(0.5, 0)", "0.5"},
        {"Infinity", "error(1/0, 0)", "inf"},
        {"Nil", "error(nil)", "(error object is a nil value)"},
        {"NoArgument", "error()", "(error object is a nil value)"},
        {"True", "error(true)", "(error object is a boolean value)"},
        {"False", "error(false)", "(error object is a boolean value)"},
        {"Table", "error({})", "(error object is a table value)"},
        {"TableWithAString",
         "error(setmetatable({}, {__tostring = function() return 'boom' end}))",
         "(error object is a table value)"},
        {"TableWithFailingConversion",
         "error(setmetatable({}, {__tostring = error, __index = error}))",
         "(error object is a table value)"},
        {"Function", "error(print)", "(error object is a function value)"},
        {"Coroutine", "error(coroutine.create(print))", "(error object is a thread value)"},
        {"Userdata", "error(newproxy(true))", "(error object is a userdata value)"},
        {"ForeignInteger", "error(1LL)", "(error object is a cdata value)"},
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

using ScriptErrorTextTest = OnRows<EnvironmentFixture, ErrorRow>;

ROWS(ScriptErrorTextTest, allErrors());

TEST_P(ScriptErrorTextTest, IsLoggedByAnExecution)
{
    EXPECT_FALSE(runScript(environment(), GetParam().script, "round"));

    const std::string message = "Error while executing script 'round' : " + GetParam().text;
    EXPECT_EQ(lastOutcome(environment()), Outcome(5, false, message));
    expectLogged(message, "LuaEnvironment");
}

TEST_P(ScriptErrorTextTest, IsLoggedByAScriptFunctionCallAndAReadingWhoseMetamethodRaisesIt)
{
    environment().setVar("source", GetParam().script);
    run("fail = loadstring(source)");
    Parameters outputs;

    EXPECT_FALSE(
        environment().callScriptFunction(environment().getScriptFunction("fail"), {}, outputs));
    EXPECT_EQ(lastOutcome(environment()), Outcome(5, false, GetParam().text));
    expectLogged(GetParam().text, "LuaEnvironment");
    run("setmetatable(_G, {__index = fail})");

    EXPECT_EQ(environment().getVar("score", -1), -1);
    expectLogged(GetParam().text, "LuaEnvironment");
}

using ScriptErrorTest = CallContextFixture;

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

TEST_F(ScriptErrorTest, ManyErrorsWithTracebackAreSwallowed)
{
    environment().setVar("rounds", repetitions(100000));

    run("for i = 1, rounds do xpcall(error, debug.traceback, 'lost') end");
}

TEST_F(ScriptErrorTest, YieldInAScriptFunctionThatAHostFunctionCallsIsAnError)
{
    run("function yields() coroutine.yield(1) finished = true end");
    const ScriptObjectReference yields = environment().getScriptFunction("yields");
    bool hasSucceeded = true;
    declareAction(
        "callBack",
        [&]
        {
            Parameters outputs;
            hasSucceeded = environment().callScriptFunction(yields, {}, outputs);
        });

    run("local thread = coroutine.create(function() callBack() return 'end' end)"
        "works, value = coroutine.resume(thread) state = coroutine.status(thread)");

    EXPECT_FALSE(hasSucceeded);
    EXPECT_FALSE(environment().isVarSet("finished"));
    EXPECT_EQ(environment().getVar("value", ""), "end"); // the coroutine was not suspended
    EXPECT_EQ(environment().getVar("state", ""), "dead");
    expectLogged(
        "[string \"function yields() coroutine.yield(1) finished...\"]:1: attempt to yield "
        "across C-call boundary",
        "LuaEnvironment");
}

TEST_F(ScriptErrorTest, YieldOutsideOfACoroutineFailsTheExecution)
{
    EXPECT_FALSE(runScript(environment(), "coroutine.yield(1)", "round"));

    expectLogged(
        "Error while executing script 'round' : [string \"coroutine.yield(1)\"]:1: attempt to "
        "yield across C-call boundary",
        "LuaEnvironment");
}

TEST_F(ScriptErrorTest, YieldInAMetamethodOfTheGlobalsIsContained)
{
    run("setmetatable(_G, {__index = function() return coroutine.yield(1) end})");
    int score = 0;
    declareAction("read", [&] { score = environment().getVar("score", -1); });

    run("state = coroutine.resume(coroutine.create(read))");

    EXPECT_EQ(score, -1);
    expectLogged("attempt to yield across C-call boundary", "LuaEnvironment");
}

} // namespace tbScripts::test

// Running scripts: the outcome, what a script may do to its own Script, and what is left behind.

#include "support/EnvironmentFixture.h"
#include "support/Execution.h"
#include "support/ReactingLogger.h"
#include "support/RowName.h"

#include <memory>
#include <optional>
#include <utility>

namespace tbScripts::test
{

namespace
{

class EnvironmentExecutionTest : public EnvironmentFixture
{
protected:
    // Expects a failed run that was logged with its message.
    void expectFailure(int code, const std::string& message)
    {
        EXPECT_EQ(lastOutcome(environment()), Outcome(code, false, message));
        expectLogged(message, "LuaEnvironment");
    }
};

TEST_F(EnvironmentExecutionTest, SuccessIsSilentWithCode0AndMayBeRepeated)
{
    CompiledScript script("count = (count or 0) + 1  assert(select('#', ...) == 0)");

    EXPECT_TRUE(environment().execute(script));
    EXPECT_TRUE(environment().execute(script));

    EXPECT_EQ(environment().getVar("count", 0), 2);
    EXPECT_EQ(lastOutcome(environment()), Outcome(0, true, ""));
}

TEST_F(EnvironmentExecutionTest, EmptyScriptSucceeds)
{
    CompiledScript script("");

    EXPECT_TRUE(environment().execute(script));
}

TEST_F(EnvironmentExecutionTest, ScriptForNoInterpreterFailsWithCode3)
{
    Script script;
    script.setName("intro");

    const bool isDone = environment().execute(script);

    EXPECT_FALSE(isDone);
    expectFailure(3, "Script 'intro'not of the right InterpreterType. Currently expecting Lua.");
}

// What is wrong with a script for Lua that has nothing compiled.
struct NoCodeRow
{
    const char* row;
    const char* sources;
    void (*act)(Script& script);
};

using ScriptWithoutCodeTest = OnRows<EnvironmentExecutionTest, NoCodeRow>;

ROWS(
    ScriptWithoutCodeTest,
    {"NeverLoaded", "return 1", [](Script&) {}},
    {"NotCompiled", "return +", [](Script& script) { script.load(); }},
    {"Unloaded",
     "return 1",
     [](Script& script)
     {
         script.load();
         script.unload();
     }},
    {"Disabled", // it still says that it is one for Lua
     "return 1",
     [](Script& script)
     {
         script.load();
         script.setTargetInterpreter(INTERPRETER_UNKNOWN);
     }});

TEST_P(ScriptWithoutCodeTest, FailsWithCode4)
{
    Script script;
    script.setName("intro");
    script.setTargetInterpreter(INTERPRETER_LUA);
    script.setSources(GetParam().sources);
    GetParam().act(script);
    m_log.takeEntries();

    EXPECT_FALSE(environment().execute(script));

    expectFailure(
        4,
        "Script 'intro' has no bytecode ready. Cannot execute anything, be sure the script is "
        "correctly loaded.");
}

TEST_F(EnvironmentExecutionTest, ErrorOfAScriptWithoutNameFailsWithCode5)
{
    CompiledScript script("error('boom', 0)", "");

    EXPECT_FALSE(environment().execute(script));

    expectFailure(5, "Error while executing script '' : boom");
}

TEST_F(EnvironmentExecutionTest, EndlessRecursionFailsWithCode5)
{
    const std::string message = runExpectingError("local function f() return 1 + f() end  f()");

    EXPECT_THAT(
        message,
        ::testing::StartsWith("Error while executing script 'test' : [string \"local function f() "
                              "return 1 + f() end  f()\"]:1: stack overflow"));
    EXPECT_EQ(std::get<0>(lastOutcome(environment())), 5);
}

TEST_F(EnvironmentExecutionTest, ErrorCaughtByTheScriptIsNone)
{
    run("caught = not pcall(error, 'boom')");

    EXPECT_TRUE(environment().getVar("caught", false));
    EXPECT_EQ(lastOutcome(environment()), Outcome(0, true, ""));
}

TEST_F(EnvironmentExecutionTest, MessageKeepsAllBytesOfName)
{
    CompiledScript script("error('boom', 0)", std::string("in\0tro", 6));

    environment().execute(script);

    expectFailure(5, std::string("Error while executing script 'in\0tro' : boom", 44));
}

TEST_F(EnvironmentExecutionTest, EachRunReplacesTheFailureOfAnEarlierOne)
{
    runExpectingError("lives = 3  error('boom')");
    environment().execute(Script());
    expectFailure(3, "Script ''not of the right InterpreterType. Currently expecting Lua.");

    run("assert(lives == 3)");

    EXPECT_EQ(lastOutcome(environment()), Outcome(0, true, ""));
    EXPECT_EQ(environment().getVar("lives", -1), 3);
}

// What a run inside the run left there is not its outcome.
TEST_F(EnvironmentExecutionTest, NestedRunShowsItsFailureInsideAndSuccessHidesIt)
{
    std::optional<Outcome> inner;
    declareAction(
        "runInner",
        [&]
        {
            runScript(environment(), "error('boom', 0)", "inner");
            inner = lastOutcome(environment());
        });

    run("runInner()");

    EXPECT_EQ(inner, Outcome(5, false, "Error while executing script 'inner' : boom"));
    EXPECT_EQ(lastOutcome(environment()), Outcome(0, true, ""));
    expectLogged("Error while executing script 'inner' : boom", "LuaEnvironment");
}

TEST_F(EnvironmentExecutionTest, NestedSuccessLeavesNoTraceInAFailure)
{
    declareAction("runInner", [&] { runScript(environment(), "return 1", "inner"); });

    EXPECT_EQ(
        runExpectingError("runInner()  error('boom', 0)"),
        "Error while executing script 'test' : boom");
    EXPECT_EQ(std::get<0>(lastOutcome(environment())), 5);
}

TEST_F(EnvironmentExecutionTest, ResultIsFreshWhileAScriptRuns)
{
    std::optional<Outcome> during;
    declareAction("look", [&] { during = lastOutcome(environment()); });
    runExpectingError("error('boom')");

    run("look()");

    EXPECT_EQ(during, Outcome(0, true, ""));
}

// What a script has the host do to its own Script while it runs.
struct SelfChangeRow
{
    const char* row;
    void (*act)(std::unique_ptr<CompiledScript>& script);
    const char* lastName;
};

class SelfChangingScriptTest : public OnRows<EnvironmentExecutionTest, SelfChangeRow>
{
protected:
    bool executeChanging(const std::string& sources)
    {
        auto script = std::make_unique<CompiledScript>("change()  " + sources, "intro");
        declareAction("change", [&] { GetParam().act(script); });
        return environment().execute(*script);
    }
};

ROWS(
    SelfChangingScriptTest,
    {"Renamed", [](auto& script) { (*script)->setName("outro"); }, "outro"},
    {"Destroyed", [](auto& script) { script.reset(); }, "intro"},
    {"RenamedAndDestroyed",
     [](auto& script)
     {
         (*script)->setName("outro");
         script.reset();
     },
     "outro"},
    {"Unloaded", [](auto& script) { (*script)->unload(); }, "intro"},
    {"GivenItsInterpreterAnew",
     [](auto& script) { (*script)->setTargetInterpreter(INTERPRETER_LUA); },
     "intro"},
    {"Assigned", [](auto& script) { static_cast<Script&>(*script) = Script(); }, ""},
    {"LoadedAnew",
     [](auto& script)
     {
         (*script)->setSources("answer = 43");
         (*script)->load();
     },
     "intro"});

TEST_P(SelfChangingScriptTest, RunsToItsEnd)
{
    EXPECT_TRUE(executeChanging("answer = 42"));

    EXPECT_EQ(environment().getVar("answer", 0), 42);
}

TEST_P(SelfChangingScriptTest, FailsUnderItsLastName)
{
    EXPECT_FALSE(executeChanging("error('boom', 0)"));

    expectFailure(
        5, std::string("Error while executing script '") + GetParam().lastName + "' : boom");
}

TEST_F(EnvironmentExecutionTest, ScriptMayRunItself)
{
    CompiledScript script("count = (count or 0) + 1  if count < 5 then again() end", "intro");
    declareAction("again", [&] { EXPECT_TRUE(environment().execute(script)); });

    EXPECT_TRUE(environment().execute(script));

    EXPECT_EQ(environment().getVar("count", 0), 5);
}

TEST_F(EnvironmentExecutionTest, ResultsOfAChunkAreDroppedUpToSevenThousand)
{
    run("return 1, 'two', {}");
    for (int i = 0; i < 100; ++i) // else the stack would overflow
        run("local t = {}  for i = 1, 7000 do t[i] = i end  return unpack(t)");

    EXPECT_EQ(lastOutcome(environment()), Outcome(0, true, ""));
}

TEST_F(EnvironmentExecutionTest, DroppedResultsCanBeCollected)
{
    run("local kept = {}  weak = setmetatable({kept}, {__mode = 'v'})  return kept");

    environment().requestGarbageCollection();

    run("assert(weak[1] == nil)");
}

TEST_F(EnvironmentExecutionTest, ErrorOfAFinaliserInsideARunIsTheScripts)
{
    const std::string message = runExpectingError(
        "getmetatable(newproxy(true)).__gc = function() error('finaliser', 0) end "
        "collectgarbage()");

    EXPECT_EQ(message, "Error while executing script 'test' : finaliser");
    EXPECT_EQ(std::get<0>(lastOutcome(environment())), 5);
}

// The interpreter gives up when the stack overflows while an overflow is being handled.
TEST_F(EnvironmentExecutionTest, OverflowInsideTheHandlingOfOneFailsWithCode1)
{
    CompiledScript overflow("local function f() return 1 + f() end  f()", "overflow");
    declareAction("runOverflow", [&] { environment().execute(overflow); });
    std::optional<Outcome> inner;
    declareAction("look", [&] { inner = lastOutcome(environment()); });

    run("local function f() return 1 + f() end "
        "xpcall(f, function() runOverflow()  look() end)");

    EXPECT_EQ(inner, Outcome(1, false, "Error while executing script 'overflow' : stack overflow"));
    expectLogged("Error while executing script 'overflow' : stack overflow", "LuaEnvironment");
}

TEST_F(EnvironmentExecutionTest, EveryLibraryIsOpen)
{
    for (const char* proof :
         {"pcall",
          "('x'):rep(2) == 'xx'",
          "table.concat",
          "math.pi",
          "io.write",
          "os.time",
          "debug.getinfo",
          "coroutine.create",
          "require and package.loaded",
          "bit.band",
          "jit.version",
          "require('ffi').new"})
        run(std::string("assert(") + proof + ", [[" + proof + "]])");
}

TEST_F(EnvironmentExecutionTest, ReceiverThatRunsAScriptLeavesNoTraceInTheResultItIsToldOf)
{
    bool isReacting = false;
    const ReactingLogger receiver(
        [&]
        {
            if (!std::exchange(isReacting, true))
                runScript(environment(), "return 1");
        });

    runScript(environment(), "error('boom', 0)");

    EXPECT_EQ(
        lastOutcome(environment()),
        Outcome(5, false, "Error while executing script 'test' : boom"));
}

} // namespace

} // namespace tbScripts::test

// Running scripts: the outcome, what a script may do to its own Script, and what is left behind.

#include "support/EnvironmentFixture.h"
#include "support/Execution.h"
#include "support/ReactingLogger.h"

#include <memory>
#include <optional>
#include <utility>

namespace tbScripts::test
{

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class EnvironmentExecutionTest : public EnvironmentFixture
{
protected:
    // Expects a failed run that was logged with its message.
    void expectFailure(int code, const std::string& message)
    {
        EXPECT_EQ(lastOutcome(environment()), Outcome(code, false, message));
        EXPECT_THAT(m_log.takeEntries(), ElementsAre(LogEntry{message, "LuaEnvironment"}));
    }

    // Declares a host function that does `work`.
    void declareWork(const std::string& name, std::function<void()> work)
    {
        declare(
            name,
            {},
            [work = std::move(work)](const Parameters&)
            {
                work();
                return FunctionParameter::VOID;
            });
    }
};

TEST_F(EnvironmentExecutionTest, SuccessIsSilentWithCode0)
{
    CompiledScript script("answer = 42");

    const bool isDone = environment().execute(script);

    EXPECT_TRUE(isDone);
    EXPECT_EQ(lastOutcome(environment()), Outcome(0, true, ""));
    EXPECT_THAT(m_log.takeEntries(), IsEmpty());
}

TEST_F(EnvironmentExecutionTest, ScriptMayRunAgain)
{
    CompiledScript script("count = (count or 0) + 1");

    environment().execute(script);
    environment().execute(script);

    EXPECT_EQ(environment().getVar("count", 0), 2);
}

TEST_F(EnvironmentExecutionTest, EmptyScriptSucceeds)
{
    CompiledScript script("");

    EXPECT_TRUE(environment().execute(script));
}

TEST_F(EnvironmentExecutionTest, ScriptGetsNoArguments)
{
    run("assert(select('#', ...) == 0)");
}

TEST_F(EnvironmentExecutionTest, ScriptForNoInterpreterFailsWithCode3)
{
    Script script;
    script.setName("intro");

    const bool isDone = environment().execute(script);

    EXPECT_FALSE(isDone);
    expectFailure(3, "Script 'intro'not of the right InterpreterType. Currently expecting Lua.");
}

TEST_F(EnvironmentExecutionTest, ScriptThatWasNotLoadedFailsWithCode4)
{
    Script script;
    script.setName("intro");
    script.setTargetInterpreter(INTERPRETER_LUA);
    script.setSources("return 1");

    const bool isDone = environment().execute(script);

    EXPECT_FALSE(isDone);
    expectFailure(
        4,
        "Script 'intro' has no bytecode ready. Cannot execute anything, be sure the script is "
        "correctly loaded.");
}

TEST_F(EnvironmentExecutionTest, ScriptThatDidNotCompileFailsWithCode4)
{
    CompiledScript script("return +", "intro");
    m_log.takeEntries();

    const bool isDone = environment().execute(script);

    EXPECT_FALSE(isDone);
    expectFailure(
        4,
        "Script 'intro' has no bytecode ready. Cannot execute anything, be sure the script is "
        "correctly loaded.");
}

TEST_F(EnvironmentExecutionTest, UnloadedScriptFailsWithCode4)
{
    CompiledScript script("return 1", "intro");
    script->unload();

    const bool isDone = environment().execute(script);

    EXPECT_FALSE(isDone);
    expectFailure(
        4,
        "Script 'intro' has no bytecode ready. Cannot execute anything, be sure the script is "
        "correctly loaded.");
}

// It still says that it is one for Lua, but has nothing compiled.
TEST_F(EnvironmentExecutionTest, DisabledScriptFailsWithCode4)
{
    CompiledScript script("return 1", "intro");
    script->setTargetInterpreter(INTERPRETER_UNKNOWN);
    m_log.takeEntries();

    const bool isDone = environment().execute(script);

    EXPECT_FALSE(isDone);
    expectFailure(
        4,
        "Script 'intro' has no bytecode ready. Cannot execute anything, be sure the script is "
        "correctly loaded.");
}

TEST_F(EnvironmentExecutionTest, RuntimeErrorFailsWithCode5)
{
    CompiledScript script("\nerror('boom')", "intro");

    const bool isDone = environment().execute(script);

    EXPECT_FALSE(isDone);
    expectFailure(5, "Error while executing script 'intro' : [string \"...\"]:2: boom");
}

TEST_F(EnvironmentExecutionTest, ErrorOfTheInterpreterFailsWithCode5)
{
    CompiledScript script("local nothing  nothing()", "intro");

    const bool isDone = environment().execute(script);

    EXPECT_FALSE(isDone);
    expectFailure(
        5,
        "Error while executing script 'intro' : [string \"local nothing  nothing()\"]:1: attempt "
        "to call local 'nothing' (a nil value)");
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

TEST_F(EnvironmentExecutionTest, MessageNamesAScriptWithoutName)
{
    CompiledScript script("error('boom', 0)", "");

    environment().execute(script);

    expectFailure(5, "Error while executing script '' : boom");
}

TEST_F(EnvironmentExecutionTest, MessageKeepsAllBytesOfName)
{
    CompiledScript script("error('boom', 0)", std::string("in\0tro", 6));

    environment().execute(script);

    expectFailure(5, std::string("Error while executing script 'in\0tro' : boom", 44));
}

TEST_F(EnvironmentExecutionTest, SuccessReplacesAnEarlierFailure)
{
    runExpectingError("error('boom')");

    run("answer = 42");

    EXPECT_EQ(lastOutcome(environment()), Outcome(0, true, ""));
}

TEST_F(EnvironmentExecutionTest, FailureReplacesAnEarlierFailure)
{
    runExpectingError("error('boom')");
    Script script;

    environment().execute(script);

    expectFailure(3, "Script ''not of the right InterpreterType. Currently expecting Lua.");
}

TEST_F(EnvironmentExecutionTest, EnvironmentIsUsableAfterAFailure)
{
    runExpectingError("lives = 3  error('boom')");

    EXPECT_EQ(environment().getVar("lives", -1), 3);
    run("assert(lives == 3)");
}

// What a run inside the run left there is not its outcome.
TEST_F(EnvironmentExecutionTest, SuccessHidesTheFailureOfANestedRun)
{
    declareWork("runInner", [this] { runScript(environment(), "error('boom', 0)", "inner"); });

    run("runInner()");

    EXPECT_EQ(lastOutcome(environment()), Outcome(0, true, ""));
    EXPECT_THAT(
        m_log.takeEntries(),
        ElementsAre(LogEntry{"Error while executing script 'inner' : boom", "LuaEnvironment"}));
}

TEST_F(EnvironmentExecutionTest, NestedRunShowsItsOwnResultInside)
{
    std::optional<Outcome> inner;
    declareWork(
        "runInner",
        [&]
        {
            runScript(environment(), "error('boom', 0)", "inner");
            inner = lastOutcome(environment());
        });

    run("runInner()");

    EXPECT_EQ(inner, Outcome(5, false, "Error while executing script 'inner' : boom"));
    m_log.takeEntries();
}

TEST_F(EnvironmentExecutionTest, ResultIsFreshWhileAScriptRuns)
{
    std::optional<Outcome> during;
    declareWork("look", [&] { during = lastOutcome(environment()); });
    runExpectingError("error('boom')");

    run("look()");

    EXPECT_EQ(during, Outcome(0, true, ""));
}

TEST_F(EnvironmentExecutionTest, RenamedScriptFailsUnderItsNewName)
{
    CompiledScript script("rename()  error('boom', 0)", "intro");
    declareWork("rename", [&] { script->setName("outro"); });

    environment().execute(script);

    expectFailure(5, "Error while executing script 'outro' : boom");
}

TEST_F(EnvironmentExecutionTest, DestroyedScriptRunsToItsEnd)
{
    auto script = std::make_unique<CompiledScript>("destroy()  answer = 42");
    declareWork("destroy", [&] { script.reset(); });

    const bool isDone = environment().execute(*script);

    EXPECT_TRUE(isDone);
    EXPECT_EQ(environment().getVar("answer", 0), 42);
}

TEST_F(EnvironmentExecutionTest, DestroyedScriptFailsUnderItsLastName)
{
    auto script = std::make_unique<CompiledScript>("destroy()  error('boom', 0)", "intro");
    declareWork(
        "destroy",
        [&]
        {
            (*script)->setName("outro");
            script.reset();
        });

    environment().execute(*script);

    expectFailure(5, "Error while executing script 'outro' : boom");
}

TEST_F(EnvironmentExecutionTest, ScriptUnloadedByItselfRunsToItsEnd)
{
    CompiledScript script("unload()  answer = 42");
    declareWork("unload", [&] { script->unload(); });

    const bool isDone = environment().execute(script);

    EXPECT_TRUE(isDone);
    EXPECT_EQ(environment().getVar("answer", 0), 42);
}

TEST_F(EnvironmentExecutionTest, ScriptLoadedAnewByItselfRunsToItsEnd)
{
    CompiledScript script("reload()  answer = 42");
    declareWork(
        "reload",
        [&]
        {
            script->setSources("answer = 43");
            script->load();
        });

    const bool isDone = environment().execute(script);

    EXPECT_TRUE(isDone);
    EXPECT_EQ(environment().getVar("answer", 0), 42);
}

TEST_F(EnvironmentExecutionTest, ResultsOfAChunkAreDropped)
{
    run("return 1, 'two', {}");

    EXPECT_EQ(lastOutcome(environment()), Outcome(0, true, ""));
}

TEST_F(EnvironmentExecutionTest, ChunkMayReturnSevenThousandValues)
{
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
    declareWork("runOverflow", [&] { environment().execute(overflow); });
    std::optional<Outcome> inner;
    declareWork("look", [&] { inner = lastOutcome(environment()); });

    run("local function f() return 1 + f() end "
        "xpcall(f, function() runOverflow()  look() end)");

    EXPECT_EQ(inner, Outcome(1, false, "Error while executing script 'overflow' : stack overflow"));
    EXPECT_THAT(
        m_log.takeEntries(),
        ElementsAre(LogEntry{
            "Error while executing script 'overflow' : stack overflow", "LuaEnvironment"}));
}

namespace
{

struct LibraryRow
{
    const char* name;
    const char* proof; // of its presence
};

void PrintTo(const LibraryRow& row, std::ostream* stream)
{
    *stream << row.name;
}

} // namespace

class EnvironmentLibraryTest : public EnvironmentFixture,
                               public ::testing::WithParamInterface<LibraryRow>
{
};

TEST_P(EnvironmentLibraryTest, IsOpen)
{
    run(std::string("assert(") + GetParam().proof + ")");
}

INSTANTIATE_TEST_SUITE_P(
    Libraries,
    EnvironmentLibraryTest,
    ::testing::Values(
        LibraryRow{"Base", "pcall"},
        LibraryRow{"String", "('x'):rep(2) == 'xx'"},
        LibraryRow{"Table", "table.concat"},
        LibraryRow{"Math", "math.pi"},
        LibraryRow{"Io", "io.write"},
        LibraryRow{"Os", "os.time"},
        LibraryRow{"Debug", "debug.getinfo"},
        LibraryRow{"Coroutine", "coroutine.create"},
        LibraryRow{"Package", "require and package.loaded"},
        LibraryRow{"Bit", "bit.band"},
        LibraryRow{"Jit", "jit.version"},
        LibraryRow{"Ffi", "require('ffi').new"}),
    [](const auto& row) { return std::string(row.param.name); });

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

} // namespace tbScripts::test

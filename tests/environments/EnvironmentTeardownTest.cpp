// The end of an environment: functions, globals, a collection, the interpreter, in this order.

#include "support/Execution.h"
#include "support/TeardownFixture.h"

#include <tbScripts/LogManager.h>

namespace tbScripts::test
{

using EnvironmentTeardownTest = TeardownFixture;

TEST_F(EnvironmentTeardownTest, GoesFromFunctionsOverGlobalsToTheInterpreterOnce)
{
    run("debug.getregistry().kept = onEnd('S')  kept = onEnd('G')");
    declareWithEnd("f", [this] { m_trace.add('F'); });
    declareWithEnd("g", [this] { m_trace.add('F'); });

    destroyEnvironment();

    EXPECT_EQ(m_trace.text(), "FFGS");
}

TEST_F(EnvironmentTeardownTest, FunctionsAreDeadWhenFinalisersRun)
{
    declare("f", {}, [](const Parameters&) { return FunctionParameter::VOID; });
    run("local f = f  kept = onEnd('G', function() f() end)");

    destroyEnvironment();

    EXPECT_EQ(m_trace.text(), "G");
    expectLogged("Function 'f' does not exist anymore.", "LuaEnvironment");
}

TEST_F(EnvironmentTeardownTest, EveryGlobalIsGoneWhenFinalisersRun)
{
    run("_G[1], _G[1.5], _G[true], _G[{}] = 1, 2, 3, 4 "
        "local globals, next, note = _G, next, note "
        "kept = onEnd('G', function() if next(globals) == nil then note(('e'):byte()) end end)");

    destroyEnvironment();

    EXPECT_EQ(m_trace.text(), "Ge");
}

TEST_F(EnvironmentTeardownTest, GlobalsAreClearedPastMetamethods)
{
    run("local globals, rawget, note = _G, rawget, note "
        "kept = onEnd('G', function() if not rawget(globals, 'print') then note(101) end end) "
        "setmetatable(_G, {__newindex = error, __index = error})");

    destroyEnvironment();

    EXPECT_EQ(m_trace.text(), "Ge");
}

TEST_F(EnvironmentTeardownTest, LoadedModulesGoWithTheGlobals)
{
    run("package.loaded.module = onEnd('M') "
        "package.preload.other = onEnd('P') "
        "debug.getregistry().kept = onEnd('S')");

    destroyEnvironment();

    const std::string text = m_trace.text();
    EXPECT_EQ(text.size(), 3U);
    EXPECT_EQ(text.back(), 'S');
}

// Two collections of the globals' end and two more; what raises in the interpreter's own end is
// lost.
TEST_F(EnvironmentTeardownTest, CollectsFourTimesBeforeTheInterpreterCloses)
{
    run("local error, newproxy, getmetatable = error, newproxy, getmetatable "
        "local function chain(generation) "
        "    local value = newproxy(true) "
        "    getmetatable(value).__gc = function() "
        "        chain(generation + 1)  error(generation .. '', 0) "
        "    end "
        "    return value "
        "end "
        "kept = chain(1)");

    destroyEnvironment();

    expectLogged(
        {{"1", "LuaEnvironment"},
         {"2", "LuaEnvironment"},
         {"3", "LuaEnvironment"},
         {"4", "LuaEnvironment"}});
}

TEST_F(EnvironmentTeardownTest, FunctionsGoBeforeTheCollectionWithoutInterpreterToo)
{
    declareWithEnd("f", [] { LogManager::getInstance()->log("callable gone", "test"); });
    environment().setEnvironmentFor(INTERPRETER_UNKNOWN);
    m_log.takeEntries();

    destroyEnvironment();

    expectLogged(
        {{"callable gone", "test"},
         {"Requesting a garbage collection in environment 'world', which has no "
          "InterpreterType. This will have no effect.",
          "Environment"}});
}

TEST_F(EnvironmentTeardownTest, SuspendedCoroutinesLetGoOfTheirValues)
{
    run("kept = coroutine.create(function() local value = onEnd('C')  coroutine.yield() end) "
        "coroutine.resume(kept)");

    destroyEnvironment();

    EXPECT_EQ(m_trace.text(), "C");
}

TEST_F(EnvironmentTeardownTest, HostReferencesKeepTheirValueUntilTheInterpreterCloses)
{
    run("kept = onEnd('R')  other = onEnd('G')");
    const ScriptObjectReference reference = environment().getVar("kept");

    destroyEnvironment();

    EXPECT_EQ(m_trace.text(), "GR");
}

TEST_F(EnvironmentTeardownTest, ASwitchClosesTheInterpreterTooAndLeavesTheFunctions)
{
    run("kept = onEnd('G')");
    declareWithEnd("f", [this] { m_trace.add('F'); });

    environment().setEnvironmentFor(INTERPRETER_LUA);

    EXPECT_EQ(m_trace.text(), "G");
}

TEST_F(EnvironmentTeardownTest, FinalisersMayRaiseWhileASwitchClosesTheInterpreter)
{
    run("kept = onEnd('G', function() error('lost', 0) end)  other = onEnd('G')");

    environment().setEnvironmentFor(INTERPRETER_LUA);

    EXPECT_EQ(m_trace.text(), "GG");
}

// What the host may still do while an environment ends, and ends that come from inside.
using EnvironmentTeardownCallsTest = TeardownFixture;

// The end of a callable is host code, which may call the environment that is being destroyed.
TEST_F(EnvironmentTeardownCallsTest, NothingIsFoundDeclaredReadOrSetMeanwhile)
{
    Environment& going = environment();
    const Function* declared = nullptr;
    bool isFound = true;
    int read = 0;
    environment().setVar("v", 1);
    declareWithEnd(
        "f",
        [&]
        {
            declared = going.setFunc("late");
            isFound = going.isFuncSet("f") || going.getFunc("f");
            read = going.isVarSet("v") ? -2 : going.getVar("v", -1);
            going.setVar("late", true);
            m_trace.add('F');
        });
    run("local note = note  setmetatable(_G, {__newindex = function() note(('s'):byte()) end})");

    destroyEnvironment();

    EXPECT_EQ(m_trace.text(), "F");
    EXPECT_EQ(declared, nullptr);
    EXPECT_FALSE(isFound);
    EXPECT_EQ(read, -1);
}

TEST_F(EnvironmentTeardownCallsTest, DeclaringIsSilentMeanwhileWithoutInterpreterToo)
{
    Environment& going = environment();
    declareWithEnd("f", [&] { m_trace.add(going.setFunc("late") ? 'x' : 'n'); });
    environment().setEnvironmentFor(INTERPRETER_UNKNOWN);
    m_log.takeEntries();

    destroyEnvironment();

    EXPECT_EQ(m_trace.text(), "n");
    EXPECT_EQ(m_log.takeEntries().size(), 1U); // of the collection
}

TEST_F(EnvironmentTeardownCallsTest, SwitchingAndAssigningDoNothingMeanwhile)
{
    run("kept = onEnd('G')");
    Environment other;
    other.setEnvironmentFor(INTERPRETER_LUA);
    Environment& going = environment();
    bool isSet = true;
    declareWithEnd(
        "f",
        [&]
        {
            going.setEnvironmentFor(INTERPRETER_LUA);
            isSet = going.isVarSet("print");
            going = other;
        });
    declareWithEnd("g", [this] { m_trace.add('F'); });

    destroyEnvironment();

    EXPECT_EQ(m_trace.text(), "FG");
    EXPECT_FALSE(isSet);
    EXPECT_TRUE(other.isVarSet("print"));
}

TEST_F(EnvironmentTeardownCallsTest, CopyMadeMeanwhileHasNoInterpreter)
{
    Environment& going = environment();
    std::unique_ptr<Environment> copy;
    declareWithEnd("f", [&] { copy = std::make_unique<Environment>(going); });

    destroyEnvironment();

    EXPECT_FALSE(copy->isVarSet("print"));
    EXPECT_EQ(copy->setFunc("f"), nullptr);
    expectLogged(
        {{"Querying if a a variable is set in environment 'world', which has no "
          "InterpreterType. This will have no effect.",
          "Environment"},
         {"Requesting a function in environment 'world', which has no InterpreterType. This "
          "will have no effect, returning nullptr.",
          "Environment"}});
    copy.reset();
    m_log.takeEntries(); // its own teardown
}

// A script that ends its own world goes on to its end in it.
TEST_F(EnvironmentTeardownCallsTest, EndInsideARunWaitsForItsReturn)
{
    declareWithEnd("f", [this] { m_trace.add('F'); });
    declareQuit();
    CompiledScript script("kept = onEnd('G')  quit()  note(('c'):byte())");

    const bool isDone = environment().execute(script);

    EXPECT_TRUE(isDone);
    EXPECT_EQ(m_trace.text(), "cFG");
}

TEST_F(EnvironmentTeardownCallsTest, EndInsideAScriptCallWaitsForItsReturn)
{
    declareWithEnd("f", [this] { m_trace.add('F'); });
    declareQuit();
    run("function callQuit() quit()  note(('c'):byte())  return 42 end");
    std::vector<FunctionParameter> outputs{FunctionParameter(0)};
    Parameters outputView(outputs);

    environment().callScriptFunction(
        environment().getScriptFunction("callQuit"), Parameters(), outputView);

    EXPECT_EQ(outputs[0].getInt(), 42);
    EXPECT_EQ(m_trace.text(), "cF");
}

// Functions stay, so the finalisers of an interpreter that closes can still call the host.
TEST_F(EnvironmentTeardownCallsTest, HostIsRefusedWhileASwitchClosesTheInterpreter)
{
    environment().setVar("v", 1);
    int seen = 0;
    bool isDone = true;
    Function* declared = nullptr;
    CompiledScript script("return 1");
    declareAction(
        "look",
        [&]
        {
            seen = environment().isVarSet("v") ? -2 : environment().getVar("v", -1);
            isDone = environment().execute(script);
            declared = environment().setFunc("late");
            m_trace.add('H');
        });
    run("kept = onEnd('G', look)");

    environment().setEnvironmentFor(INTERPRETER_LUA);

    EXPECT_EQ(m_trace.text(), "GH");
    EXPECT_EQ(seen, -1);
    EXPECT_FALSE(isDone);
    EXPECT_EQ(declared, nullptr);
}

TEST_F(EnvironmentTeardownCallsTest, EndWhileASwitchClosesTheInterpreterWaitsForThat)
{
    declareWithEnd("f", [this] { m_trace.add('F'); });
    declareQuit([this] { m_trace.add('q'); });
    run("kept = onEnd('G', quit)  other = onEnd('G')");

    environment().setEnvironmentFor(INTERPRETER_LUA);

    EXPECT_EQ(m_trace.text(), "GGqF");
}

} // namespace tbScripts::test

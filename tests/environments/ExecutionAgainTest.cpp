// A script that runs again finds what it would find if it had been loaded anew.

#include "support/EnvironmentFixture.h"
#include "support/Execution.h"

#include <tbScripts/Script.h>

#include <string>
#include <vector>

namespace tbScripts::test
{

class ExecutionAgainTest : public EnvironmentFixture
{
protected:
    // Compiles `sources` as the script that runs again. It has run some times already, but only up
    // to its beginning.
    void load(const std::string& sources)
    {
        m_script.setTargetInterpreter(INTERPRETER_LUA);
        m_script.setSources("if beginning then return end " + sources);
        ASSERT_TRUE(m_script.load());
        environment().setVar("beginning", true);
        for (int i = 0; i < 3; ++i)
            ASSERT_TRUE(runAgain());
        environment().setVar("beginning", false);
    }

    bool runAgain() { return environment().execute(m_script); }

    Script m_script;
};

TEST_F(ExecutionAgainTest, EachRunHasAFunctionAndAnEnvironmentOfItsOwn)
{
    load("functions = functions or {} functions[debug.getinfo(1, 'f').func] = true "
         "seen = (seen or 0) + 1 setfenv(1, {})");

    runAgain();
    runAgain();
    runAgain();

    run("local n = 0 for f in pairs(functions) do n = n + 1 end assert(n == 3 and seen == 3)");
}

TEST_F(ExecutionAgainTest, FunctionThatARunLeftBehindKeepsItsEnvironment)
{
    load("if not left then left = debug.getinfo(1, 'f').func setfenv(1, {left = true}) end");
    runAgain();
    run("before = getfenv(left)");

    runAgain();

    EXPECT_TRUE(runScript(environment(), "assert(before ~= _G and getfenv(left) == before)"));
}

TEST_F(ExecutionAgainTest, SuspendedFunctionOfAnEarlierRunGoesOn)
{
    load("if not body then body = debug.getinfo(1, 'f').func return end "
         "local at = ... if at then coroutine.yield() finished = at else other = true end");
    runAgain();
    run("thread = coroutine.create(body) coroutine.resume(thread, 7)");

    runAgain();

    EXPECT_TRUE(
        runScript(environment(), "assert(other) coroutine.resume(thread) assert(finished == 7)"));
}

TEST_F(ExecutionAgainTest, RunInsideOfItselfIsAnotherRun)
{
    load("depth = (depth or 0) + 1 local mine = depth if mine < 5 then again() end sum = (sum or "
         "0) + mine");
    declareAction("again", [this] { runAgain(); });

    EXPECT_TRUE(runAgain());

    EXPECT_EQ(environment().getVar("sum", 0), 15);
}

TEST_F(ExecutionAgainTest, FunctionIsAMainChunkEachTime)
{
    load("local i = debug.getinfo(1) runs = (runs or '') .. i.what .. i.linedefined .. "
         "i.lastlinedefined .. i.nups .. i.currentline .. (...  and 'x' or '') .. ';'");

    runAgain();
    runAgain();

    EXPECT_EQ(environment().getVar("runs", ""), "main0101;main0101;");
}

TEST_F(ExecutionAgainTest, ErrorsNameTheSameLineEachTime)
{
    load("-- first\nif ran then error('second') end\nran = true");

    EXPECT_TRUE(runAgain());
    EXPECT_FALSE(runAgain());

    m_log.takeEntries();
    EXPECT_EQ(
        environment().getLastExecutionResult().message,
        "Error while executing script '' : "
        "[string \"if beginning then return end -- first...\"]:2: second");
}

TEST_F(ExecutionAgainTest, GlobalTableThatAScriptPutInPlaceIsUsedByTheNextRun)
{
    load("place = (place or 0) + 1");
    runAgain();
    run("old = _G setfenv(0, setmetatable({}, {__index = old}))");

    runAgain();
    runAgain();

    EXPECT_EQ(environment().getVar("place", 0), 3);
    EXPECT_TRUE(runScript(environment(), "assert(old.place == 1)"));
}

TEST_F(ExecutionAgainTest, LoadedAnewItRunsItsNewSourcesAndUnloadedItFails)
{
    load("x = 1");
    runAgain();
    load("x = 2");
    runAgain();
    EXPECT_EQ(environment().getVar("x", 0), 2);
    m_script.unload();

    EXPECT_FALSE(runAgain());

    EXPECT_EQ(environment().getLastExecutionResult().code, 4);
    m_log.takeEntries();
}

TEST_F(ExecutionAgainTest, EveryEnvironmentRunsItForItself)
{
    Environment other;
    other.setEnvironmentFor(INTERPRETER_LUA);
    load("x = (x or 0) + 1");

    runAgain();
    other.execute(m_script);
    other.execute(m_script);
    runAgain();
    runAgain();

    EXPECT_EQ(environment().getVar("x", 0), 3);
    EXPECT_EQ(other.getVar("x", 0), 2);
}

TEST_F(ExecutionAgainTest, NextInterpreterRunsItToo)
{
    load("x = (x or 0) + 1");
    runAgain();

    environment().setEnvironmentFor(INTERPRETER_LUA);
    runAgain();

    EXPECT_EQ(environment().getVar("x", 0), 1);
}

TEST_F(ExecutionAgainTest, ThousandScriptsInTurnAreNotTakenForEachOther)
{
    std::vector<Script> scripts(1000);
    for (std::size_t i = 0; i < scripts.size(); ++i)
    {
        scripts[i].setTargetInterpreter(INTERPRETER_LUA);
        scripts[i].setSources("sum = (sum or 0) + " + std::to_string(i));
        scripts[i].load();
    }

    for (int round = 0; round < 3; ++round)
    {
        for (const Script& script : scripts)
            environment().execute(script);
    }

    EXPECT_EQ(environment().getVar("sum", 0), 3 * 999 * 1000 / 2);
}

TEST_F(ExecutionAgainTest, HookOfAScriptSeesNoFunctionButTheScript)
{
    load("x = 1");
    run("calls = 0 debug.sethook(function() "
        "if debug.getinfo(2, 'S').what ~= 'C' then calls = calls + 1 end end, 'c')");

    runAgain();
    runAgain();

    EXPECT_EQ(environment().getVar("calls", 0), 2);
    run("debug.sethook()");
}

TEST_F(ExecutionAgainTest, RegistryThatAScriptHasEmptiedOfFunctionsDoesNotHinderIt)
{
    load("x = (x or 0) + 1");
    runAgain();
    run("for _, value in pairs(debug.getregistry()) do "
        "if type(value) == 'table' and type(value[#value]) == 'function' then "
        "for i = 1, 300 do value[i] = nil end end end "
        "for _, value in pairs(debug.getregistry()) do if type(value) == 'table' then "
        "for i = 1, 300 do if type(value[i]) == 'function' then value[i] = nil end end end end");

    EXPECT_TRUE(runAgain());
    EXPECT_EQ(environment().getVar("x", 0), 2);
}

TEST_F(ExecutionAgainTest, WhatTheInterpreterHasCompiledIsUsedAgain)
{
    load("local sum = 0 for i = 1, 1000 do sum = sum + i end total = sum");
    run("traces = 0 jit.attach(function(what) if what == 'start' then traces = traces + 1 end end, "
        "'trace')");
    runAgain();
    runAgain();
    const int first = environment().getVar("traces", 0);

    runAgain();
    runAgain();

    EXPECT_GT(first, 0);
    EXPECT_EQ(environment().getVar("traces", 0), first);
}

TEST_F(ExecutionAgainTest, ScriptIsTheSameFromItsFirstRunOn)
{
    CompiledScript script(R"(
        local i = debug.getinfo(1)
        seen = seen or {}
        seen[#seen + 1] = i.what .. i.source .. select('#', ...) .. tostring(getfenv(1) == _G)
    )");

    for (int i = 0; i < 4; ++i)
        environment().execute(script);

    EXPECT_TRUE(runScript(
        environment(),
        "assert(#seen == 4) for i = 2, 4 do assert(seen[i] == seen[1] and #seen[i] > 20) end"));
}

} // namespace tbScripts::test

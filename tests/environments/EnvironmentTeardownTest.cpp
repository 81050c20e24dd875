// The end of an environment: functions, globals, a collection, the interpreter, in this order.

#include "support/TeardownFixture.h"

#include <tbScripts/LogManager.h>

namespace tbScripts::test
{

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class EnvironmentTeardownTest : public TeardownFixture
{
};

TEST_F(EnvironmentTeardownTest, CallablesAreDestroyedOnce)
{
    declareWithEnd("f", [this] { m_trace.add('F'); });
    declareWithEnd("g", [this] { m_trace.add('F'); });

    destroyEnvironment();

    EXPECT_EQ(m_trace.text(), "FF");
}

TEST_F(EnvironmentTeardownTest, FunctionsGoBeforeWhatGlobalsHold)
{
    run("kept = onEnd('G')");
    declareWithEnd("f", [this] { m_trace.add('F'); });

    destroyEnvironment();

    EXPECT_EQ(m_trace.text(), "FG");
}

TEST_F(EnvironmentTeardownTest, FunctionsAreDeadWhenFinalisersRun)
{
    declare("f", {}, [](const Parameters&) { return FunctionParameter::VOID; });
    run("local f = f  kept = onEnd('G', function() f() end)");

    destroyEnvironment();

    EXPECT_EQ(m_trace.text(), "G");
    EXPECT_THAT(
        m_log.takeEntries(),
        ElementsAre(LogEntry{"Function 'f' does not exist anymore.", "LuaEnvironment"}));
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
    EXPECT_THAT(m_log.takeEntries(), IsEmpty());
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

TEST_F(EnvironmentTeardownTest, InterpreterClosesLast)
{
    run("debug.getregistry().kept = onEnd('S')  kept = onEnd('G')");
    declareWithEnd("f", [this] { m_trace.add('F'); });

    destroyEnvironment();

    EXPECT_EQ(m_trace.text(), "FGS");
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

    EXPECT_THAT(
        m_log.takeEntries(),
        ElementsAre(
            LogEntry{"1", "LuaEnvironment"},
            LogEntry{"2", "LuaEnvironment"},
            LogEntry{"3", "LuaEnvironment"},
            LogEntry{"4", "LuaEnvironment"}));
}

TEST_F(EnvironmentTeardownTest, FunctionsGoBeforeTheCollectionWithoutInterpreterToo)
{
    declareWithEnd("f", [] { LogManager::getInstance()->log("callable gone", "test"); });
    environment().setEnvironmentFor(INTERPRETER_UNKNOWN);
    m_log.takeEntries();

    destroyEnvironment();

    EXPECT_THAT(
        m_log.takeEntries(),
        ElementsAre(
            LogEntry{"callable gone", "test"},
            LogEntry{
                "Requesting a garbage collection in environment 'world', which has no "
                "InterpreterType. This will have no effect.",
                "Environment"}));
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

TEST_F(EnvironmentTeardownTest, ASwitchClosesTheInterpreterToo)
{
    run("kept = onEnd('G')");

    environment().setEnvironmentFor(INTERPRETER_LUA);

    EXPECT_EQ(m_trace.text(), "G");
}

TEST_F(EnvironmentTeardownTest, ASwitchLeavesTheFunctions)
{
    declareWithEnd("f", [this] { m_trace.add('F'); });

    environment().setEnvironmentFor(INTERPRETER_LUA);

    EXPECT_EQ(m_trace.text(), "");
}

TEST_F(EnvironmentTeardownTest, FinalisersMayRaiseWhileASwitchClosesTheInterpreter)
{
    run("kept = onEnd('G', function() error('lost', 0) end)  other = onEnd('G')");

    environment().setEnvironmentFor(INTERPRETER_LUA);

    EXPECT_EQ(m_trace.text(), "GG");
    EXPECT_THAT(m_log.takeEntries(), IsEmpty());
}

} // namespace tbScripts::test

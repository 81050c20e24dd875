// What a script does that nobody expects of it: the host meets errors at the most.

#include "support/ChildProcess.h"
#include "support/RowName.h"
#include "support/UserTypeFixture.h"

#include <tbScripts/Namespace.h>

#include <stdexcept>
#include <string>
#include <vector>

namespace tbScripts::test
{

namespace
{

struct HabitRow
{
    const char* row;
    const char* sources;
};

} // namespace

/// What a script has done to its world before the host goes on using it.
class ScriptHabitTest : public OnRows<UserTypeFixture, HabitRow>
{
protected:
    ScriptHabitTest()
    {
        declareField("x", &Vec::x);
        declareArrayAccess();
        declareMethod("id", {}, [](const Parameters& parameters) { return parameters[0]; });
        environment().setNamespace("space")->setVar("name", "value");
        setHostObject("v", m_hostObject);
        m_kept = environment().getVar("v");
    }

    void TearDown() override
    {
        m_kept = ScriptObjectReference();
        UserTypeFixture::TearDown();
    }

    // Does a bit of everything. What comes of it does not matter here.
    void useEverything()
    {
        environment().setVar("number", 1);
        environment().getVar("number", "");
        environment().setObject("w", "Vec", &m_hostObject);
        environment().getObject("w", "Vec");
        if (Function* const late = environment().setFunc("late"))
            late->setFunction([](const Parameters&) { return FunctionParameter("text"); });
        environment().setNamespace("late::scope");
        if (UserType* const type = environment().setUserType("Late"))
            setMaker(*type);
        runScript(environment(), "local a = Late.new() local b = v.x, v[1], v:id(), late()");
        const tbMemory::Buffer bytes = environment().serializeScriptObject(m_kept, false);
        environment().setVar("back", environment().deserializeScriptObject(bytes));
        Parameters outputs;
        environment().callScriptFunction(environment().getScriptFunction("late"), {}, outputs);
        environment().getNamespace("space")->clear();
        environment().requestGarbageCollection();
    }

    ScriptObjectReference m_kept;
};

ROWS(
    ScriptHabitTest,
    {"EmptiesTheGlobals", "for k in pairs(_G) do _G[k] = nil end"},
    {"EmptiesTheTypesTable", "for k in pairs(Vec) do Vec[k] = nil end"},
    {"EmptiesEveryTable",
     "local next, type, seen = next, type, {} "
     "local function empty(t) "
     "    if seen[t] then return end  seen[t] = true "
     "    for k, v in next, t do if type(v) == 'table' then empty(v) end  t[k] = nil end "
     "end "
     "empty(_G)"},
    {"ReplacesTheLibraryByWhatRaises",
     "local function fail() error('no', 0) end "
     "for _, name in ipairs({'string', 'table', 'math', 'coroutine', 'debug', 'package', "
     "    'rawget', 'rawset', 'setmetatable', 'getmetatable', 'tostring', 'type', 'next', "
     "    'pairs', 'select', 'pcall', 'error', 'require', 'collectgarbage'}) do "
     "    _G[name] = fail "
     "end"},
    {"RaisesInAHookAtEveryStep", "debug.sethook(function() error('of the hook', 0) end, '', 1)"},
    {"RaisesInAHookAtEveryCall", "debug.sethook(function() error('of the hook', 0) end, 'cr')"},
    {"GivesEveryTypeAMetatable",
     "local m = {__index = function() error('no') end, __call = error, __gc = error} "
     "for _, value in ipairs({1, 'text', true, print, coroutine.create(print)}) do "
     "    debug.setmetatable(value, m) "
     "end "
     "debug.setmetatable(nil, m)"},
    {"MakesTheTypeItsOwnMetatable",
     "setmetatable(Vec, Vec)  Vec.__index = Vec  Vec.__newindex = Vec"},
    {"GivesTheGlobalsAChainWithoutEnd",
     "local t = setmetatable({}, {__index = _G, __newindex = _G}) "
     "setmetatable(_G, {__index = t, __newindex = t})"},
    {"LetsAMetamethodOfTheGlobalsCallTheHost",
     "setmetatable(_G, {__index = function(_, k) return v.x end, "
     "__newindex = function(t, k, value) v.x = 1  rawset(t, k, value) end})"},
    {"SwapsTheMetatablesOfInstances",
     "debug.setmetatable(v, getmetatable(io.stdout))  v = newproxy(true) "
     "debug.setmetatable(v, Vec)"},
    {"ReplacesItsNamespace", "space = setmetatable({}, {__index = error, __newindex = error})"},
    {"StopsTheCollector", "collectgarbage('stop') for i = 1, 1000 do Vec.new() end"},
    {"RevivesWhatIsCollected",
     "revived = {} "
     "for i = 1, 10 do "
     "    local proxy, w = newproxy(true), Vec.new() "
     "    getmetatable(proxy).__gc = function(p) revived[i] = {p, w} end "
     "end"},
    {"RunsInACoroutineThatNeverEnds",
     "thread = coroutine.wrap(function() while true do coroutine.yield(Vec.new()) end end) "
     "for i = 1, 10 do thread() end"},
    {"ChangesItsEnvironment", "setfenv(0, {})  setfenv(1, {})"});

TEST_P(ScriptHabitTest, LeavesTheHostRunning)
{
    runScript(environment(), GetParam().sources);

    useEverything();
    useEverything();

    destroyEnvironment();
    m_log.takeEntries();
    EXPECT_LE(m_destroyed.size(), m_made.size()); // and none of them twice
}

using ScriptMistakesTest = UserTypeFixture;

TEST_F(ScriptMistakesTest, SortWithAnOrderThatMakesNoSenseIsAnError)
{
    declare("less", {}, [](const Parameters&) { return FunctionParameter(true); });

    run("local t = {} for i = 1, 100 do t[i] = i end  works = pcall(table.sort, t, less)");

    EXPECT_FALSE(environment().getVar("works", true));
}

TEST_F(ScriptMistakesTest, TableMayChangeWhileTheHostIsAskedAboutIt)
{
    declare(
        "look",
        {PARAM_TYPE_SCRIPT_OBJECT},
        [this](const Parameters& parameters)
        {
            environment().setVar("t", parameters[0].getScriptObject());
            runScript(environment(), "for k in pairs(t) do t[k] = nil end collectgarbage()");
            return FunctionParameter::VOID;
        });

    run("local t = {} for i = 1, 100 do t['k' .. i] = {} end "
        "for k in pairs(t) do look(t) end  isEmpty = next(t) == nil");

    EXPECT_TRUE(environment().getVar("isEmpty", false));
}

TEST_F(ScriptMistakesTest, InstancesMadeByTheThousandInAFinaliserAreAllDestroyed)
{
    run("local proxy, Vec = newproxy(true), Vec "
        "getmetatable(proxy).__gc = function() for i = 1, 10000 do Vec.new() end end");

    destroyEnvironment();

    EXPECT_EQ(m_made.size(), 10000U);
    EXPECT_EQ(m_destroyed.size(), 10000U);
}

TEST_F(ScriptMistakesTest, ProxyThatCallsItselfIsAnError)
{
    run("local m = {}  local t = setmetatable({}, m)  m.__index = t  m.__call = t "
        "first = pcall(function() return t.x end)  second = pcall(t)");

    EXPECT_FALSE(environment().getVar("first", true));
    EXPECT_FALSE(environment().getVar("second", true));
}

TEST_F(ScriptMistakesTest, HookThatRaisesAtEveryCallHoldsNoCollectionUp)
{
    run("debug.sethook(function() error('of the hook', 0) end, 'c')");

    try
    {
        throw std::runtime_error("of the host"); // errors are contained in another way meanwhile
    }
    catch (const std::exception&)
    {
        collect();
    }

    EXPECT_THAT(m_log.takeEntries(), Each(LogEntry{"of the hook", "LuaEnvironment"}));
    destroyEnvironment();
    m_log.takeEntries(); // the hook is still there
}

// Described, not prevented: the library opens all of the standard libraries.
TEST_F(ScriptMistakesTest, EndOfTheProcessIsTheScriptsToChoose)
{
    ChildProcess child(
        [this]
        {
            run("local v = Vec.new()  os.exit(3)");
            return 0;
        });

    EXPECT_EQ(child.wait(), 3);
}

} // namespace tbScripts::test

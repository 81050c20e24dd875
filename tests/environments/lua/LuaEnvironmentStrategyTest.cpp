// The state behind a Lua environment: what is in it, and how each operation leaves its stack.

#include "environments/lua/LuaEnvironmentStrategy.h"

#include "support/Execution.h"
#include "support/LogFixture.h"

#include "tbScripts/Function.h"

#include <memory>
#include <set>
#include <string>

namespace tbScripts::test
{

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class LuaEnvironmentStrategyTest : public LogFixture
{
protected:
    LuaEnvironmentStrategyTest()
        : m_strategy(std::make_unique<lua::LuaEnvironmentStrategy>(
              std::make_shared<const tbMemory::String>("world")))
    {
    }

    void TearDown() override
    {
        m_strategy.reset();
        LogFixture::TearDown();
    }

    lua_State* state() const { return m_strategy->getHandle().get(); }

    void run(const std::string& sources)
    {
        CompiledScript script(sources);
        EXPECT_TRUE(m_strategy->execute(script)) << m_strategy->getLastExecutionResult().message;
    }

    // The texts that are keys of the table at `index`, with the kinds of their values.
    static std::set<std::string> fieldsOf(lua_State* state, int index)
    {
        std::set<std::string> fields;
        lua_pushvalue(state, index);
        for (lua_pushnil(state); lua_next(state, -2); lua_pop(state, 1))
            fields.insert(lua_tostring(state, -2) + std::string(" ") + luaL_typename(state, -1));
        lua_pop(state, 1);
        return fields;
    }

    std::unique_ptr<lua::LuaEnvironmentStrategy> m_strategy;
};

TEST_F(LuaEnvironmentStrategyTest, InstallsTheStandardLibrariesAndNothingElse)
{
    lua_State* const plain = luaL_newstate();
    luaL_openlibs(plain);
    const std::set<std::string> expected = fieldsOf(plain, LUA_GLOBALSINDEX);
    lua_close(plain);

    const std::set<std::string> fields = fieldsOf(state(), LUA_GLOBALSINDEX);

    EXPECT_GT(fields.size(), 30U);
    EXPECT_EQ(fields, expected);
}

TEST_F(LuaEnvironmentStrategyTest, StartsWithAnEmptyStack)
{
    EXPECT_EQ(lua_gettop(state()), 0);
}

TEST_F(LuaEnvironmentStrategyTest, ClosesItsStateAtItsEnd)
{
    const lua::LuaStateHandle handle = m_strategy->getHandle();

    m_strategy.reset();

    EXPECT_EQ(handle.get(), nullptr);
}

TEST_F(LuaEnvironmentStrategyTest, MillionRunsLeaveTheStackWhereItWas)
{
    CompiledScript script("return 1, 2");
    lua_pushliteral(state(), "bottom");
    bool isDone = true;

    for (int i = 0; i < 1000000; ++i)
        isDone = m_strategy->execute(script) && isDone;

    EXPECT_TRUE(isDone);
    EXPECT_EQ(lua_gettop(state()), 1);
    EXPECT_STREQ(lua_tostring(state(), -1), "bottom");
    lua_settop(state(), 0);
}

TEST_F(LuaEnvironmentStrategyTest, ChunkIsNamedByItsSources)
{
    run("name = debug.getinfo(1, 'S').source");

    EXPECT_EQ(m_strategy->getVarString("name", ""), "name = debug.getinfo(1, 'S').source");
}

TEST_F(LuaEnvironmentStrategyTest, ClearedGlobalsLeaveAnEmptyTable)
{
    run("_G[1], _G[1.5], _G[true], _G[print], text = 1, 2, 3, 4, 5");

    m_strategy->clearGlobals();

    EXPECT_THAT(fieldsOf(state(), LUA_GLOBALSINDEX), IsEmpty());
}

TEST_F(LuaEnvironmentStrategyTest, ClearedGlobalsTakeTheModulesAlong)
{
    run("package.loaded.module = {}  package.preload.module = print");

    m_strategy->clearGlobals();

    lua_getfield(state(), LUA_REGISTRYINDEX, "_LOADED");
    EXPECT_THAT(fieldsOf(state(), -1), IsEmpty());
    lua_getfield(state(), LUA_REGISTRYINDEX, "_PRELOAD");
    EXPECT_THAT(fieldsOf(state(), -1), IsEmpty());
    lua_settop(state(), 0);
}

TEST_F(LuaEnvironmentStrategyTest, ClearingGlobalsCollectsTwice)
{
    run("collectgarbage() "
        "local newproxy, getmetatable, error = newproxy, getmetatable, error "
        "local function chain(generation) "
        "    getmetatable(newproxy(true)).__gc = function() "
        "        chain(generation + 1)  error(generation .. '', 0) "
        "    end "
        "end "
        "chain(1)");

    m_strategy->clearGlobals();

    EXPECT_THAT(
        m_log.takeEntries(),
        ElementsAre(LogEntry{"1", "LuaEnvironment"}, LogEntry{"2", "LuaEnvironment"}));
}

TEST_F(LuaEnvironmentStrategyTest, ClearingGlobalsRunsNoMetamethods)
{
    run("setmetatable(_G, {__newindex = error, __index = error})");

    m_strategy->clearGlobals();

    EXPECT_THAT(fieldsOf(state(), LUA_GLOBALSINDEX), IsEmpty());
    EXPECT_THAT(m_log.takeEntries(), IsEmpty());
}

// The collector is about to start its cycle when the clearing begins.
TEST_F(LuaEnvironmentStrategyTest, RaisingFinalisersDoNotBreakTheClearingOff)
{
    run("local error = error  collectgarbage('stop') "
        "for i = 1, 3 do "
        "    getmetatable(newproxy(true)).__gc = function() error('finaliser', 0) end "
        "end "
        "collectgarbage('setstepmul', 100000)  collectgarbage('restart')");

    m_strategy->clearGlobals();

    EXPECT_THAT(fieldsOf(state(), LUA_GLOBALSINDEX), IsEmpty());
    lua_getfield(state(), LUA_REGISTRYINDEX, "_LOADED");
    EXPECT_THAT(fieldsOf(state(), -1), IsEmpty());
    lua_settop(state(), 0);
    EXPECT_THAT(
        m_log.takeEntries(),
        ElementsAre(
            LogEntry{"finaliser", "LuaEnvironment"},
            LogEntry{"finaliser", "LuaEnvironment"},
            LogEntry{"finaliser", "LuaEnvironment"}));
}

namespace
{

// Every operation, with what it does where it finds something and where it does not.
struct OperationRow
{
    const char* name;
    std::function<void(lua::LuaEnvironmentStrategy&)> act;
};

void PrintTo(const OperationRow& row, std::ostream* stream)
{
    *stream << row.name;
}

using Strategy = lua::LuaEnvironmentStrategy;

void runText(Strategy& strategy, const char* sources)
{
    CompiledScript script(sources);
    strategy.execute(script);
}

void callWith(Strategy& strategy, const char* name, FUNCTION_PARAMETER_TYPE outputType)
{
    std::vector<FunctionParameter> outputs{FunctionParameter::ofType(outputType)};
    tbMemory::BufferView<FunctionParameter> view(outputs);
    strategy.callScriptFunction(
        strategy.getScriptFunction(name),
        std::vector<FunctionParameter>{FunctionParameter(1), FunctionParameter(2)},
        view);
}

} // namespace

class LuaEnvironmentStackTest : public LuaEnvironmentStrategyTest,
                                public ::testing::WithParamInterface<OperationRow>
{
protected:
    void TearDown() override
    {
        m_log.takeEntries(); // which operations fail is no matter here
        LuaEnvironmentStrategyTest::TearDown();
    }
};

TEST_P(LuaEnvironmentStackTest, StackIsLeftAsItWas)
{
    run("n, t, f, u = 1, 'text', function(...) return ... end, io.stdout");
    lua_pushliteral(state(), "bottom");

    GetParam().act(*m_strategy);

    EXPECT_EQ(lua_gettop(state()), 1);
    EXPECT_STREQ(lua_tostring(state(), -1), "bottom");
    lua_settop(state(), 0);
}

TEST_P(LuaEnvironmentStackTest, StackIsLeftAsItWasWhereGlobalsRaise)
{
    run("setmetatable(_G, {__index = error, __newindex = error})");
    lua_pushliteral(state(), "bottom");

    GetParam().act(*m_strategy);

    EXPECT_EQ(lua_gettop(state()), 1);
    EXPECT_STREQ(lua_tostring(state(), -1), "bottom");
    lua_settop(state(), 0);
}

INSTANTIATE_TEST_SUITE_P(
    Operations,
    LuaEnvironmentStackTest,
    ::testing::Values(
        OperationRow{"Run", [](Strategy& strategy) { runText(strategy, "return 1, 2"); }},
        OperationRow{"FailedRun", [](Strategy& strategy) { runText(strategy, "return nil .. 1"); }},
        OperationRow{"RunOfNothing", [](Strategy& strategy) { strategy.execute(Script()); }},
        OperationRow{"Collection", [](Strategy& strategy) { strategy.requestGarbageCollection(); }},
        OperationRow{"ClearedGlobals", [](Strategy& strategy) { strategy.clearGlobals(); }},
        OperationRow{"SetBool", [](Strategy& strategy) { strategy.setVarBool("v", true); }},
        OperationRow{"SetInt", [](Strategy& strategy) { strategy.setVarInt("v", 1); }},
        OperationRow{"SetFloat", [](Strategy& strategy) { strategy.setVarFloat("v", 1.5F); }},
        OperationRow{"SetDouble", [](Strategy& strategy) { strategy.setVarDouble("v", 1.5); }},
        OperationRow{"SetText", [](Strategy& strategy) { strategy.setVarString("v", "text"); }},
        OperationRow{
            "SetReference",
            [](Strategy& strategy)
            { strategy.setVarObjectReference("v", strategy.getVarObjectReference("t")); }},
        OperationRow{
            "SetEmptyReference",
            [](Strategy& strategy)
            { strategy.setVarObjectReference("v", ScriptObjectReference()); }},
        OperationRow{
            "SetObject", [](Strategy& strategy) { strategy.setObject("v", "T", &strategy); }},
        OperationRow{
            "SetNullObject", [](Strategy& strategy) { strategy.setObject("v", "T", nullptr); }},
        OperationRow{"IsSet", [](Strategy& strategy) { strategy.isVarSet("n"); }},
        OperationRow{"GetBool", [](Strategy& strategy) { strategy.getVarBool("n", true); }},
        OperationRow{"GetInt", [](Strategy& strategy) { strategy.getVarInt("n", 1); }},
        OperationRow{"GetFloat", [](Strategy& strategy) { strategy.getVarFloat("n", 1.5F); }},
        OperationRow{"GetDouble", [](Strategy& strategy) { strategy.getVarDouble("n", 1.5); }},
        OperationRow{"GetText", [](Strategy& strategy) { strategy.getVarString("t", ""); }},
        OperationRow{"GetTextOfNumber", [](Strategy& strategy) { strategy.getVarString("n", ""); }},
        OperationRow{"GetNoText", [](Strategy& strategy) { strategy.getVarString("f", ""); }},
        OperationRow{
            "GetReference", [](Strategy& strategy) { strategy.getVarObjectReference("t"); }},
        OperationRow{
            "GetNoReference", [](Strategy& strategy) { strategy.getVarObjectReference("f"); }},
        OperationRow{"GetFunction", [](Strategy& strategy) { strategy.getScriptFunction("f"); }},
        OperationRow{"GetNoFunction", [](Strategy& strategy) { strategy.getScriptFunction("t"); }},
        OperationRow{"GetObject", [](Strategy& strategy) { strategy.getObject("u", "T"); }},
        OperationRow{
            "GetAnyObject",
            [](Strategy& strategy) { strategy.getObject("u", tbMemory::StringView()); }},
        OperationRow{"GetNoObject", [](Strategy& strategy) { strategy.getObject("t", "T"); }},
        OperationRow{"Function", [](Strategy& strategy) { strategy.createFunction("h"); }},
        OperationRow{"Call", [](Strategy& strategy) { callWith(strategy, "f", PARAM_TYPE_INT); }},
        OperationRow{
            "CallWithMismatch",
            [](Strategy& strategy) { callWith(strategy, "f", PARAM_TYPE_SCRIPT_OBJECT); }},
        OperationRow{
            "FailedCall", [](Strategy& strategy) { callWith(strategy, "t", PARAM_TYPE_INT); }}),
    [](const auto& row) { return std::string(row.param.name); });

TEST_F(LuaEnvironmentStrategyTest, ReferencesGiveTheirRegistrySlotsBack)
{
    run("t, f = {}, print");
    const auto takeAndDrop = [this]
    {
        const ScriptObjectReference object = m_strategy->getVarObjectReference("t");
        const ScriptObjectReference function = m_strategy->getScriptFunction("f");
    };
    const auto nextFreeKey = [this]
    {
        lua_pushboolean(state(), 1);
        const int key = luaL_ref(state(), LUA_REGISTRYINDEX);
        luaL_unref(state(), LUA_REGISTRYINDEX, key);
        return key;
    };
    takeAndDrop(); // two slots are kept from then on, for the next values
    const int freeBefore = nextFreeKey();

    for (int i = 0; i < 100; ++i)
        takeAndDrop();

    EXPECT_EQ(nextFreeKey(), freeBefore);
}

} // namespace tbScripts::test

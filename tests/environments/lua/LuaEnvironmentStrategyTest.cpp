// The state behind a Lua environment: what is in it, and how each operation leaves its stack.

#include "environments/lua/LuaEnvironmentStrategy.h"

#include "support/Execution.h"
#include "support/LogFixture.h"
#include "support/RowName.h"

#include "tbScripts/Function.h"

#include <memory>
#include <set>
#include <string>

namespace tbScripts::test
{

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

TEST_F(LuaEnvironmentStrategyTest, ChunkIsNamedByItsSources)
{
    run("name = debug.getinfo(1, 'S').source");

    EXPECT_EQ(m_strategy->getVarString("name", ""), "name = debug.getinfo(1, 'S').source");
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
    expectLogged(
        {{"finaliser", "LuaEnvironment"},
         {"finaliser", "LuaEnvironment"},
         {"finaliser", "LuaEnvironment"}});
}

namespace
{

// Every operation, with what it does where it finds something and where it does not.
struct Row
{
    const char* row;
    std::function<void(lua::LuaEnvironmentStrategy&)> act;
};

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

class LuaEnvironmentStackTest : public OnRows<LuaEnvironmentStrategyTest, Row>
{
protected:
    void expectStackLeft()
    {
        lua_pushliteral(state(), "bottom");

        GetParam().act(*m_strategy);

        EXPECT_EQ(lua_gettop(state()), 1);
        EXPECT_STREQ(lua_tostring(state(), -1), "bottom");
        lua_settop(state(), 0);
    }

    void TearDown() override
    {
        m_log.takeEntries(); // which operations fail is no matter here
        LuaEnvironmentStrategyTest::TearDown();
    }
};

TEST_P(LuaEnvironmentStackTest, StackIsLeftAsItWas)
{
    run("n, t, f, u = 1, 'text', function(...) return ... end, io.stdout");

    expectStackLeft();
}

TEST_P(LuaEnvironmentStackTest, StackIsLeftAsItWasWhereGlobalsRaise)
{
    run("setmetatable(_G, {__index = error, __newindex = error})");

    expectStackLeft();
}

ROWS(
    LuaEnvironmentStackTest,
    {"Run", [](Strategy& s) { runText(s, "return 1, 2"); }},
    {"FailedRun", [](Strategy& s) { runText(s, "return nil .. 1"); }},
    {"RunOfNothing", [](Strategy& s) { s.execute(Script()); }},
    {"Collection", [](Strategy& s) { s.requestGarbageCollection(); }},
    {"ClearedGlobals", [](Strategy& s) { s.clearGlobals(); }},
    {"SetBool", [](Strategy& s) { s.setVarBool("v", true); }},
    {"SetInt", [](Strategy& s) { s.setVarInt("v", 1); }},
    {"SetFloat", [](Strategy& s) { s.setVarFloat("v", 1.5F); }},
    {"SetDouble", [](Strategy& s) { s.setVarDouble("v", 1.5); }},
    {"SetText", [](Strategy& s) { s.setVarString("v", "text"); }},
    {"SetReference",
     [](Strategy& s) { s.setVarObjectReference("v", s.getVarObjectReference("t")); }},
    {"SetEmptyReference",
     [](Strategy& s) { s.setVarObjectReference("v", ScriptObjectReference()); }},
    {"SetObject", [](Strategy& s) { s.setObject("v", "T", &s); }},
    {"SetNullObject", [](Strategy& s) { s.setObject("v", "T", nullptr); }},
    {"IsSet", [](Strategy& s) { s.isVarSet("n"); }},
    {"GetBool", [](Strategy& s) { s.getVarBool("n", true); }},
    {"GetInt", [](Strategy& s) { s.getVarInt("n", 1); }},
    {"GetFloat", [](Strategy& s) { s.getVarFloat("n", 1.5F); }},
    {"GetDouble", [](Strategy& s) { s.getVarDouble("n", 1.5); }},
    {"GetText", [](Strategy& s) { s.getVarString("t", ""); }},
    {"GetTextOfNumber", [](Strategy& s) { s.getVarString("n", ""); }},
    {"GetNoText", [](Strategy& s) { s.getVarString("f", ""); }},
    {"GetReference", [](Strategy& s) { s.getVarObjectReference("t"); }},
    {"GetNoReference", [](Strategy& s) { s.getVarObjectReference("f"); }},
    {"GetFunction", [](Strategy& s) { s.getScriptFunction("f"); }},
    {"GetNoFunction", [](Strategy& s) { s.getScriptFunction("t"); }},
    {"GetObject", [](Strategy& s) { s.getObject("u", "T"); }},
    {"GetAnyObject", [](Strategy& s) { s.getObject("u", tbMemory::StringView()); }},
    {"GetNoObject", [](Strategy& s) { s.getObject("t", "T"); }},
    {"Function", [](Strategy& s) { s.createFunction("h"); }},
    {"Call", [](Strategy& s) { callWith(s, "f", PARAM_TYPE_INT); }},
    {"CallWithMismatch", [](Strategy& s) { callWith(s, "f", PARAM_TYPE_SCRIPT_OBJECT); }},
    {"FailedCall", [](Strategy& s) { callWith(s, "t", PARAM_TYPE_INT); }});

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

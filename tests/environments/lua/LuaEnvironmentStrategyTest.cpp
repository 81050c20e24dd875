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

// The helpers that see the interpreter are tested too.

#include "core/lua/references/LuaScriptObjectInterpreterReference.h"
#include "support/EnvironmentStateFixture.h"
#include "support/InjectedAllocator.h"
#include "support/InterpreterCalls.h"
#include "support/LuaFunctionFixture.h"
#include "support/LuaStateFixture.h"

#include <gtest/gtest.h>

namespace tbScripts::test
{

using EnvironmentStateFixtureTest = EnvironmentStateFixture;

TEST_F(EnvironmentStateFixtureTest, ShowsTheStateOfItsEnvironment)
{
    run("known = 42");

    lua_getglobal(state(), "known");

    EXPECT_EQ(lua_tointeger(state(), -1), 42);
    EXPECT_EQ(stackHeight(), 1);
    lua_settop(state(), 0);
}

TEST_F(EnvironmentStateFixtureTest, CountsRegistrySlotsInUse)
{
    run("list = {}");
    const int before = countRegistrySlots();

    {
        const ScriptObjectReference list = environment().getVar("list");
        EXPECT_EQ(countRegistrySlots(), before + 1);
    }

    EXPECT_EQ(countRegistrySlots(), before);
}

using InjectedAllocatorTest = LuaStateFixture;

TEST_F(InjectedAllocatorTest, RefusesFromTheChosenRequestOn)
{
    InjectedAllocator allocator(state());
    ASSERT_EQ(luaL_loadstring(state(), "return {}, {}, {}"), 0);
    lua_gc(state(), LUA_GCSTOP, 0);
    allocator.refuseAfter(1);

    const int status = lua_pcall(state(), 0, 0, 0);
    allocator.allowAll();

    EXPECT_EQ(status, LUA_ERRMEM);
    EXPECT_TRUE(allocator.hasRefused());
    lua_settop(state(), 0);
}

TEST_F(InjectedAllocatorTest, RefusesNothingUnasked)
{
    InjectedAllocator allocator(state());

    push("return {}");

    EXPECT_FALSE(allocator.hasRefused());
    lua_settop(state(), 0);
}

using LuaStateFixtureTest = LuaStateFixture;

TEST_F(LuaStateFixtureTest, CountsRegistrySlotsInUse)
{
    const int before = countRegistrySlots();
    lua_pushliteral(state(), "kept");
    const int slotNumber = luaL_ref(state(), LUA_REGISTRYINDEX);

    const int during = countRegistrySlots();
    luaL_unref(state(), LUA_REGISTRYINDEX, slotNumber);

    EXPECT_EQ(during, before + 1);
    EXPECT_EQ(countRegistrySlots(), before);
}

// If the functions of the executable were not found first, everything would count zero.

TEST(InterpreterCallsTest, CountsProtectedCalls)
{
    lua_State* const state = luaL_newstate();
    const InterpreterCalls calls;

    luaL_loadstring(state, "return 1");
    lua_pcall(state, 0, 0, 0);
    lua_cpcall(
        state, [](lua_State*) { return 0; }, nullptr);

    EXPECT_EQ(calls.countProtectedCalls(), 2U);
    lua_close(state);
}

TEST(InterpreterCallsTest, CountsFullCollectionsOnly)
{
    lua_State* const state = luaL_newstate();
    const InterpreterCalls calls;

    lua_gc(state, LUA_GCCOLLECT, 0);
    lua_gc(state, LUA_GCSTEP, 1);
    lua_gc(state, LUA_GCCOLLECT, 0);

    EXPECT_EQ(calls.countFullCollections(), 2U);
    lua_close(state);
}

TEST(InterpreterCallsTest, KnowsTheStateThatWasOpenedLast)
{
    lua_State* const state = luaL_newstate();

    EXPECT_EQ(InterpreterCalls::lastOpenedState(), state);
    lua_close(state);
}

TEST(StateMemoryTest, KnowsWhatIsNotGivenBackYet)
{
    StateMemory memory;

    lua_State* const state = luaL_newstate();

    ASSERT_NE(state, nullptr);
    EXPECT_GT(memory.countLivingBlocks(), 0U);
    lua_close(state);
    EXPECT_EQ(memory.countLivingBlocks(), 0U);
    EXPECT_FALSE(memory.hasRefused());
}

TEST(StateMemoryTest, RefusesTheStateItself)
{
    StateMemory memory;
    memory.refuseAfter(0);

    EXPECT_EQ(luaL_newstate(), nullptr);
    EXPECT_TRUE(memory.hasRefused());
}

TEST(StateMemoryTest, RefusesFromTheChosenRequestOn)
{
    StateMemory memory;
    lua_State* const state = luaL_newstate();
    ASSERT_EQ(luaL_loadstring(state, "return {}, {}, {}"), 0);
    memory.refuseAfter(1);

    const int status = lua_pcall(state, 0, 0, 0);
    memory.allowAll();

    EXPECT_EQ(status, LUA_ERRMEM);
    EXPECT_TRUE(memory.hasRefused());
    lua_close(state);
}

class LuaFunctionFixtureTest : public LuaFunctionFixture
{
protected:
    ScriptObjectReference referenceTo(const std::string& expression)
    {
        push("return " + expression);
        const int slotNumber = luaL_ref(state(), LUA_REGISTRYINDEX);
        return ScriptObjectReference(new lua::LuaScriptObjectInterpreterReference(
            handle(), PARAM_TYPE_SCRIPT_OBJECT, slotNumber));
    }
};

TEST_F(LuaFunctionFixtureTest, TellsTheValueOfAGlobalFromAnEqualOne)
{
    run("first = {}");

    EXPECT_TRUE(isGlobal(referenceTo("first"), "first"));
    EXPECT_FALSE(isGlobal(referenceTo("{}"), "first"));
}

TEST_F(LuaFunctionFixtureTest, GivesTheMessageOfAFailingScript)
{
    EXPECT_EQ(runExpectingError("error('broken', 0)"), "broken");
}

TEST_F(LuaFunctionFixtureTest, PublishesUntilTheLastFunctionIsDestroyed)
{
    declare("first", nullptr);
    declare("second", nullptr);

    destroyLastFunction();

    run("left = type(first) .. ' ' .. type(second)");
    EXPECT_EQ(global("left"), "function nil");
}

TEST_F(LuaFunctionFixtureTest, MakesInstancesOfTheNamedType)
{
    int object = 0;

    const lua::LuaInstanceBox& box = setInstance("enemy", "Enemy", &object, true);

    EXPECT_EQ(box.object, &object);
    EXPECT_TRUE(box.gcEnabled);
    push("return enemy");
    EXPECT_EQ(lua::instanceAt(slot(), state(), 1).typeName, "Enemy");
    lua_pop(state(), 1);
}

} // namespace tbScripts::test

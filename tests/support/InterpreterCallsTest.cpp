// If the functions of the executable were not found first, everything would count zero.

#include "support/InterpreterCalls.h"

#include <gtest/gtest.h>

namespace tbScripts::test
{

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

} // namespace tbScripts::test

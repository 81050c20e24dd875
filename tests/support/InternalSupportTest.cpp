// The helpers that see the interpreter are tested too.

#include "support/InjectedAllocator.h"
#include "support/LuaStateFixture.h"

namespace tbScripts::test
{

class InjectedAllocatorTest : public LuaStateFixture
{
};

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

class LuaStateFixtureTest : public LuaStateFixture
{
};

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

} // namespace tbScripts::test

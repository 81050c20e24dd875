#include "core/lua/references/LuaRegistry.h"

#include "support/LuaStateFixture.h"

#include <set>
#include <string>
#include <vector>

namespace tbScripts::test
{

using lua::freeRegistrySlot;
using lua::giveRegistrySlotBack;
using lua::LuaSpareKeys;
using lua::takeRegistrySlot;

class LuaRegistryTest : public LuaStateFixture
{
protected:
    int take(const std::string& code)
    {
        push(code);
        return takeRegistrySlot(slot(), state());
    }

    std::vector<int> take(std::size_t count)
    {
        std::vector<int> keys;
        for (std::size_t i = 0; i < count; ++i)
            keys.push_back(take("return {}"));
        return keys;
    }

    void giveBack(const std::vector<int>& keys)
    {
        for (const int key : keys)
            giveRegistrySlotBack(slot(), state(), key);
    }

    std::string textIn(int key)
    {
        lua_rawgeti(state(), LUA_REGISTRYINDEX, key);
        const char* const text = lua_tostring(state(), -1);
        std::string copy = text ? text : "none";
        lua_pop(state(), 1);
        return copy;
    }
};

TEST_F(LuaRegistryTest, ASlotHoldsTheValueOnTopOfTheStack)
{
    const int key = take("return 'kept'");

    EXPECT_EQ(lua_gettop(state()), 0);
    EXPECT_EQ(textIn(key), "kept");
}

TEST_F(LuaRegistryTest, AFreedSlotIsTakenNext)
{
    const int first = take("return 'first'");
    giveRegistrySlotBack(slot(), state(), first);

    const int second = take("return 'second'");

    EXPECT_EQ(second, first);
    EXPECT_EQ(textIn(second), "second");
    EXPECT_EQ(lua_gettop(state()), 0);
}

TEST_F(LuaRegistryTest, ASpareSlotIsNotTheInterpretersToHandOut)
{
    const int spare = take("return 'spare'");
    giveRegistrySlotBack(slot(), state(), spare);

    lua_pushliteral(state(), "theirs");
    const int theirs = luaL_ref(state(), LUA_REGISTRYINDEX);
    const int ours = take("return 'ours'");

    EXPECT_NE(theirs, spare);
    EXPECT_EQ(ours, spare);
    EXPECT_EQ(textIn(theirs), "theirs");
}

TEST_F(LuaRegistryTest, AFreedSlotKeepsNothingAlive)
{
    push("kept = setmetatable({}, {__mode = 'v'}) kept[1] = {} return kept[1]");
    const int key = takeRegistrySlot(slot(), state());
    giveRegistrySlotBack(slot(), state(), key);

    lua_gc(state(), LUA_GCCOLLECT, 0);

    push("return kept[1] == nil");
    EXPECT_TRUE(lua_toboolean(state(), -1));
    lua_pop(state(), 1);
}

TEST_F(LuaRegistryTest, NilTakesNoSlot)
{
    const int spare = take("return 'spare'");
    giveRegistrySlotBack(slot(), state(), spare);
    const int before = countRegistrySlots();

    const int key = take("return nil");

    EXPECT_EQ(key, LUA_REFNIL);
    EXPECT_EQ(countRegistrySlots(), before);
    EXPECT_EQ(take("return 1 == 1"), spare);
}

TEST_F(LuaRegistryTest, KeysThatAreNoneAreIgnored)
{
    for (const int key : {0, LUA_NOREF, LUA_REFNIL})
    {
        giveRegistrySlotBack(slot(), state(), key);
        freeRegistrySlot(slot(), key);
    }

    EXPECT_EQ(slot().countSpareKeys(), 0U);
    EXPECT_EQ(lua_gettop(state()), 0);
}

TEST_F(LuaRegistryTest, MoreThanFitGoBackToTheInterpreter)
{
    constexpr std::size_t COUNT = LuaSpareKeys::CAPACITY * 3;
    const int before = countRegistrySlots();
    const std::vector<int> keys = take(COUNT);
    giveBack(keys);

    EXPECT_EQ(slot().countSpareKeys(), LuaSpareKeys::CAPACITY);
    EXPECT_EQ(countRegistrySlots(), before);

    const std::vector<int> again = take(COUNT);
    EXPECT_EQ(std::set<int>(again.begin(), again.end()), std::set<int>(keys.begin(), keys.end()));
}

TEST_F(LuaRegistryTest, NothingIsFreedInAClosedState)
{
    const int key = take("return 'kept'");
    closeState();

    freeRegistrySlot(slot(), key);

    EXPECT_EQ(slot().countSpareKeys(), 0U);
}

} // namespace tbScripts::test

#include "core/lua/LuaStateHandle.h"

#include "support/LuaStateFixture.h"

#include <memory>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace tbScripts::test
{

using lua::LuaStateHandle;

namespace
{

// What a finaliser saw of the handle while the state closed.
struct Observation
{
    const LuaStateHandle* handle = nullptr;
    int calls = 0;
    bool hadState = true;
    bool hadMemory = false;
};

int observe(lua_State* state)
{
    auto& observation = *static_cast<Observation*>(lua_touserdata(state, lua_upvalueindex(1)));
    ++observation.calls;
    observation.hadState = observation.handle->get() != nullptr;
    observation.hadMemory = observation.handle->hasMemory();
    return 0;
}

} // namespace

class LuaStateHandleTest : public LuaStateFixture
{
protected:
    // Leaves a global whose finaliser calls `finaliser` with `data` as its upvalue.
    void setFinaliser(lua_CFunction finaliser, void* data)
    {
        lua_newuserdata(state(), 1);
        lua_createtable(state(), 0, 1);
        lua_pushlightuserdata(state(), data);
        lua_pushcclosure(state(), finaliser, 1);
        lua_setfield(state(), -2, "__gc");
        lua_setmetatable(state(), -2);
        lua_setglobal(state(), "finalised");
    }
};

TEST_F(LuaStateHandleTest, HasNoStateByDefault)
{
    const LuaStateHandle empty;

    EXPECT_EQ(empty.get(), nullptr);
    EXPECT_EQ(empty.getSlot(), nullptr);
    EXPECT_FALSE(empty.hasMemory());
}

TEST_F(LuaStateHandleTest, OpenStateHasTheStandardLibraries)
{
    push("return type(string.format) .. type(table.insert) .. type(math.sin) .. type(io.open) .. "
         "type(os.time) .. type(debug.traceback) .. type(require) .. type(coroutine.create)");

    EXPECT_STREQ(
        lua_tostring(state(), -1),
        "functionfunctionfunctionfunctionfunctionfunctionfunctionfunction");
    lua_settop(state(), 0);
}

TEST_F(LuaStateHandleTest, OpenStatesAreApart)
{
    push("shared = 1 return nil");
    LuaStateHandle other = LuaStateHandle::open();

    lua_getglobal(other.get(), "shared");

    EXPECT_TRUE(lua_isnil(other.get(), -1));
    other.close();
    lua_settop(state(), 0);
}

TEST_F(LuaStateHandleTest, CopiesShareTheState)
{
    const LuaStateHandle copy(handle());

    EXPECT_EQ(copy.get(), state());
    EXPECT_TRUE(copy.sharesStateWith(handle()));
}

TEST_F(LuaStateHandleTest, HandlesOnDifferentStatesShareNone)
{
    LuaStateHandle other = LuaStateHandle::open();

    EXPECT_FALSE(other.sharesStateWith(handle()));
    other.close();
}

TEST_F(LuaStateHandleTest, HandlesWithoutStateShareNone)
{
    EXPECT_FALSE(LuaStateHandle().sharesStateWith(LuaStateHandle()));
}

TEST_F(LuaStateHandleTest, ClosingEmptiesEveryCopy)
{
    const LuaStateHandle copy(handle());

    closeState();

    EXPECT_EQ(copy.get(), nullptr);
    EXPECT_FALSE(copy.hasMemory());
    EXPECT_FALSE(copy.sharesStateWith(handle()));
}

TEST_F(LuaStateHandleTest, CopyOutlivesTheHandleThatOpenedTheState)
{
    LuaStateHandle copy;
    {
        const LuaStateHandle opened = LuaStateHandle::open();
        copy = opened;
    }

    ASSERT_NE(copy.get(), nullptr);
    lua_pushinteger(copy.get(), 1);
    EXPECT_EQ(lua_gettop(copy.get()), 1);
    copy.close();
}

TEST_F(LuaStateHandleTest, ClosingTwiceIsClosingOnce)
{
    Observation observation;
    observation.handle = &handle();
    setFinaliser(&observe, &observation);
    closeState();

    closeState();

    EXPECT_EQ(observation.calls, 1);
}

TEST_F(LuaStateHandleTest, ClosingWithoutStateDoesNothing)
{
    LuaStateHandle empty;

    empty.close();

    EXPECT_EQ(empty.get(), nullptr);
}

TEST_F(LuaStateHandleTest, MoveTakesTheState)
{
    LuaStateHandle opened = LuaStateHandle::open();
    lua_State* const openedState = opened.get();

    LuaStateHandle moved(std::move(opened));

    EXPECT_EQ(moved.get(), openedState);
    EXPECT_EQ(opened.get(), nullptr);
    moved.close();
}

TEST_F(LuaStateHandleTest, MovesWithoutThrowing)
{
    EXPECT_TRUE(std::is_nothrow_move_constructible_v<LuaStateHandle>);
    EXPECT_TRUE(std::is_nothrow_copy_constructible_v<LuaStateHandle>);
}

TEST_F(LuaStateHandleTest, FinalisersThatRunWhileClosingFindNoStateButItsMemory)
{
    Observation observation;
    observation.handle = &handle();
    setFinaliser(&observe, &observation);

    closeState();

    EXPECT_EQ(observation.calls, 1);
    EXPECT_FALSE(observation.hadState);
    EXPECT_TRUE(observation.hadMemory);
}

TEST_F(LuaStateHandleTest, WhatFinalisersRaiseWhileClosingIsLost)
{
    setFinaliser([](lua_State* inner) -> int { return luaL_error(inner, "lost"); }, nullptr);

    closeState();

    EXPECT_EQ(state(), nullptr);
}

TEST_F(LuaStateHandleTest, ClosingRunsWhatWasDeferred)
{
    bool wasOpen = true;
    slot().defer([&] { wasOpen = handle().get() != nullptr; });

    closeState();

    EXPECT_FALSE(wasOpen);
}

TEST_F(LuaStateHandleTest, DeferredActionsRunOnceInTheirOrder)
{
    std::vector<std::string> journal;
    slot().defer([&] { journal.emplace_back("first"); });
    slot().defer([&] { journal.emplace_back("second"); });

    slot().runDeferred();
    slot().runDeferred();

    EXPECT_THAT(journal, ElementsAre("first", "second"));
}

TEST_F(LuaStateHandleTest, DeferredActionMayDeferAnother)
{
    std::vector<std::string> journal;
    slot().defer(
        [&]
        {
            journal.emplace_back("first");
            slot().defer([&] { journal.emplace_back("later"); });
        });
    slot().defer([&] { journal.emplace_back("second"); });

    slot().runDeferred();

    EXPECT_THAT(journal, ElementsAre("first", "second", "later"));
}

TEST_F(LuaStateHandleTest, DeferredActionMayBeTheLastHolder)
{
    auto opened = std::make_unique<LuaStateHandle>(LuaStateHandle::open());
    lua::LuaStateSlot& openedSlot = *opened->getSlot();
    openedSlot.defer(
        [&]
        {
            opened->close();
            opened.reset();
        });

    openedSlot.runDeferred();

    EXPECT_EQ(opened, nullptr);
}

TEST_F(LuaStateHandleTest, GlobalsAreThoseOfTheMainThread)
{
    push("shared = 'of all' return nil");

    slot().pushGlobals(state());

    lua_getfield(state(), -1, "shared");
    EXPECT_STREQ(lua_tostring(state(), -1), "of all");
    lua_settop(state(), 0);
}

} // namespace tbScripts::test

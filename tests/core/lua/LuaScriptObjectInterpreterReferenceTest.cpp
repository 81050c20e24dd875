#include "core/lua/references/LuaScriptObjectInterpreterReference.h"

#include "support/LuaStateFixture.h"

#include <tbScripts/ScriptObjectReference.h>

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace tbScripts::test
{

using lua::LuaScriptObjectInterpreterReference;

namespace
{

// What a release action was called with.
struct Release
{
    lua_State* state;
    std::int64_t slot;
    unsigned type;

    bool operator==(const Release& other) const
    {
        return state == other.state && slot == other.slot && type == other.type;
    }
};

class ForeignReference final : public ScriptObjectInterpreterReference
{
public:
    ForeignReference()
        : ScriptObjectInterpreterReference(PARAM_TYPE_SCRIPT_OBJECT)
    {
    }
};

} // namespace

class LuaScriptObjectInterpreterReferenceTest : public LuaStateFixture
{
protected:
    // Anchors what `code` returns.
    std::unique_ptr<LuaScriptObjectInterpreterReference> anchor(const std::string& code)
    {
        auto reference = std::make_unique<LuaScriptObjectInterpreterReference>(
            handle(), PARAM_TYPE_SCRIPT_OBJECT, 0);
        push(code);
        reference->anchor(state());
        return reference;
    }

    // A release action that takes notes and releases nothing.
    lua::LuaReleaseAction noteRelease()
    {
        return [this](lua_State* state, std::int64_t slot, FUNCTION_PARAMETER_TYPE type) {
            m_releases.push_back({state, slot, type});
        };
    }

    // The type name of what `reference` designates here.
    std::string typeOfReferenced(const ScriptObjectReference& reference)
    {
        lua::pushReferenced(state(), reference, handle());
        const std::string name = luaL_typename(state(), -1);
        lua_pop(state(), 1);
        return name;
    }

    std::vector<Release> m_releases;
};

TEST_F(LuaScriptObjectInterpreterReferenceTest, HasTheKindThatItWasGiven)
{
    const LuaScriptObjectInterpreterReference function(handle(), PARAM_TYPE_SCRIPT_FUNCTION, 0);
    const LuaScriptObjectInterpreterReference object(handle(), PARAM_TYPE_SCRIPT_OBJECT, 0);

    EXPECT_EQ(function.getType(), 8U);
    EXPECT_EQ(object.getType(), 9U);
}

TEST_F(LuaScriptObjectInterpreterReferenceTest, AnchorTakesTheTopOfTheStackIntoTheRegistryToItsEnd)
{
    const int before = countRegistrySlots();

    auto reference = anchor("return {}");
    EXPECT_EQ(lua_gettop(state()), 0);
    EXPECT_EQ(countRegistrySlots(), before + 1);
    reference.reset();

    EXPECT_EQ(countRegistrySlots(), before);
}

TEST_F(LuaScriptObjectInterpreterReferenceTest, AnchoredValueSurvivesCollections)
{
    const ScriptObjectReference reference(anchor("return { lives = 3 }").release());

    lua_gc(state(), LUA_GCCOLLECT, 0);
    lua::pushReferenced(state(), reference, handle());

    ASSERT_TRUE(lua_istable(state(), -1));
    lua_getfield(state(), -1, "lives");
    EXPECT_EQ(lua_tointeger(state(), -1), 3);
    lua_settop(state(), 0);
}

TEST_F(LuaScriptObjectInterpreterReferenceTest, ReleasedValueIsCollected)
{
    auto reference = anchor("local t = {} weak = setmetatable({t}, {__mode = 'v'}) return t");

    reference.reset();
    lua_gc(state(), LUA_GCCOLLECT, 0);

    push("return weak[1] == nil");
    EXPECT_TRUE(lua_toboolean(state(), -1));
    lua_settop(state(), 0);
}

TEST_F(LuaScriptObjectInterpreterReferenceTest, EndRunsTheReleaseActionOnceWithAnySlot)
{
    for (const int key : {17, 0})
    {
        const LuaScriptObjectInterpreterReference reference(
            handle(), PARAM_TYPE_SCRIPT_FUNCTION, key, noteRelease());
        EXPECT_EQ(m_releases.size(), key == 17 ? 0U : 1U);
    }

    EXPECT_THAT(m_releases, ElementsAre(Release{state(), 17, 8U}, Release{state(), 0, 8U}));
}

TEST_F(LuaScriptObjectInterpreterReferenceTest, LastHolderRunsTheReleaseActionOnce)
{
    auto first = std::make_unique<ScriptObjectReference>(new LuaScriptObjectInterpreterReference(
        handle(), PARAM_TYPE_SCRIPT_OBJECT, 17, noteRelease()));
    auto second = std::make_unique<ScriptObjectReference>(*first);

    first.reset();
    EXPECT_THAT(m_releases, IsEmpty());
    second.reset();

    EXPECT_THAT(m_releases, ElementsAre(Release{state(), 17, 9U}));
}

TEST_F(LuaScriptObjectInterpreterReferenceTest, SlotZeroIsLeftAlone)
{
    lua_pushliteral(state(), "first");
    const int first = luaL_ref(state(), LUA_REGISTRYINDEX);
    lua_pushliteral(state(), "last");
    const int last = luaL_ref(state(), LUA_REGISTRYINDEX);
    luaL_unref(state(), LUA_REGISTRYINDEX, first);
    luaL_unref(state(), LUA_REGISTRYINDEX, last);

    {
        const LuaScriptObjectInterpreterReference reference(handle(), PARAM_TYPE_SCRIPT_OBJECT, 0);
    }

    // Slot 0 heads the list of free slots: releasing it would lose them.
    lua_pushliteral(state(), "next");
    EXPECT_EQ(luaL_ref(state(), LUA_REGISTRYINDEX), last);
}

TEST_F(LuaScriptObjectInterpreterReferenceTest, FreesItsSlot)
{
    const int before = countRegistrySlots();
    lua_pushliteral(state(), "kept");
    const int slotNumber = luaL_ref(state(), LUA_REGISTRYINDEX);

    {
        const LuaScriptObjectInterpreterReference reference(
            handle(), PARAM_TYPE_SCRIPT_FUNCTION, slotNumber);
    }

    EXPECT_EQ(countRegistrySlots(), before);
    EXPECT_EQ(lua_gettop(state()), 0);
}

TEST_F(LuaScriptObjectInterpreterReferenceTest, EmptyReleaseActionReleasesNothing)
{
    const int before = countRegistrySlots();
    lua_pushliteral(state(), "kept");
    const int slotNumber = luaL_ref(state(), LUA_REGISTRYINDEX);

    {
        const LuaScriptObjectInterpreterReference reference(
            handle(), PARAM_TYPE_SCRIPT_OBJECT, slotNumber, nullptr);
    }

    EXPECT_EQ(countRegistrySlots(), before + 1);
}

TEST_F(LuaScriptObjectInterpreterReferenceTest, OutlivesTheStateWithoutReleasing)
{
    {
        const LuaScriptObjectInterpreterReference reference(
            handle(), PARAM_TYPE_SCRIPT_OBJECT, 17, noteRelease());
        closeState();
    }

    EXPECT_THAT(m_releases, IsEmpty());
}

TEST_F(LuaScriptObjectInterpreterReferenceTest, OutlivesTheStateAndDesignatesNothingThen)
{
    auto reference = std::make_unique<ScriptObjectReference>(anchor("return {}").release());

    closeState();

    EXPECT_EQ(LuaScriptObjectInterpreterReference::slotOf(*reference, handle()), 0);
    reference.reset();
    EXPECT_EQ(state(), nullptr);
}

TEST_F(LuaScriptObjectInterpreterReferenceTest, EndOfAValueThatAFinaliserHoldsIsSilentWhileClosing)
{
    auto* const reference = anchor("return {}").release();
    lua_newuserdata(state(), sizeof(void*));
    *static_cast<ScriptObjectInterpreterReference**>(lua_touserdata(state(), -1)) = reference;
    lua_createtable(state(), 0, 1);
    lua_pushcfunction(
        state(),
        [](lua_State* inner) -> int
        {
            delete *static_cast<ScriptObjectInterpreterReference**>(lua_touserdata(inner, 1));
            return 0;
        });
    lua_setfield(state(), -2, "__gc");
    lua_setmetatable(state(), -2);
    lua_settop(state(), 0);

    closeState();

    EXPECT_EQ(state(), nullptr);
}

TEST_F(LuaScriptObjectInterpreterReferenceTest, DesignatesItsValueInItsOwnState)
{
    const ScriptObjectReference reference(anchor("return {}").release());

    EXPECT_EQ(typeOfReferenced(reference), "table");
}

TEST_F(LuaScriptObjectInterpreterReferenceTest, DesignatesNothingInAnotherState)
{
    const ScriptObjectReference reference(anchor("return {}").release());
    lua::LuaStateHandle other = lua::LuaStateHandle::open();

    EXPECT_EQ(LuaScriptObjectInterpreterReference::slotOf(reference, other), 0);
    other.close();
}

TEST_F(LuaScriptObjectInterpreterReferenceTest, EmptyForeignAndSlotlessReferencesArePushedAsNil)
{
    const ScriptObjectReference slotless(
        new LuaScriptObjectInterpreterReference(handle(), PARAM_TYPE_SCRIPT_OBJECT, 0));

    EXPECT_EQ(typeOfReferenced(ScriptObjectReference()), "nil");
    EXPECT_EQ(typeOfReferenced(ScriptObjectReference(new ForeignReference())), "nil");
    EXPECT_EQ(typeOfReferenced(slotless), "nil");
}

TEST_F(LuaScriptObjectInterpreterReferenceTest, TextThatAReleaseActionThrowsIsLogged)
{
    {
        const LuaScriptObjectInterpreterReference reference(
            handle(),
            PARAM_TYPE_SCRIPT_OBJECT,
            17,
            [](lua_State*, std::int64_t, FUNCTION_PARAMETER_TYPE)
            { throw std::runtime_error("the slot is stuck"); });
    }

    expectLogged("the slot is stuck", "LuaEnvironment");
}

TEST_F(LuaScriptObjectInterpreterReferenceTest, ScriptErrorOfAReleaseActionIsLogged)
{
    {
        const LuaScriptObjectInterpreterReference reference(
            handle(),
            PARAM_TYPE_SCRIPT_OBJECT,
            17,
            [](lua_State* inner, std::int64_t, FUNCTION_PARAMETER_TYPE)
            {
                lua_pushliteral(inner, "the slot is stuck");
                lua_error(inner);
            });
    }

    EXPECT_EQ(lua_gettop(state()), 0);
    expectLogged("the slot is stuck", "LuaEnvironment");
}

} // namespace tbScripts::test

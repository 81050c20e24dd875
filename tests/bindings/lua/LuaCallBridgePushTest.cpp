#include "bindings/lua/values/LuaCallBridge.h"
#include "bindings/lua/values/LuaInstanceBox.h"
#include "core/lua/references/LuaScriptObjectInterpreterReference.h"
#include "support/LuaCallBridgeFixture.h"
#include "support/RowName.h"

#include <cstddef>

namespace tbScripts::test
{

using ::testing::Each;

class LuaCallBridgePushTest : public LuaCallBridgeFixture
{
protected:
    void TearDown() override
    {
        lua_settop(state(), 0);
        LuaCallBridgeFixture::TearDown();
    }

    /// Pushes the value and returns the count that is reported; checks it against the stack.
    int pushValue(const FunctionParameter& parameter)
    {
        const int top = lua_gettop(state());
        const int count = lua::LuaCallBridge(scope(), "spawn").pushParameter(parameter);
        EXPECT_EQ(lua_gettop(state()), top + count);
        return count;
    }

    const lua::LuaInstanceBox& topBox() const
    {
        return *static_cast<const lua::LuaInstanceBox*>(lua_touserdata(state(), -1));
    }

    bool hasMetatable() const
    {
        if (!lua_getmetatable(state(), -1))
            return false;
        lua_pop(state(), 1);
        return true;
    }

    int m_object = 0;
};

namespace
{

struct PushedKind
{
    const char* row;
    FUNCTION_PARAMETER_TYPE type;
    int count;
    int luaType; // of what is pushed for an empty value
};

} // namespace

using LuaCallBridgePushedKindTest = OnRows<LuaCallBridgePushTest, PushedKind>;

TEST_P(LuaCallBridgePushedKindTest, IsReportedByCount)
{
    EXPECT_EQ(pushValue(FunctionParameter::ofType(GetParam().type)), GetParam().count);
    EXPECT_EQ(lua_type(state(), 1), GetParam().luaType);
}

INSTANTIATE_TEST_SUITE_P(
    Kinds,
    LuaCallBridgePushedKindTest,
    ::testing::Values(
        PushedKind{"Void", PARAM_TYPE_VOID, 0, LUA_TNONE},
        PushedKind{"Bool", PARAM_TYPE_BOOL, 1, LUA_TBOOLEAN},
        PushedKind{"Int", PARAM_TYPE_INT, 1, LUA_TNUMBER},
        PushedKind{"Float", PARAM_TYPE_FLOAT, 1, LUA_TNUMBER},
        PushedKind{"Double", PARAM_TYPE_DOUBLE, 1, LUA_TNUMBER},
        PushedKind{"String", PARAM_TYPE_STRING, 1, LUA_TSTRING},
        PushedKind{"OwnedUserType", PARAM_TYPE_USER_TYPE_OWNED, 0, LUA_TNONE},
        PushedKind{"UserType", PARAM_TYPE_USER_TYPE, 0, LUA_TNONE},
        PushedKind{"ScriptFunction", PARAM_TYPE_SCRIPT_FUNCTION, 1, LUA_TNIL},
        PushedKind{"ScriptObject", PARAM_TYPE_SCRIPT_OBJECT, 1, LUA_TNIL}),
    RowName());

TEST_F(LuaCallBridgePushTest, KindsAboveNineAreLoggedAndPushNothing)
{
    for (const int kind : {10, 255})
    {
        const auto type = static_cast<FUNCTION_PARAMETER_TYPE>(kind);
        EXPECT_EQ(pushValue(FunctionParameter::ofType(type)), 0);
        expectLogged(
            "Error while filling output for function 'spawn', parameter type not handled.",
            "LuaFunction");
    }
}

TEST_F(LuaCallBridgePushTest, UserTypeIsABoxWithItsOwner)
{
    declareUserType("Enemy");
    for (const bool isOwned : {true, false})
    {
        EXPECT_EQ(pushValue(FunctionParameter(&m_object, "Enemy", isOwned)), 1);
        EXPECT_EQ(lua_objlen(state(), -1), 16U);
        EXPECT_EQ(topBox().object, &m_object);
        EXPECT_EQ(topBox().gcEnabled, isOwned);
        EXPECT_FALSE(topBox().isDestroyed);
        EXPECT_THAT(topBox().spare, Each(0));
    }
}

TEST_F(LuaCallBridgePushTest, BoxHasTheMetatableOfItsType)
{
    declareUserType("Enemy");

    pushValue(FunctionParameter(&m_object, "Enemy", false));

    ASSERT_TRUE(lua_getmetatable(state(), 1));
    luaL_getmetatable(state(), "Enemy");
    EXPECT_TRUE(lua_rawequal(state(), -1, -2));
}

TEST_F(LuaCallBridgePushTest, SameObjectPushedTwiceIsTwoBoxes)
{
    declareUserType("Enemy");
    const FunctionParameter parameter(&m_object, "Enemy", false);

    pushValue(parameter);
    pushValue(parameter);

    EXPECT_FALSE(lua_rawequal(state(), 1, 2));
}

namespace
{

struct NameOfNoType
{
    const char* row;
    tbMemory::StringView typeName;
    std::size_t reports;
};

} // namespace

using LuaCallBridgeNameOfNoTypeTest = OnRows<LuaCallBridgePushTest, NameOfNoType>;

TEST_P(LuaCallBridgeNameOfNoTypeTest, GivesABoxWithoutMetatable)
{
    EXPECT_EQ(pushValue(FunctionParameter(&m_object, GetParam().typeName, true)), 1);
    EXPECT_EQ(lua_type(state(), 1), LUA_TUSERDATA);
    EXPECT_EQ(topBox().object, &m_object);
    EXPECT_TRUE(topBox().gcEnabled);
    EXPECT_FALSE(hasMetatable());
    EXPECT_EQ(m_log.takeEntries().size(), GetParam().reports);
}

INSTANTIATE_TEST_SUITE_P(
    Names,
    LuaCallBridgeNameOfNoTypeTest,
    ::testing::Values(
        NameOfNoType{"Null", tbMemory::StringView(), 0},
        NameOfNoType{"Empty", "", 0},
        NameOfNoType{"Unknown", "Nobody", 1},
        NameOfNoType{"MetatableOfFiles", "FILE*", 1},
        NameOfNoType{"TableOfModules", "_LOADED", 1}),
    RowName());

TEST_F(LuaCallBridgePushTest, RegistryEntryThatIsNoTableGivesABoxWithoutMetatable)
{
    lua_pushliteral(state(), "text");
    lua_setfield(state(), LUA_REGISTRYINDEX, "Settings");

    EXPECT_EQ(pushValue(FunctionParameter(&m_object, "Settings", false)), 1);
    EXPECT_FALSE(hasMetatable());
    EXPECT_EQ(m_log.takeEntries().size(), 1U); // that it is not a user type
}

TEST_F(LuaCallBridgePushTest, ReferenceIsTheVeryValue)
{
    push("shared = {} return shared");
    const int slotNumber = luaL_ref(state(), LUA_REGISTRYINDEX);
    const ScriptObjectReference reference(new lua::LuaScriptObjectInterpreterReference(
        handle(), PARAM_TYPE_SCRIPT_OBJECT, slotNumber));

    EXPECT_EQ(pushValue(reference), 1);
    lua_getglobal(state(), "shared");
    EXPECT_TRUE(lua_rawequal(state(), -1, -2));
}

TEST_F(LuaCallBridgePushTest, ReferenceOfAnotherStateIsNil)
{
    lua::LuaStateHandle other = lua::LuaStateHandle::open();
    lua_createtable(other.get(), 0, 0);
    const int slotNumber = luaL_ref(other.get(), LUA_REGISTRYINDEX);
    const ScriptObjectReference reference(
        new lua::LuaScriptObjectInterpreterReference(other, PARAM_TYPE_SCRIPT_OBJECT, slotNumber));

    EXPECT_EQ(pushValue(reference), 1);
    EXPECT_TRUE(lua_isnil(state(), 1));
    other.close();
}

} // namespace tbScripts::test

#include "bindings/lua/values/LuaCallBridge.h"
#include "bindings/lua/values/LuaInstanceBox.h"
#include "core/lua/references/LuaScriptObjectInterpreterReference.h"
#include "support/LuaCallBridgeFixture.h"
#include "support/RowName.h"

#include <cstddef>

namespace tbScripts::test
{

namespace
{

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

struct PushedKind
{
    const char* row;
    FUNCTION_PARAMETER_TYPE type;
    int count;
    int luaType; // of what is pushed for an empty value
};

using LuaCallBridgePushedKindTest = OnRows<LuaCallBridgePushTest, PushedKind>;

TEST_P(LuaCallBridgePushedKindTest, IsReportedByCount)
{
    EXPECT_EQ(pushValue(FunctionParameter::ofType(GetParam().type)), GetParam().count);
    EXPECT_EQ(lua_type(state(), 1), GetParam().luaType);
}

ROWS(
    LuaCallBridgePushedKindTest,
    {"Void", PARAM_TYPE_VOID, 0, LUA_TNONE},
    {"Bool", PARAM_TYPE_BOOL, 1, LUA_TBOOLEAN},
    {"Int", PARAM_TYPE_INT, 1, LUA_TNUMBER},
    {"Float", PARAM_TYPE_FLOAT, 1, LUA_TNUMBER},
    {"Double", PARAM_TYPE_DOUBLE, 1, LUA_TNUMBER},
    {"String", PARAM_TYPE_STRING, 1, LUA_TSTRING},
    {"OwnedUserType", PARAM_TYPE_USER_TYPE_OWNED, 0, LUA_TNONE},
    {"UserType", PARAM_TYPE_USER_TYPE, 0, LUA_TNONE},
    {"ScriptFunction", PARAM_TYPE_SCRIPT_FUNCTION, 1, LUA_TNIL},
    {"ScriptObject", PARAM_TYPE_SCRIPT_OBJECT, 1, LUA_TNIL});

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

struct NameOfNoType
{
    const char* row;
    tbMemory::StringView typeName;
    std::size_t reports;
};

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

ROWS(
    LuaCallBridgeNameOfNoTypeTest,
    {"Null", tbMemory::StringView(), 0},
    {"Empty", "", 0},
    {"Unknown", "Nobody", 1},
    {"MetatableOfFiles", "FILE*", 1},
    {"TableOfModules", "_LOADED", 1});

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

} // namespace

} // namespace tbScripts::test

#include "bindings/lua/values/LuaCallBridge.h"
#include "bindings/lua/values/LuaInstanceBox.h"
#include "core/lua/references/LuaScriptObjectInterpreterReference.h"
#include "support/LuaCallBridgeFixture.h"

#include <cstddef>
#include <ostream>

namespace tbScripts::test
{

using ::testing::Each;
using ::testing::ElementsAre;

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
    const char* name;
    FUNCTION_PARAMETER_TYPE type;
    int count;
    int luaType; // of what is pushed for an empty value
};

std::ostream& operator<<(std::ostream& stream, const PushedKind& row)
{
    return stream << row.name;
}

} // namespace

class LuaCallBridgePushedKindTest : public LuaCallBridgePushTest,
                                    public ::testing::WithParamInterface<PushedKind>
{
};

TEST_P(LuaCallBridgePushedKindTest, IsReportedByCount)
{
    const int count = pushValue(FunctionParameter::ofType(GetParam().type));

    EXPECT_EQ(count, GetParam().count);
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
    [](const auto& row) { return std::string(row.param.name); });

TEST_F(LuaCallBridgePushTest, KindsAboveNineAreLoggedAndPushNothing)
{
    const int ten = pushValue(FunctionParameter::ofType(static_cast<FUNCTION_PARAMETER_TYPE>(10)));
    const int big = pushValue(FunctionParameter::ofType(static_cast<FUNCTION_PARAMETER_TYPE>(255)));

    EXPECT_EQ(ten, 0);
    EXPECT_EQ(big, 0);
    const LogEntry entry{
        "Error while filling output for function 'spawn', parameter type not handled.",
        "LuaFunction"};
    EXPECT_THAT(m_log.takeEntries(), ElementsAre(entry, entry));
}

TEST_F(LuaCallBridgePushTest, OwnedUserTypeIsABoxThatTheScriptCollects)
{
    declareUserType("Enemy");

    const int count = pushValue(FunctionParameter(&m_object, "Enemy", true));

    EXPECT_EQ(count, 1);
    EXPECT_EQ(lua_objlen(state(), 1), 16U);
    EXPECT_EQ(topBox().object, &m_object);
    EXPECT_TRUE(topBox().gcEnabled);
    EXPECT_FALSE(topBox().isDestroyed);
    EXPECT_THAT(topBox().spare, Each(0));
}

TEST_F(LuaCallBridgePushTest, HostsUserTypeIsABoxThatTheHostKeeps)
{
    declareUserType("Enemy");

    const int count = pushValue(FunctionParameter(&m_object, "Enemy", false));

    EXPECT_EQ(count, 1);
    EXPECT_EQ(topBox().object, &m_object);
    EXPECT_FALSE(topBox().gcEnabled);
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
    const char* name;
    tbMemory::StringView typeName;
    std::size_t reports;
};

std::ostream& operator<<(std::ostream& stream, const NameOfNoType& row)
{
    return stream << row.name;
}

} // namespace

class LuaCallBridgeNameOfNoTypeTest : public LuaCallBridgePushTest,
                                      public ::testing::WithParamInterface<NameOfNoType>
{
};

TEST_P(LuaCallBridgeNameOfNoTypeTest, GivesABoxWithoutMetatable)
{
    const int count = pushValue(FunctionParameter(&m_object, GetParam().typeName, true));

    EXPECT_EQ(count, 1);
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
    [](const auto& row) { return std::string(row.param.name); });

TEST_F(LuaCallBridgePushTest, RegistryEntryThatIsNoTableGivesABoxWithoutMetatable)
{
    lua_pushliteral(state(), "text");
    lua_setfield(state(), LUA_REGISTRYINDEX, "Settings");

    const int count = pushValue(FunctionParameter(&m_object, "Settings", false));

    EXPECT_EQ(count, 1);
    EXPECT_FALSE(hasMetatable());
    EXPECT_EQ(m_log.takeEntries().size(), 1U); // that it is not a user type
}

TEST_F(LuaCallBridgePushTest, ReferenceIsTheVeryValue)
{
    push("shared = {} return shared");
    const int slotNumber = luaL_ref(state(), LUA_REGISTRYINDEX);
    const ScriptObjectReference reference(new lua::LuaScriptObjectInterpreterReference(
        handle(), PARAM_TYPE_SCRIPT_OBJECT, slotNumber));

    const int count = pushValue(reference);

    EXPECT_EQ(count, 1);
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

    const int count = pushValue(reference);

    EXPECT_EQ(count, 1);
    EXPECT_TRUE(lua_isnil(state(), 1));
    other.close();
}

} // namespace tbScripts::test

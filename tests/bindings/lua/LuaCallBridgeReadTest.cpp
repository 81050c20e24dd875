#include "bindings/lua/values/LuaCallBridge.h"
#include "core/lua/references/LuaScriptObjectInterpreterReference.h"
#include "support/Callables.h"
#include "support/LuaCallBridgeFixture.h"
#include "support/RowName.h"

#include <memory>

namespace tbScripts::test
{

namespace
{

struct ReadValue
{
    const char* row;
    FunctionParameter earlier;
    const char* expression;
    const char* value;
};

class LuaCallBridgeReadTest : public LuaCallBridgeFixture
{
protected:
    LuaCallBridgeReadTest()
    {
        setInstance("enemy", "Enemy", &m_object);
        setInstance("player", "Player", &m_object);
    }

    int m_object = 0;
};

using LuaCallBridgeReadValueTest = OnRows<LuaCallBridgeReadTest, ReadValue>;

TEST_P(LuaCallBridgeReadValueTest, IsFilledInPlace)
{
    FunctionParameter parameter = GetParam().earlier;
    read(parameter, GetParam().expression);
    EXPECT_EQ(valueOf(parameter), GetParam().value);
}

// What the storage was prepared for has to be given up; the leak check looks for it.
TEST_P(LuaCallBridgeReadValueTest, IsFilledInStorageThatWasPreparedForOthers)
{
    for (const auto prepare :
         {&FunctionParameter::prepareForString,
          &FunctionParameter::prepareForUserType,
          &FunctionParameter::prepareForScriptObjectReference})
    {
        FunctionParameter parameter = GetParam().earlier;
        (parameter.*prepare)();
        read(parameter, GetParam().expression);
        EXPECT_EQ(valueOf(parameter), GetParam().value);
    }
}

ROWS(
    LuaCallBridgeReadValueTest,
    {"Bool", false, "{}", "true"},
    {"Int", 0, "-2.9", "-2"},
    {"Float", 0.0F, "0.1", "0.100000001"},
    {"Double", 0.0, "0.1", "0.1"},
    {"Text", "earlier", "'spear'", "spear"},
    {"UserType", FunctionParameter::ofType(PARAM_TYPE_USER_TYPE), "enemy", "an object of Enemy"},
    {"OwnedUserType", FunctionParameter(nullptr, "", true), "enemy", "an object of Enemy"},
    {"Function", FunctionParameter::ofType(PARAM_TYPE_SCRIPT_FUNCTION), "print", "function"},
    {"Table", FunctionParameter::ofType(PARAM_TYPE_SCRIPT_OBJECT), "{}", "table"});

TEST_F(LuaCallBridgeReadTest, NumberReadAsTextBecomesOneInItsSlot)
{
    FunctionParameter parameter("");
    push("return 7");

    lua::LuaCallBridge(scope(), "spawn").readParameter(parameter, 1);

    EXPECT_EQ(parameter.getString(), "7");
    EXPECT_EQ(lua_type(state(), 1), LUA_TSTRING);
    lua_settop(state(), 0);
}

TEST_F(LuaCallBridgeReadTest, NilIsTheNullObject)
{
    FunctionParameter parameter(&m_object, "Enemy", true);

    read(parameter, "nil");

    EXPECT_EQ(parameter.getUserTypeObject(), nullptr);
    EXPECT_EQ(parameter.getUserTypeName(), "Enemy");
    EXPECT_EQ(parameter.getUserTypeView().getInterpreterView(), nullptr);
}

TEST_F(LuaCallBridgeReadTest, ReferenceHasTheKindThatWasDeclared)
{
    FunctionParameter function = FunctionParameter::ofType(PARAM_TYPE_SCRIPT_FUNCTION);
    FunctionParameter object = FunctionParameter::ofType(PARAM_TYPE_SCRIPT_OBJECT);

    read(function, "print");
    read(object, "{}");

    EXPECT_EQ(function.getScriptObject().getType(), 8U);
    EXPECT_EQ(object.getScriptObject().getType(), 9U);
}

TEST_F(LuaCallBridgeReadTest, ReferenceTakesOneRegistrySlotHoweverOftenItIsRead)
{
    FunctionParameter parameter = FunctionParameter::ofType(PARAM_TYPE_SCRIPT_OBJECT);
    const int slots = countRegistrySlots();

    for (int i = 0; i < 100; ++i)
        read(parameter, "{}");

    EXPECT_EQ(countRegistrySlots(), slots + 1);
    EXPECT_EQ(parameter.getScriptObject().getUseCount(), 1U);
}

TEST_F(LuaCallBridgeReadTest, ReferenceGivesItsSlotBackWithItsLastHolder)
{
    const int slots = countRegistrySlots();
    auto parameter =
        std::make_unique<FunctionParameter>(FunctionParameter::ofType(PARAM_TYPE_SCRIPT_FUNCTION));
    read(*parameter, "print");
    auto kept = std::make_unique<ScriptObjectReference>(parameter->getScriptObject());

    parameter.reset();
    EXPECT_EQ(countRegistrySlots(), slots + 1);
    kept.reset();

    EXPECT_EQ(countRegistrySlots(), slots);
}

TEST_F(LuaCallBridgeReadTest, OthersKeepTheReferenceThatIsReplaced)
{
    FunctionParameter parameter = FunctionParameter::ofType(PARAM_TYPE_SCRIPT_OBJECT);
    read(parameter, "{ 'first' }");
    const ScriptObjectReference kept = parameter.getScriptObject();

    read(parameter, "{ 'second' }");

    lua::pushReferenced(state(), kept, handle());
    lua_rawgeti(state(), -1, 1);
    EXPECT_STREQ(lua_tostring(state(), -1), "first");
    EXPECT_EQ(kept.getUseCount(), 1U);
    lua_settop(state(), 0);
}

struct Acceptance
{
    const char* row;
    FUNCTION_PARAMETER_TYPE type;
    const char* accepted;
    const char* refused; // null if nothing is
};

using LuaCallBridgeAcceptanceTest = OnRows<LuaCallBridgeReadTest, Acceptance>;

TEST_P(LuaCallBridgeAcceptanceTest, SaysWhatReadingWouldDo)
{
    const FunctionParameter parameter = FunctionParameter::ofType(GetParam().type, "Enemy");

    EXPECT_TRUE(accepts(parameter, GetParam().accepted));
    if (GetParam().refused)
    {
        EXPECT_FALSE(accepts(parameter, GetParam().refused));
    }
}

ROWS(
    LuaCallBridgeAcceptanceTest,
    {"Bool", PARAM_TYPE_BOOL, "nil", nullptr},
    {"Int", PARAM_TYPE_INT, "'5'", "'five'"},
    {"Float", PARAM_TYPE_FLOAT, "0.5", "true"},
    {"Double", PARAM_TYPE_DOUBLE, "0/0", "nil"},
    {"String", PARAM_TYPE_STRING, "7", "{}"},
    {"OwnedUserType", PARAM_TYPE_USER_TYPE_OWNED, "enemy", "io.stdout"},
    {"UserType", PARAM_TYPE_USER_TYPE, "nil", "7"},
    {"UserTypeByItsName", PARAM_TYPE_USER_TYPE, "enemy", "player"},
    {"ScriptFunction", PARAM_TYPE_SCRIPT_FUNCTION, "print", "{}"},
    {"ScriptObject", PARAM_TYPE_SCRIPT_OBJECT, "{}", "print"});

TEST_F(LuaCallBridgeReadTest, UserTypeWithoutNameAcceptsEveryInstance)
{
    FunctionParameter parameter = FunctionParameter::ofType(PARAM_TYPE_USER_TYPE_OWNED);
    read(parameter, "player");

    EXPECT_TRUE(accepts(parameter, "enemy"));
    EXPECT_FALSE(accepts(parameter, "io.stdout"));
}

} // namespace

} // namespace tbScripts::test

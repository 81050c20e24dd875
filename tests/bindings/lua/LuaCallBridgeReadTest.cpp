#include "bindings/lua/values/LuaCallBridge.h"
#include "core/lua/references/LuaScriptObjectInterpreterReference.h"
#include "support/LuaCallBridgeFixture.h"

#include <memory>
#include <ostream>

namespace tbScripts::test
{

class LuaCallBridgeReadTest : public LuaCallBridgeFixture
{
protected:
    int m_object = 0;
};

TEST_F(LuaCallBridgeReadTest, FillsBoolInPlace)
{
    FunctionParameter parameter(false);

    read(parameter, "{}");

    EXPECT_TRUE(parameter.getBool());
}

TEST_F(LuaCallBridgeReadTest, FillsIntInPlace)
{
    FunctionParameter parameter(0);

    read(parameter, "-2.9");

    EXPECT_EQ(parameter.getInt(), -2);
}

TEST_F(LuaCallBridgeReadTest, FillsFloatInPlace)
{
    FunctionParameter parameter(0.0F);

    read(parameter, "0.1");

    EXPECT_EQ(parameter.getFloat(), 0.1F);
}

TEST_F(LuaCallBridgeReadTest, FillsDoubleInPlace)
{
    FunctionParameter parameter(0.0);

    read(parameter, "0.1");

    EXPECT_EQ(parameter.getDouble(), 0.1);
}

TEST_F(LuaCallBridgeReadTest, FillsTextInPlace)
{
    FunctionParameter parameter("earlier");

    read(parameter, "'spear'");

    EXPECT_EQ(parameter.getString(), "spear");
}

TEST_F(LuaCallBridgeReadTest, NumberReadAsTextBecomesOneInItsSlot)
{
    FunctionParameter parameter("");
    push("return 7");

    lua::LuaCallBridge(scope(), "spawn").readParameter(parameter, 1);

    EXPECT_EQ(parameter.getString(), "7");
    EXPECT_EQ(lua_type(state(), 1), LUA_TSTRING);
    lua_settop(state(), 0);
}

TEST_F(LuaCallBridgeReadTest, FillsNameAndObjectOfAUserType)
{
    setInstance("enemy", "Enemy", &m_object);
    FunctionParameter parameter = FunctionParameter::ofType(PARAM_TYPE_USER_TYPE);

    read(parameter, "enemy");

    EXPECT_EQ(parameter.getUserTypeObject(), &m_object);
    EXPECT_EQ(parameter.getUserTypeName(), "Enemy");
}

TEST_F(LuaCallBridgeReadTest, NilIsTheNullObject)
{
    FunctionParameter parameter(&m_object, "Enemy", true);

    read(parameter, "nil");

    EXPECT_EQ(parameter.getUserTypeObject(), nullptr);
    EXPECT_EQ(parameter.getUserTypeName(), "Enemy");
    EXPECT_EQ(parameter.getUserTypeView().getInterpreterView(), nullptr);
}

namespace
{

struct PreparedAsOther
{
    const char* name;
    void (FunctionParameter::*prepare)();
};

std::ostream& operator<<(std::ostream& stream, const PreparedAsOther& row)
{
    return stream << row.name;
}

} // namespace

class LuaCallBridgePreparedStorageTest : public LuaCallBridgeReadTest,
                                         public ::testing::WithParamInterface<PreparedAsOther>
{
};

// What the storage held has to be given up; the leak check looks for it.
TEST_P(LuaCallBridgePreparedStorageTest, TakesATruthValue)
{
    FunctionParameter parameter(false);
    (parameter.*GetParam().prepare)();

    read(parameter, "true");

    EXPECT_TRUE(parameter.getBool());
}

TEST_P(LuaCallBridgePreparedStorageTest, TakesANumber)
{
    FunctionParameter parameter(0);
    (parameter.*GetParam().prepare)();

    read(parameter, "7");

    EXPECT_EQ(parameter.getInt(), 7);
}

TEST_P(LuaCallBridgePreparedStorageTest, TakesAText)
{
    FunctionParameter parameter("");
    (parameter.*GetParam().prepare)();

    read(parameter, "'spear'");

    EXPECT_EQ(parameter.getString(), "spear");
}

TEST_P(LuaCallBridgePreparedStorageTest, TakesAnInstance)
{
    setInstance("enemy", "Enemy", &m_object);
    FunctionParameter parameter(nullptr, "", true);
    (parameter.*GetParam().prepare)();

    read(parameter, "enemy");

    EXPECT_EQ(parameter.getUserTypeObject(), &m_object);
}

TEST_P(LuaCallBridgePreparedStorageTest, TakesATable)
{
    FunctionParameter parameter = FunctionParameter::ofType(PARAM_TYPE_SCRIPT_OBJECT);
    (parameter.*GetParam().prepare)();

    read(parameter, "{}");

    EXPECT_EQ(parameter.getScriptObject().getType(), 9U);
}

INSTANTIATE_TEST_SUITE_P(
    Members,
    LuaCallBridgePreparedStorageTest,
    ::testing::Values(
        PreparedAsOther{"Text", &FunctionParameter::prepareForString},
        PreparedAsOther{"UserType", &FunctionParameter::prepareForUserType},
        PreparedAsOther{"Reference", &FunctionParameter::prepareForScriptObjectReference}),
    [](const auto& row) { return std::string(row.param.name); });

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

namespace
{

struct Acceptance
{
    const char* name;
    FUNCTION_PARAMETER_TYPE type;
    const char* accepted;
    const char* refused; // null if nothing is
};

std::ostream& operator<<(std::ostream& stream, const Acceptance& row)
{
    return stream << row.name;
}

} // namespace

class LuaCallBridgeAcceptanceTest : public LuaCallBridgeReadTest,
                                    public ::testing::WithParamInterface<Acceptance>
{
};

TEST_P(LuaCallBridgeAcceptanceTest, SaysWhatReadingWouldDo)
{
    setInstance("enemy", "Enemy", &m_object);
    setInstance("player", "Player", &m_object);
    const FunctionParameter parameter = FunctionParameter::ofType(GetParam().type, "Enemy");

    EXPECT_TRUE(accepts(parameter, GetParam().accepted));
    if (GetParam().refused)
    {
        EXPECT_FALSE(accepts(parameter, GetParam().refused));
    }
}

INSTANTIATE_TEST_SUITE_P(
    Kinds,
    LuaCallBridgeAcceptanceTest,
    ::testing::Values(
        Acceptance{"Bool", PARAM_TYPE_BOOL, "nil", nullptr},
        Acceptance{"Int", PARAM_TYPE_INT, "'5'", "'five'"},
        Acceptance{"Float", PARAM_TYPE_FLOAT, "0.5", "true"},
        Acceptance{"Double", PARAM_TYPE_DOUBLE, "0/0", "nil"},
        Acceptance{"String", PARAM_TYPE_STRING, "7", "{}"},
        Acceptance{"OwnedUserType", PARAM_TYPE_USER_TYPE_OWNED, "enemy", "io.stdout"},
        Acceptance{"UserType", PARAM_TYPE_USER_TYPE, "nil", "7"},
        Acceptance{"UserTypeByItsName", PARAM_TYPE_USER_TYPE, "enemy", "player"},
        Acceptance{"ScriptFunction", PARAM_TYPE_SCRIPT_FUNCTION, "print", "{}"},
        Acceptance{"ScriptObject", PARAM_TYPE_SCRIPT_OBJECT, "{}", "print"}),
    [](const auto& row) { return std::string(row.param.name); });

TEST_F(LuaCallBridgeReadTest, UserTypeWithoutNameAcceptsEveryInstance)
{
    setInstance("enemy", "Enemy", &m_object);
    FunctionParameter parameter = FunctionParameter::ofType(PARAM_TYPE_USER_TYPE_OWNED);
    setInstance("player", "Player", &m_object);
    read(parameter, "player");

    EXPECT_TRUE(accepts(parameter, "enemy"));
    EXPECT_FALSE(accepts(parameter, "io.stdout"));
}

} // namespace tbScripts::test

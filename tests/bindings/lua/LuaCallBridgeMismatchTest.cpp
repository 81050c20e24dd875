#include "bindings/lua/values/LuaCallBridge.h"
#include "core/lua/references/LuaScriptObjectInterpreterReference.h"
#include "support/LuaCallBridgeFixture.h"

#include <climits>
#include <ostream>

namespace tbScripts::test
{

class LuaCallBridgeMismatchTest : public LuaCallBridgeFixture
{
protected:
    int m_object = 0;
};

TEST_F(LuaCallBridgeMismatchTest, FailedIntIsZero)
{
    FunctionParameter parameter(7);

    const std::string message = readExpectingError(parameter, "{}");

    EXPECT_EQ(message, "Error l.-1 while calling spawn. Expected int, got table.");
    EXPECT_EQ(parameter.getInt(), 0);
}

TEST_F(LuaCallBridgeMismatchTest, FailedFloatIsZero)
{
    FunctionParameter parameter(7.5F);

    const std::string message = readExpectingError(parameter, "'x'");

    EXPECT_EQ(message, "Error l.-1 while calling spawn. Expected float, got string.");
    EXPECT_EQ(parameter.getFloat(), 0.0F);
}

TEST_F(LuaCallBridgeMismatchTest, FailedDoubleIsZero)
{
    FunctionParameter parameter(7.5);

    const std::string message = readExpectingError(parameter, "nil");

    EXPECT_EQ(message, "Error l.-1 while calling spawn. Expected double, got nil.");
    EXPECT_EQ(parameter.getDouble(), 0.0);
}

TEST_F(LuaCallBridgeMismatchTest, FailedTextIsEmpty)
{
    FunctionParameter parameter("earlier");

    const std::string message = readExpectingError(parameter, "false");

    EXPECT_EQ(message, "Error l.-1 while calling spawn. Expected string, got boolean.");
    EXPECT_EQ(parameter.getString(), "");
}

TEST_F(LuaCallBridgeMismatchTest, FailedUserTypeIsNull)
{
    FunctionParameter parameter(&m_object, "Enemy", false);

    const std::string message = readExpectingError(parameter, "7");

    EXPECT_EQ(message, "Error l.-1 while calling spawn. Expected Enemy, got number.");
    EXPECT_EQ(parameter.getUserTypeObject(), nullptr);
}

TEST_F(LuaCallBridgeMismatchTest, InstanceOfAnotherTypeIsNullAndAMismatch)
{
    setInstance("enemy", "Enemy", &m_object);
    FunctionParameter parameter(&m_object, "Player", true);

    const std::string message = readExpectingError(parameter, "enemy");

    EXPECT_EQ(message, "Error l.-1 while calling spawn. Expected Player, got userdata.");
    EXPECT_EQ(parameter.getUserTypeObject(), nullptr);
}

TEST_F(LuaCallBridgeMismatchTest, NamesThatDifferInOneLetterAreThoseOfTwoTypes)
{
    for (std::size_t size = 1; size < 20; ++size)
    {
        const std::string name(size, 'T');
        setInstance("instance", name.c_str(), &m_object);
        FunctionParameter same(nullptr, name.c_str(), false);
        read(same, "instance");
        EXPECT_EQ(same.getUserTypeObject(), &m_object);

        for (std::size_t position = 0; position < size; ++position)
        {
            std::string other = name;
            other[position] = 'U';
            FunctionParameter parameter(&m_object, other.c_str(), false);

            readExpectingError(parameter, "instance");

            EXPECT_EQ(parameter.getUserTypeObject(), nullptr) << other;
        }
    }
}

TEST_F(LuaCallBridgeMismatchTest, FailedFunctionIsAnEmptyReference)
{
    FunctionParameter parameter = FunctionParameter::ofType(PARAM_TYPE_SCRIPT_FUNCTION);
    read(parameter, "print");
    const int slots = countRegistrySlots();

    const std::string message = readExpectingError(parameter, "{}");

    EXPECT_EQ(message, "Error l.-1 while calling spawn. Expected lua function, got table.");
    EXPECT_EQ(
        lua::LuaScriptObjectInterpreterReference::slotOf(parameter.getScriptObject(), handle()), 0);
    EXPECT_EQ(countRegistrySlots(), slots - 1);
}

TEST_F(LuaCallBridgeMismatchTest, FailedObjectIsAnEmptyReference)
{
    FunctionParameter parameter = FunctionParameter::ofType(PARAM_TYPE_SCRIPT_OBJECT);
    read(parameter, "{}");
    const int slots = countRegistrySlots();

    const std::string message = readExpectingError(parameter, "print");

    EXPECT_EQ(message, "Error l.-1 while calling spawn. Expected lua object, got function.");
    EXPECT_EQ(
        lua::LuaScriptObjectInterpreterReference::slotOf(parameter.getScriptObject(), handle()), 0);
    EXPECT_EQ(countRegistrySlots(), slots - 1);
}

TEST_F(LuaCallBridgeMismatchTest, SlotBeyondTheStackIsMissing)
{
    FunctionParameter parameter(7);

    const std::string message = readSlotExpectingError(parameter, 3);

    EXPECT_EQ(message, "Error l.-1 while calling spawn. Expected int, got no value.");
}

namespace
{

struct UnhandledKind
{
    const char* name;
    unsigned number;
};

std::ostream& operator<<(std::ostream& stream, const UnhandledKind& row)
{
    return stream << row.name;
}

} // namespace

class LuaCallBridgeUnhandledKindTest : public LuaCallBridgeMismatchTest,
                                       public ::testing::WithParamInterface<UnhandledKind>
{
};

TEST_P(LuaCallBridgeUnhandledKindTest, CannotBeRead)
{
    FunctionParameter parameter =
        FunctionParameter::ofType(static_cast<FUNCTION_PARAMETER_TYPE>(GetParam().number));

    const std::string message = readExpectingError(parameter, "7");

    EXPECT_EQ(
        message,
        "Error while requesting parameter for function 'spawn', parameter type not handled.");
    EXPECT_EQ(parameter.getType(), GetParam().number);
    EXPECT_FALSE(accepts(parameter, "7"));
}

INSTANTIATE_TEST_SUITE_P(
    Kinds,
    LuaCallBridgeUnhandledKindTest,
    ::testing::Values(
        UnhandledKind{"Void", 0},
        UnhandledKind{"Ten", 10},
        UnhandledKind{"TwoHundredFiftyFive", 255}),
    [](const auto& row) { return std::string(row.param.name); });

TEST_F(LuaCallBridgeMismatchTest, MismatchMessageOutsideOfAnyCallHasNoLine)
{
    lua_Debug activation;

    const tbMemory::String message = lua::LuaCallBridge::buildTypeMismatchMessage(
        state(), activation, LUA_TSTRING, "int", "spawn");

    EXPECT_EQ(message, "Error l.-1 while calling spawn. Expected int, got string.");
}

TEST_F(LuaCallBridgeMismatchTest, MismatchMessageHasTheLineOfTheCallingScript)
{
    lua_pushcfunction(
        state(),
        [](lua_State* inner)
        {
            lua_Debug activation;
            const tbMemory::String message = lua::LuaCallBridge::buildTypeMismatchMessage(
                inner, activation, LUA_TNIL, "Enemy", "spawn");
            lua_pushstring(inner, message.c_str());
            return 1;
        });
    lua_setglobal(state(), "describe");

    push("\n\nlocal text = describe() return text");

    EXPECT_STREQ(
        lua_tostring(state(), 1), "Error l.3 while calling spawn. Expected Enemy, got nil.");
    lua_settop(state(), 0);
}

TEST_F(LuaCallBridgeMismatchTest, DecimalTextsHaveNoLeadingZeros)
{
    EXPECT_EQ(lua::LuaCallBridge::intToDecimal(0), "0");
    EXPECT_EQ(lua::LuaCallBridge::intToDecimal(7), "7");
    EXPECT_EQ(lua::LuaCallBridge::intToDecimal(-70), "-70");
    EXPECT_EQ(lua::LuaCallBridge::intToDecimal(INT_MAX), "2147483647");
    EXPECT_EQ(lua::LuaCallBridge::intToDecimal(INT_MIN), "-2147483648");
}

} // namespace tbScripts::test

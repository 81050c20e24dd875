#include "bindings/lua/values/LuaCallBridge.h"
#include "core/lua/references/LuaScriptObjectInterpreterReference.h"
#include "support/LuaCallBridgeFixture.h"

#include <climits>

namespace tbScripts::test
{

class LuaCallBridgeMismatchTest : public LuaCallBridgeFixture
{
protected:
    int m_object = 0;
};

TEST_F(LuaCallBridgeMismatchTest, FailedNumbersAreZeroAndTextsEmpty)
{
    FunctionParameter parameter(7);
    expectMismatch(parameter, "{}", "Expected int, got table.");
    EXPECT_EQ(parameter.getInt(), 0);

    parameter = FunctionParameter(7.5F);
    expectMismatch(parameter, "'x'", "Expected float, got string.");
    EXPECT_EQ(parameter.getFloat(), 0.0F);

    parameter = FunctionParameter(7.5);
    expectMismatch(parameter, "nil", "Expected double, got nil.");
    EXPECT_EQ(parameter.getDouble(), 0.0);

    parameter = FunctionParameter("earlier");
    expectMismatch(parameter, "false", "Expected string, got boolean.");
    EXPECT_EQ(parameter.getString(), "");
}

TEST_F(LuaCallBridgeMismatchTest, FailedUserTypeIsNull)
{
    FunctionParameter parameter(&m_object, "Enemy", false);
    expectMismatch(parameter, "7", "Expected Enemy, got number.");
    EXPECT_EQ(parameter.getUserTypeObject(), nullptr);
}

TEST_F(LuaCallBridgeMismatchTest, InstanceOfAnotherTypeIsNullAndAMismatch)
{
    setInstance("enemy", "Enemy", &m_object);
    FunctionParameter parameter(&m_object, "Player", true);
    expectMismatch(parameter, "enemy", "Expected Player, got userdata.");
    EXPECT_EQ(parameter.getUserTypeObject(), nullptr);
}

TEST_F(LuaCallBridgeMismatchTest, FailedReferenceIsEmptyAndGivesItsSlotBack)
{
    const auto expectEmptied = [this](
                                   FUNCTION_PARAMETER_TYPE type,
                                   const char* fitting,
                                   const char* wrong,
                                   const char* message)
    {
        FunctionParameter parameter = FunctionParameter::ofType(type);
        read(parameter, fitting);
        const int slots = countRegistrySlots();
        expectMismatch(parameter, wrong, message);
        const ScriptObjectReference reference = parameter.getScriptObject();
        EXPECT_EQ(lua::LuaScriptObjectInterpreterReference::slotOf(reference, handle()), 0);
        EXPECT_EQ(countRegistrySlots(), slots - 1);
    };
    expectEmptied(PARAM_TYPE_SCRIPT_FUNCTION, "print", "{}", "Expected lua function, got table.");
    expectEmptied(PARAM_TYPE_SCRIPT_OBJECT, "{}", "print", "Expected lua object, got function.");
}

TEST_F(LuaCallBridgeMismatchTest, SlotBeyondTheStackIsMissing)
{
    FunctionParameter parameter(7);
    EXPECT_EQ(
        readSlotExpectingError(parameter, 3),
        "Error l.-1 while calling spawn. Expected int, got no value.");
}

TEST_F(LuaCallBridgeMismatchTest, UnhandledKindsCannotBeRead)
{
    for (const unsigned number : {0U, 10U, 255U})
    {
        FunctionParameter parameter =
            FunctionParameter::ofType(static_cast<FUNCTION_PARAMETER_TYPE>(number));
        EXPECT_EQ(
            readExpectingError(parameter, "7"),
            "Error while requesting parameter for function 'spawn', parameter type not handled.");
        EXPECT_EQ(parameter.getType(), number);
        EXPECT_FALSE(accepts(parameter, "7"));
    }
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

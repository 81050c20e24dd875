#include "support/LuaCallBridgeFixture.h"

#include "bindings/lua/values/LuaCallBridge.h"
#include "bindings/lua/values/LuaInstanceBox.h"

namespace tbScripts::test
{

namespace
{

constexpr int VALUE = 1; // the slot of the value to read

} // namespace

LuaCallBridgeFixture::LuaCallBridgeFixture()
    : m_scope(std::make_unique<lua::LuaCallbackScope>(slot(), state()))
{
}

LuaCallBridgeFixture::~LuaCallBridgeFixture() = default;

void LuaCallBridgeFixture::TearDown()
{
    m_scope.reset();
    LuaStateFixture::TearDown();
}

lua::LuaCallbackScope& LuaCallBridgeFixture::scope() const
{
    return *m_scope;
}

void LuaCallBridgeFixture::read(FunctionParameter& parameter, const std::string& expression)
{
    push("return " + expression);
    lua::LuaCallBridge(*m_scope, "spawn").readParameter(parameter, VALUE);
    EXPECT_EQ(lua_gettop(state()), VALUE);
    lua_settop(state(), 0);
}

std::string LuaCallBridgeFixture::readExpectingError(
    FunctionParameter& parameter, const std::string& expression)
{
    push("return " + expression);
    std::string message = readSlotExpectingError(parameter, VALUE);
    lua_settop(state(), 0);
    return message;
}

void LuaCallBridgeFixture::expectMismatch(
    FunctionParameter& parameter,
    const std::string& expression,
    const std::string& message,
    int line)
{
    EXPECT_EQ(
        readExpectingError(parameter, expression), "Error l.-1 while calling spawn. " + message)
        << "in line " << line;
}

std::string
LuaCallBridgeFixture::readSlotExpectingError(FunctionParameter& parameter, int stackIndex)
{
    const int top = lua_gettop(state());
    std::string message;
    try
    {
        lua::LuaCallBridge(*m_scope, "spawn").readParameter(parameter, stackIndex);
        ADD_FAILURE() << "the value fits";
    }
    catch (const std::string& thrown)
    {
        message = thrown;
    }
    EXPECT_EQ(lua_gettop(state()), top);
    return message;
}

bool LuaCallBridgeFixture::accepts(
    const FunctionParameter& parameter, const std::string& expression)
{
    push("return " + expression);
    const bool isAccepted = lua::LuaCallBridge(*m_scope, "spawn").accepts(parameter, VALUE);
    EXPECT_EQ(lua_gettop(state()), VALUE);
    lua_settop(state(), 0);
    return isAccepted;
}

void LuaCallBridgeFixture::setInstance(const char* name, const char* typeName, void* object)
{
    declareUserType(typeName);
    lua::pushInstance(slot(), state(), object, false, typeName);
    lua_setglobal(state(), name);
}

} // namespace tbScripts::test

#include "bindings/lua/values/LuaCallBridge.h"

#include "bindings/BindingMessages.h"
#include "core/ByteWords.h"
#include "core/ExceptionContainment.h"
#include "core/LogSources.h"
#include "core/lua/LuaNumber.h"
#include "core/lua/LuaText.h"
#include "core/lua/references/LuaScriptObjectInterpreterReference.h"
#include "core/lua/references/LuaScriptObjectInterpreterView.h"

#include "tbScripts/LogManager.h"

#include <array>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <new>
#include <utility>

namespace tbScripts::lua
{

namespace
{

using Access = FunctionParameterAccess;

constexpr const char* NAME_OF_INT = "int";
constexpr const char* NAME_OF_FLOAT = "float";
constexpr const char* NAME_OF_DOUBLE = "double";
constexpr const char* NAME_OF_STRING = "string";
constexpr const char* NAME_OF_FUNCTION = "lua function";
constexpr const char* NAME_OF_OBJECT = "lua object";

constexpr int UNKNOWN_LINE = -1;
constexpr int CALLING_LEVEL = 1; // level 0 is the host function itself

bool isSameName(const tbMemory::String& one, const tbMemory::String& other)
{
    return one.size() == other.size() && areSameBytes(one.data(), other.data(), one.size());
}

bool isOfUserType(const FunctionParameter& parameter)
{
    return parameter.getType() == PARAM_TYPE_USER_TYPE ||
           parameter.getType() == PARAM_TYPE_USER_TYPE_OWNED;
}

const char* nameOfNumber(FUNCTION_PARAMETER_TYPE type)
{
    if (type == PARAM_TYPE_INT)
        return NAME_OF_INT;
    return type == PARAM_TYPE_FLOAT ? NAME_OF_FLOAT : NAME_OF_DOUBLE;
}

} // namespace

bool LuaCallBridge::accepts(const FunctionParameter& parameter, int stackIndex) const
{
    switch (parameter.getType())
    {
    case PARAM_TYPE_BOOL:
        return true;
    case PARAM_TYPE_INT:
    case PARAM_TYPE_FLOAT:
    case PARAM_TYPE_DOUBLE:
        return lua_isnumber(m_state, stackIndex) != 0;
    case PARAM_TYPE_STRING:
        return lua_isstring(m_state, stackIndex) != 0;
    case PARAM_TYPE_USER_TYPE_OWNED:
    case PARAM_TYPE_USER_TYPE:
        return lua_isnil(m_state, stackIndex) || _expectedInstanceAt(parameter, stackIndex).box;
    case PARAM_TYPE_SCRIPT_FUNCTION:
        return lua_isfunction(m_state, stackIndex);
    case PARAM_TYPE_SCRIPT_OBJECT:
        return lua_istable(m_state, stackIndex);
    case PARAM_TYPE_VOID:
        return false;
    }
    return false; // a number outside the enumeration accepts no value
}

void LuaCallBridge::_read(FunctionParameter& parameter, int stackIndex) const
{
    switch (parameter.getType())
    {
    case PARAM_TYPE_BOOL:
        Access::storeBool(parameter, lua_toboolean(m_state, stackIndex) != 0);
        return;
    case PARAM_TYPE_INT:
    case PARAM_TYPE_FLOAT:
    case PARAM_TYPE_DOUBLE:
        _readNumber(parameter, stackIndex);
        return;
    case PARAM_TYPE_STRING:
        _readText(parameter, stackIndex);
        return;
    case PARAM_TYPE_USER_TYPE_OWNED:
    case PARAM_TYPE_USER_TYPE:
        _readUserType(parameter, stackIndex);
        return;
    case PARAM_TYPE_SCRIPT_FUNCTION:
    case PARAM_TYPE_SCRIPT_OBJECT:
        _readReference(parameter, stackIndex);
        return;
    case PARAM_TYPE_VOID:
        break;
    }
    // A number outside the enumeration cannot be read either.
    throw std::string(std::string_view(messages::parameterNotHandled(m_functionName)));
}

int LuaCallBridge::_push(const FunctionParameter& parameter) const
{
    switch (parameter.getType())
    {
    case PARAM_TYPE_VOID:
        return 0;
    case PARAM_TYPE_BOOL:
        lua_pushboolean(m_state, parameter.getBool() ? 1 : 0);
        return 1;
    case PARAM_TYPE_INT:
        lua_pushinteger(m_state, parameter.getInt());
        return 1;
    case PARAM_TYPE_FLOAT:
        lua_pushnumber(m_state, static_cast<lua_Number>(parameter.getFloat()));
        return 1;
    case PARAM_TYPE_DOUBLE:
        lua_pushnumber(m_state, parameter.getDouble());
        return 1;
    case PARAM_TYPE_STRING:
        pushName(m_state, parameter.getString()); // for scripts, strings end at their first NUL
        return 1;
    case PARAM_TYPE_USER_TYPE_OWNED:
    case PARAM_TYPE_USER_TYPE:
        return _pushUserType(parameter);
    case PARAM_TYPE_SCRIPT_FUNCTION:
    case PARAM_TYPE_SCRIPT_OBJECT:
        pushReferenced(m_state, parameter.getScriptObject(), LuaStateHandle(&m_scope.getSlot()));
        return 1;
    }
    LogManager::getInstance()->log(
        messages::outputNotHandled(m_functionName), LOG_SOURCE_LUA_FUNCTION);
    return 0;
}

bool LuaCallBridge::writeObject(FunctionParameter& parameter, void* object)
{
    if (!isOfUserType(parameter))
        return false;
    Access::storeObject(parameter, object);
    Access::editView(parameter).reset();
    return true;
}

bool LuaCallBridge::writeIndex(FunctionParameter& parameter, int index)
{
    if (parameter.getType() != PARAM_TYPE_INT)
        return false;
    Access::storeInt(parameter, index);
    return true;
}

tbMemory::String LuaCallBridge::buildTypeMismatchMessage(
    lua_State* state,
    lua_Debug& activation,
    int actualType,
    const tbMemory::StringView& expectedTypeName,
    const tbMemory::StringView& functionName)
{
    int line = UNKNOWN_LINE;
    if (lua_getstack(state, CALLING_LEVEL, &activation) && lua_getinfo(state, "nSl", &activation))
        line = activation.currentline;
    return messages::typeMismatch(
        intToDecimal(line), functionName, expectedTypeName, lua_typename(state, actualType));
}

std::string LuaCallBridge::intToDecimal(int number)
{
    std::array<char, 16> digits{};
    const std::to_chars_result end =
        std::to_chars(digits.data(), digits.data() + digits.size(), number);
    return std::string(digits.data(), end.ptr);
}

void LuaCallBridge::_readNumber(FunctionParameter& parameter, int stackIndex) const
{
    // A value that is no number reads as 0, the result of its conversion.
    const double number = lua_tonumber(m_state, stackIndex);
    if (parameter.getType() == PARAM_TYPE_INT)
        Access::storeInt(parameter, truncateToInt(number));
    else if (parameter.getType() == PARAM_TYPE_FLOAT)
        Access::storeFloat(parameter, narrowToFloat(number));
    else
        Access::storeDouble(parameter, number);
    if (number == 0.0 && !lua_isnumber(m_state, stackIndex))
        _throwTypeMismatch(stackIndex, nameOfNumber(parameter.getType()));
}

void LuaCallBridge::_readText(FunctionParameter& parameter, int stackIndex) const
{
    const tbMemory::StringView passed = textAt(m_state, stackIndex);
    Access::storeString(parameter, passed);
    if (passed.isNull())
        _throwTypeMismatch(stackIndex, NAME_OF_STRING);
}

LuaInstance
LuaCallBridge::_expectedInstanceAt(const FunctionParameter& parameter, int stackIndex) const
{
    const LuaInstance instance = instanceAt(m_scope.getSlot(), m_state, stackIndex);
    const bool isExpected = instance.box && (Access::acceptsAnyUserType(parameter) ||
                                             instance.typeName == parameter.getUserTypeName());
    return isExpected ? instance : LuaInstance{nullptr, tbMemory::StringView()};
}

bool LuaCallBridge::_readExpectedInstance(FunctionParameter& parameter, int stackIndex) const
{
    const tbMemory::String* const expectedName = Access::findExpectedTypeName(parameter);
    if (!expectedName)
        return false;
    auto* const box = static_cast<const LuaInstanceBox*>(boxSizedBlockAt(m_state, stackIndex));
    const tbMemory::String* const name =
        box ? livingTypeAt(m_scope.getSlot(), m_state, stackIndex, box) : nullptr;
    if (!name || !hasFlagsOfABox(box) || box->isDestroyed || !isSameName(*name, *expectedName))
        return false;
    Access::storeObject(parameter, box->object);
    if (parameter.getType() == PARAM_TYPE_USER_TYPE_OWNED)
        _lendView(parameter, stackIndex);
    return true;
}

void LuaCallBridge::_readUserType(FunctionParameter& parameter, int stackIndex) const
{
    Access::storeObject(parameter, nullptr);
    const bool acceptsAny = Access::acceptsAnyUserType(parameter);
    const LuaInstance instance = _expectedInstanceAt(parameter, stackIndex);
    if (instance.box)
    {
        if (acceptsAny)
            Access::storeTypeName(parameter, instance.typeName);
        Access::storeObject(parameter, instance.box->object);
        if (parameter.getType() == PARAM_TYPE_USER_TYPE_OWNED)
            _lendView(parameter, stackIndex);
        return;
    }
    if (!lua_isnil(m_state, stackIndex))
    {
        _throwTypeMismatch(
            stackIndex, acceptsAny ? tbMemory::StringView("") : parameter.getUserTypeName());
    }
    Access::editView(parameter).reset();
    if (acceptsAny)
        Access::storeTypeName(parameter, tbMemory::StringView());
}

void LuaCallBridge::_readReference(FunctionParameter& parameter, int stackIndex) const
{
    Access::clear(parameter); // an empty parameter designates nothing
    const bool isFunction = parameter.getType() == PARAM_TYPE_SCRIPT_FUNCTION;
    if (!accepts(parameter, stackIndex))
        _throwTypeMismatch(stackIndex, isFunction ? NAME_OF_FUNCTION : NAME_OF_OBJECT);
    LuaStateSlot& slot = m_scope.getSlot();
    if (!slot.isOpen())
        return; // the state is closing: its values cannot be anchored any more

    const ScriptObjectReference kept =
        LuaScriptObjectInterpreterReference::make(LuaStateHandle(&slot), parameter.getType());
    lua_pushvalue(m_state, stackIndex);
    LuaScriptObjectInterpreterReference::of(kept).anchor(m_state);
    Access::storeReference(parameter, kept);
}

void LuaCallBridge::_lendView(FunctionParameter& parameter, int stackIndex) const
{
    std::shared_ptr<ScriptObjectInterpreterView>& view = Access::editView(parameter);
    if (view.use_count() != 1)
        view = std::make_shared<LuaScriptObjectInterpreterView>();
    // Only this bridge puts views into parameters, and only of this kind.
    static_cast<LuaScriptObjectInterpreterView&>(*view).lend(
        m_scope, PARAM_TYPE_SCRIPT_OBJECT, stackIndex);
}

void LuaCallBridge::_throwTypeMismatch(
    int stackIndex, const tbMemory::StringView& expectedTypeName) const
{
    lua_Debug activation;
    throw std::string(std::string_view(buildTypeMismatchMessage(
        m_state, activation, lua_type(m_state, stackIndex), expectedTypeName, m_functionName)));
}

int LuaCallBridge::_pushUserType(const FunctionParameter& parameter) const
{
    void* const object = parameter.getUserTypeObject();
    if (!object)
        return 0;
    if (_pushOriginal(parameter, object))
        return 1;
    const bool isOwner = Access::mayCreateOwner(parameter);
    const tbMemory::StringView typeName = parameter.getUserTypeName();
    const bool isTyped = pushInstance(m_scope.getSlot(), m_state, object, isOwner, typeName);
    if (isTyped && isOwner) // an instance without type destroys nothing
        Access::noteOwner(parameter);
    if (!isTyped && !typeName.empty())
        _reportUnknownType(typeName);
    return 1;
}

bool LuaCallBridge::_pushOriginal(const FunctionParameter& parameter, const void* object) const
{
    // Only this bridge puts views into parameters, and only of this kind.
    const auto* const view =
        static_cast<const LuaScriptObjectInterpreterView*>(Access::getView(parameter));
    if (!view || view->isForeignTo(m_scope.getSlot()) || !view->pushValue(m_state))
        return false;
    const LuaInstance instance = boxAt(m_scope.getSlot(), m_state, -1);
    // Also a destroyed instance: its object was destroyed during the call.
    if (instance.box &&
        (instance.box->isDestroyed || (instance.box->gcEnabled && instance.box->object == object)))
        return true;
    lua_pop(m_state, 1);
    return false;
}

void LuaCallBridge::_reportUnknownType(const tbMemory::StringView& typeName) const
{
    if (!m_scope.getSlot().reportType(typeName))
        return;
    const auto report = [&]
    {
        LogManager::getInstance()->log(
            messages::userTypeNotDeclared(typeName), LOG_SOURCE_LUA_FUNCTION);
    };
    contain(report, [] {}); // the value is passed even if there is no memory for the message
}

} // namespace tbScripts::lua

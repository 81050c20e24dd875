// How a Lua back-end sets and reads globals.

#include "bindings/lua/values/LuaInstanceBox.h"
#include "core/lua/LuaNumber.h"
#include "core/lua/LuaText.h"
#include "core/lua/calls/LuaHostCall.h"
#include "core/lua/references/LuaScriptObjectInterpreterReference.h"
#include "environments/lua/LuaEnvironmentStrategy.h"
#include "environments/lua/LuaGlobals.h"

namespace tbScripts::lua
{

namespace
{

// Not functions: `getScriptFunction` returns those.
bool isObjectType(int luaType)
{
    return luaType == LUA_TBOOLEAN || luaType == LUA_TNUMBER || luaType == LUA_TSTRING ||
           luaType == LUA_TTABLE || luaType == LUA_TUSERDATA;
}

bool isFunctionType(int luaType)
{
    return luaType == LUA_TFUNCTION;
}

} // namespace

// Templates first: the operations below instantiate them.

template <typename PushValue>
void LuaEnvironmentStrategy::_setGlobal(const tbMemory::StringView& name, PushValue&& pushValue)
{
    LuaHostCall call(m_handle);
    call.run<STACK_AFTER_WORK::AS_BEFORE>(
        [&](lua_State* state) { setGlobal(*m_handle.getSlot(), state, name, pushValue); });
}

template <typename Read>
void LuaEnvironmentStrategy::_readGlobal(const tbMemory::StringView& name, Read&& read)
{
    LuaHostCall call(m_handle);
    call.run(
        [&](lua_State* state)
        {
            pushGlobal(*m_handle.getSlot(), state, name);
            read(state);
        });
}

template <typename TakeNumber>
void LuaEnvironmentStrategy::_readNumber(const tbMemory::StringView& name, TakeNumber&& takeNumber)
{
    _readGlobal(
        name,
        [&](lua_State* state)
        {
            // Values that are not numbers read as 0, so only a 0 needs a second look.
            const double number = lua_tonumber(state, -1);
            if (number != 0.0 || lua_isnumber(state, -1))
                takeNumber(number);
        });
}

ScriptObjectReference LuaEnvironmentStrategy::_anchorGlobal(
    const tbMemory::StringView& name, FUNCTION_PARAMETER_TYPE type, bool (*accepts)(int luaType))
{
    // Created first: an anchored value without holder would stay in the registry.
    ScriptObjectReference anchored = LuaScriptObjectInterpreterReference::make(m_handle, type);
    bool isAnchored = false;
    _readGlobal(
        name,
        [&](lua_State* state)
        {
            if (!accepts(lua_type(state, -1)))
                return;
            LuaScriptObjectInterpreterReference::of(anchored).anchor(state);
            isAnchored = true;
        });
    if (!isAnchored)
        anchored = ScriptObjectReference();
    return anchored;
}

void LuaEnvironmentStrategy::setVarObjectReference(
    const tbMemory::StringView& name, const ScriptObjectReference& value)
{
    _setGlobal(name, [&](lua_State* state) { pushReferenced(state, value, m_handle); });
}

void LuaEnvironmentStrategy::setVarString(
    const tbMemory::StringView& name, const tbMemory::StringView& value)
{
    _setGlobal(name, [&](lua_State* state) { pushText(state, value); });
}

void LuaEnvironmentStrategy::setVarDouble(const tbMemory::StringView& name, double value)
{
    _setGlobal(name, [value](lua_State* state) { lua_pushnumber(state, value); });
}

void LuaEnvironmentStrategy::setVarFloat(const tbMemory::StringView& name, float value)
{
    setVarDouble(name, static_cast<double>(value));
}

void LuaEnvironmentStrategy::setVarInt(const tbMemory::StringView& name, std::int32_t value)
{
    _setGlobal(name, [value](lua_State* state) { lua_pushinteger(state, value); });
}

void LuaEnvironmentStrategy::setVarBool(const tbMemory::StringView& name, bool value)
{
    _setGlobal(name, [value](lua_State* state) { lua_pushboolean(state, value ? 1 : 0); });
}

void LuaEnvironmentStrategy::setObject(
    const tbMemory::StringView& name, const tbMemory::StringView& userTypeName, void* object)
{
    _setGlobal(
        name,
        [&](lua_State* state)
        { pushHostObject(*m_handle.getSlot(), state, object, userTypeName); });
}

bool LuaEnvironmentStrategy::isVarSet(const tbMemory::StringView& name)
{
    bool isSet = false;
    _readGlobal(name, [&](lua_State* state) { isSet = !lua_isnil(state, -1); });
    return isSet;
}

ScriptObjectReference
LuaEnvironmentStrategy::getVarObjectReference(const tbMemory::StringView& name)
{
    return _anchorGlobal(name, PARAM_TYPE_SCRIPT_OBJECT, &isObjectType);
}

tbMemory::StringView LuaEnvironmentStrategy::getVarString(
    const tbMemory::StringView& name, const tbMemory::StringView& defaultValue)
{
    tbMemory::StringView value = defaultValue;
    _readGlobal(
        name,
        [&](lua_State* state)
        {
            const int type = lua_type(state, -1);
            if (type == LUA_TSTRING)
            {
                value = textAt(state, -1);
            }
            else if (type == LUA_TNUMBER)
            {
                // The conversion creates the string, and nothing in the script refers to it.
                m_textOfNumber = textAt(state, -1);
                value = m_textOfNumber;
            }
        });
    return value;
}

double LuaEnvironmentStrategy::getVarDouble(const tbMemory::StringView& name, double defaultValue)
{
    double value = defaultValue;
    _readNumber(name, [&value](double number) { value = number; });
    return value;
}

float LuaEnvironmentStrategy::getVarFloat(const tbMemory::StringView& name, float defaultValue)
{
    float value = defaultValue;
    _readNumber(name, [&value](double number) { value = narrowToFloat(number); });
    return value;
}

std::int32_t
LuaEnvironmentStrategy::getVarInt(const tbMemory::StringView& name, std::int32_t defaultValue)
{
    std::int32_t value = defaultValue;
    _readNumber(name, [&value](double number) { value = lowBitsToInt(number); });
    return value;
}

bool LuaEnvironmentStrategy::getVarBool(const tbMemory::StringView& name, bool defaultValue)
{
    bool value = defaultValue;
    _readGlobal(
        name,
        [&value](lua_State* state)
        {
            if (lua_isboolean(state, -1))
                value = lua_toboolean(state, -1) != 0;
        });
    return value;
}

void* LuaEnvironmentStrategy::getObject(
    const tbMemory::StringView& name, const tbMemory::StringView& userTypeName)
{
    void* object = nullptr;
    _readGlobal(
        name,
        [&](lua_State* state)
        {
            const LuaStateSlot& slot = *m_handle.getSlot();
            if (userTypeName.isNull())
            {
                object = untypedObjectAt(slot, state, -1);
                return;
            }
            const LuaInstance instance = instanceAt(slot, state, -1);
            if (instance.box && instance.typeName == userTypeName)
                object = instance.box->object;
        });
    return object;
}

ScriptObjectReference LuaEnvironmentStrategy::getScriptFunction(const tbMemory::StringView& name)
{
    return _anchorGlobal(name, PARAM_TYPE_SCRIPT_FUNCTION, &isFunctionType);
}

} // namespace tbScripts::lua

#include "bindings/lua/typed/LuaTypedReading.h"

#include "bindings/lua/typed/LuaTypedCall.h"
#include "core/lua/LuaNumber.h"
#include "core/lua/LuaStackWords.h"
#include "core/lua/LuaText.h"
#include "core/lua/references/LuaScriptObjectInterpreterReference.h"

#include <cmath>
#include <string>

namespace tbScripts::lua::typedReading
{

namespace
{

using typed::KIND;

LuaTypedCall& callOf(Call& call)
{
    return static_cast<LuaTypedCall&>(call);
}

lua_State* stateOf(Call& call)
{
    return callOf(call).state;
}

[[noreturn]] void refuseKind(Call& call, int index, KIND kind, const typed::TypeId* type = nullptr)
{
    LuaTypedCall& running = callOf(call);
    refuseTyped(running, index, nameOfExpected(running.getSlot(), kind, type));
}

// A value that is no number reads as 0.
void expectNumber(Call& call, int index, KIND kind)
{
    if (!lua_isnumber(stateOf(call), index))
        refuseKind(call, index, kind);
}

// Everything but a finite number that is one already.
[[gnu::noinline]] double otherNumberAt(Call& call, int index, KIND kind)
{
    const double number = lua_tonumber(stateOf(call), index);
    if (number == 0.0)
        expectNumber(call, index, kind);
    return number;
}

double numberAt(Call& call, int index, KIND kind)
{
    double number = 0.0;
    return LuaStackWords::readNumber(stateOf(call), index, number)
               ? number
               : otherNumberAt(call, index, kind);
}

void anchor(Call& call, int index, FUNCTION_PARAMETER_TYPE type, ScriptObjectReference& reference)
{
    LuaTypedCall& running = callOf(call);
    LuaStateSlot& slot = running.getSlot();
    reference = ScriptObjectReference();
    if (!slot.isOpen())
        return; // the state is closing: its values cannot be anchored any more
    const ScriptObjectReference kept =
        LuaScriptObjectInterpreterReference::make(LuaStateHandle(&slot), type);
    lua_pushvalue(running.state, index);
    LuaScriptObjectInterpreterReference::of(kept).anchor(running.state);
    reference = kept;
}

// Returns the instance at `index` if the script owns an object of exactly that type.
LuaInstanceBox& expectOwned(Call& call, int index, const typed::TypeId& type)
{
    LuaTypedCall& running = callOf(call);
    const LuaBoundInstance instance = boundInstanceAt(running.getSlot(), running.state, index);
    if (!instance.box || instance.type->type != &type)
        refuseKind(call, index, KIND::OBJECT, &type);
    if (!instance.box->gcEnabled)
        refuseTyped(running, index, "object that the script owns");
    return *instance.box;
}

// The object of an argument can leave the script, and no argument before it is the same.
void checkTaken(Call& call, int index)
{
    LuaTypedCall& running = callOf(call);
    const typed::Parameter* const parameters = running.signature->parameters;
    if (lua_isnoneornil(running.state, index))
        return;
    expectOwned(call, index, *parameters[index].type);
    for (int i = 1; i < index; ++i)
    {
        if (parameters[i].isTaken && lua_rawequal(running.state, i, index))
            refuseTyped(running, index, "object that the script owns");
    }
}

LuaTypeCore* coreOf(const LuaBoundInstance& instance)
{
    // Only cores are registered as types.
    return static_cast<LuaTypeCore*>(const_cast<LuaTypeIdentity*>(instance.type));
}

} // namespace

double toDouble(Call& call, int index)
{
    return numberAt(call, index, KIND::DOUBLE);
}

float toFloat(Call& call, int index)
{
    return narrowToFloat(numberAt(call, index, KIND::FLOAT));
}

int toInt(Call& call, int index)
{
    return truncateToInt(numberAt(call, index, KIND::INT));
}

bool toBool(Call& call, int index)
{
    return lua_toboolean(stateOf(call), index) != 0;
}

typed::Text toText(Call& call, int index)
{
    const LeafPause pause(callOf(call));
    typed::Text text{};
    text.data = lua_tolstring(stateOf(call), index, &text.size);
    if (!text.data)
        refuseKind(call, index, KIND::TEXT);
    return text;
}

void* toObject(Call& call, int index, const typed::TypeId& type)
{
    LuaTypedCall& running = callOf(call);
    void* const object = boundObjectAt(running.getSlot(), running.state, index, type);
    if (!object)
        refuseKind(call, index, KIND::OBJECT, &type);
    return object;
}

void* toObjectOrNull(Call& call, int index, const typed::TypeId& type)
{
    LuaTypedCall& running = callOf(call);
    void* const object = boundObjectAt(running.getSlot(), running.state, index, type);
    if (!object && !lua_isnil(running.state, index))
        refuseKind(call, index, KIND::OBJECT_OR_NIL, &type);
    return object;
}

void toFunction(Call& call, int index, ScriptObjectReference& reference)
{
    if (!lua_isfunction(stateOf(call), index))
        refuseKind(call, index, KIND::FUNCTION);
    anchor(call, index, PARAM_TYPE_SCRIPT_FUNCTION, reference);
}

void toReference(Call& call, int index, ScriptObjectReference& reference)
{
    if (lua_isfunction(stateOf(call), index))
        anchor(call, index, PARAM_TYPE_SCRIPT_FUNCTION, reference);
    else if (lua_istable(stateOf(call), index))
        anchor(call, index, PARAM_TYPE_SCRIPT_OBJECT, reference);
    else
        refuseKind(call, index, KIND::REFERENCE);
}

typed::Natural toInteger(Call& call, int index)
{
    const double number = lua_tonumber(stateOf(call), index);
    return number < 0 ? static_cast<typed::Natural>(static_cast<typed::Integer>(number))
                      : static_cast<typed::Natural>(number);
}

void* takeObject(Call& call, int index, const typed::TypeId& type)
{
    LuaTypedCall& running = callOf(call);
    if (lua_isnil(running.state, index))
        return nullptr;
    LuaInstanceBox& box = expectOwned(call, index, type);
    box.gcEnabled = false;
    box.isDestroyed = true; // for scripts: it is the host's from here on
    return box.object;
}

void* toHolder(Call& call, int index, const typed::TypeId& type, const typed::TypeId& holderType)
{
    LuaTypedCall& running = callOf(call);
    if (lua_isnil(running.state, index))
        return nullptr;
    const LuaBoundInstance instance = boundInstanceAt(running.getSlot(), running.state, index);
    if (!instance.box || !boundObjectAt(running.getSlot(), running.state, index, type))
        refuseKind(call, index, KIND::OBJECT, &type);
    const LuaHolder* const share = coreOf(instance)->findHolder(*instance.box);
    if (!share || share->type != &holderType)
        refuseTyped(running, index, "object that is shared");
    return share->holder;
}

void check(Call& call)
{
    LuaTypedCall& running = callOf(call);
    const typed::Signature& signature = *call.signature;
    for (int i = 1; i <= signature.count; ++i)
    {
        if (!acceptsTyped(running, signature.parameters[i], i))
            refuseTyped(running, i, "");
        if (signature.parameters[i].isTaken)
            checkTaken(call, i);
    }
}

void refuse(Call& call, int index, const char* expected)
{
    refuseTyped(callOf(call), index, expected);
}

int countArguments(Call& call)
{
    const LuaTypedCall& running = callOf(call);
    // Otherwise asked before anything is pushed.
    return running.constructed ? running.constructorArguments : lua_gettop(running.state);
}

void reserve(Call& call, int count)
{
    LuaTypedCall& running = callOf(call);
    if (count > running.roomLeft)
        makeRoom(running.state, count);
    else
        running.roomLeft -= count;
}

bool isNone(Call& call, int index)
{
    return lua_isnoneornil(stateOf(call), index);
}

bool isOfKind(Call& call, int index, KIND kind, const typed::TypeId* type)
{
    LuaTypedCall& running = callOf(call);
    const int actual = lua_type(running.state, index);
    switch (kind)
    {
    case KIND::NOTHING:
        return actual == LUA_TNIL;
    case KIND::BOOL:
        return actual == LUA_TBOOLEAN;
    case KIND::INT:
    case KIND::FLOAT:
    case KIND::DOUBLE:
        return actual == LUA_TNUMBER;
    case KIND::TEXT:
        return actual == LUA_TSTRING;
    case KIND::OTHER: // a table
        return actual == LUA_TTABLE;
    case KIND::OBJECT:
    case KIND::OBJECT_OR_NIL:
    case KIND::FUNCTION:
    case KIND::REFERENCE:
    case KIND::REST:
        break;
    }
    return acceptsTyped(running, {kind, false, type}, index);
}

bool accepts(Call& call, int index, const typed::Parameter& parameter)
{
    return acceptsTyped(callOf(call), parameter, index);
}

bool isInteger(Call& call, int index, double lowest, double beyond, bool isStrict)
{
    lua_State* const state = stateOf(call);
    if (isStrict ? lua_type(state, index) != LUA_TNUMBER : !lua_isnumber(state, index))
        return false;
    const double number = std::trunc(lua_tonumber(state, index));
    return number >= lowest && number < beyond;
}

bool isEnumValue(Call& call, int index, const typed::TypeId& type)
{
    LuaTypedCall& running = callOf(call);
    return running.getSlot().isEnumValue(type, lua_tonumber(running.state, index));
}

int getLength(Call& call, int table)
{
    return static_cast<int>(lua_objlen(stateOf(call), table));
}

int pushElement(Call& call, int table, int number)
{
    lua_State* const state = stateOf(call);
    makeRoom(state, 4);
    lua_rawgeti(state, table, number);
    return lua_gettop(state);
}

int beginFields(Call& call)
{
    lua_State* const state = stateOf(call);
    makeRoom(state, 6);
    lua_pushnil(state);
    return lua_gettop(state);
}

bool pushNext(Call& call, int table, int key)
{
    lua_State* const state = stateOf(call);
    if (!lua_next(state, table))
        return false;
    lua_pushvalue(state, key); // what is read may be converted, which would confuse the walk
    lua_insert(state, key + 1);
    return true;
}

void drop(Call& call, int count)
{
    lua_pop(stateOf(call), count);
}

} // namespace tbScripts::lua::typedReading

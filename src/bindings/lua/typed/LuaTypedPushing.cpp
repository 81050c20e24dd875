#include "bindings/lua/typed/LuaTypedPushing.h"

#include "bindings/BindingMessages.h"
#include "bindings/lua/typed/LuaTypedCall.h"
#include "core/lua/LuaStackWords.h"
#include "core/lua/references/LuaScriptObjectInterpreterReference.h"

#include <cstring>
#include <string>
#include <string_view>

namespace tbScripts::lua::typedPushing
{

namespace
{

// Numbers of scripts are exact up to here.
constexpr typed::Natural HIGHEST_EXACT = 1ULL << 53U;

LuaTypedCall& callOf(Call& call)
{
    return static_cast<LuaTypedCall&>(call);
}

lua_State* stateOf(Call& call)
{
    return callOf(call).state;
}

[[noreturn]] void fail(const tbMemory::String& message)
{
    throw std::string(std::string_view(message));
}

const LuaTypeCore& coreOf(const LuaTypedCall& call, const typed::TypeId& type)
{
    const LuaTypeIdentity* const bound = call.getSlot().findBoundType(type);
    if (!bound)
        fail(messages::resultNotDeclared(call.getName()));
    return *static_cast<const LuaTypeCore*>(bound); // only cores are registered as types
}

LuaInstanceBox* pushBox(lua_State* state)
{
    void* const block = lua_newuserdata(state, INSTANCE_BOX_SIZE);
    std::memset(block, 0, INSTANCE_BOX_SIZE);
    return static_cast<LuaInstanceBox*>(block);
}

// Ties the value on top of the stack to the one at `index`, which lives as long. Stack: +0.
void tieTo(lua_State* state, int index)
{
    lua_createtable(state, 1, 0);
    lua_pushvalue(state, index);
    lua_rawseti(state, -2, 1);
    lua_setfenv(state, -2);
}

// Stack: +2, the table of `core` and a box without object. In this order: the table keeps the
// type's parts, whatever a finaliser that runs for the block does to the type.
LuaInstanceBox* pushTableAndBox(lua_State* state, const LuaTypeCore& core)
{
    core.pushTable(state);
    return pushBox(state);
}

// Makes the box on top of the stack an instance, of the table below it. Stack: -1.
void finishBox(lua_State* state)
{
    lua_pushvalue(state, -2);
    lua_setmetatable(state, -2);
    lua_remove(state, -2);
}

LuaInstanceBox& boxOnTop(lua_State* state)
{
    return *static_cast<LuaInstanceBox*>(lua_touserdata(state, -1));
}

// Gives up a share that no instance has got.
struct UnheldShare
{
    ~UnheldShare()
    {
        if (share)
            share->release(share->holder);
    }

    const LuaHolder* share;
};

} // namespace

void pushNil(Call& call)
{
    lua_pushnil(stateOf(call));
}

void pushBool(Call& call, bool value)
{
    lua_pushboolean(stateOf(call), value ? 1 : 0);
}

void pushDouble(Call& call, double value)
{
    if (!LuaStackWords::pushNumber(stateOf(call), value))
        lua_pushnumber(stateOf(call), value);
}

void pushInteger(Call& call, typed::Integer value)
{
    const auto magnitude = static_cast<typed::Natural>(value < 0 ? -(value + 1) : value);
    if (magnitude > HIGHEST_EXACT)
        fail(messages::resultTooLarge(callOf(call).getName()));
    lua_pushnumber(stateOf(call), static_cast<double>(value));
}

void pushNatural(Call& call, typed::Natural value)
{
    if (value > HIGHEST_EXACT)
        fail(messages::resultTooLarge(callOf(call).getName()));
    lua_pushnumber(stateOf(call), static_cast<double>(value));
}

void pushText(Call& call, typed::Text text)
{
    const LeafPause pause(callOf(call));
    if (text.data)
        lua_pushlstring(stateOf(call), text.data, text.size);
    else
        lua_pushnil(stateOf(call));
}

void pushReference(Call& call, const ScriptObjectReference& reference)
{
    LuaTypedCall& running = callOf(call);
    pushReferenced(running.state, reference, LuaStateHandle(&running.getSlot()));
}

void pushObject(Call& call, void* object, const typed::TypeId& type)
{
    LuaTypedCall& running = callOf(call);
    if (!object)
    {
        lua_pushnil(running.state);
        return;
    }
    pushTableAndBox(running.state, coreOf(running, type))->object = object;
    finishBox(running.state);
}

void pushPart(Call& call, void* object, const typed::TypeId& type, int index)
{
    LuaTypedCall& running = callOf(call);
    const LuaBoundInstance whole = boundInstanceAt(running.getSlot(), running.state, index);
    if (object && whole.box && whole.box->object == object && whole.type->type == &type)
    {
        lua_pushvalue(running.state, index); // a method that returns its own instance
        return;
    }
    pushObject(call, object, type);
    if (object && whole.box)
        tieTo(running.state, index);
}

void beginOwned(Call& call, const typed::TypeId& type)
{
    LuaTypedCall& running = callOf(call);
    if (running.constructed && running.constructed->type == &type)
    {
        lua_pushvalue(running.state, running.constructedTable);
        pushBox(running.state);
        return;
    }
    pushTableAndBox(running.state, coreOf(running, type));
}

void endOwned(Call& call, void* object)
{
    lua_State* const state = stateOf(call);
    boxOnTop(state) = LuaInstanceBox{object, true, false, {}};
    finishBox(state);
}

void endShared(
    Call& call,
    void* object,
    void* holder,
    const typed::TypeId& holderType,
    void (*release)(void* holder))
{
    LuaTypedCall& running = callOf(call);
    const LuaHolder share{holder, &holderType, object, release};
    UnheldShare unlessHeld{&share};
    const LuaTypeIdentity* const type =
        running.getSlot().findIdentity(lua_topointer(running.state, -2));
    if (!type)
        fail(messages::resultNotDeclared(running.getName()));
    LuaInstanceBox& box = boxOnTop(running.state);
    box.object = object;
    // Only cores are registered as types.
    const_cast<LuaTypeCore&>(static_cast<const LuaTypeCore&>(*type)).addHolder(box, share);
    unlessHeld.share = nullptr;
    finishBox(running.state);
}

int pushTable(Call& call, int elements, int fields)
{
    lua_State* const state = stateOf(call);
    makeRoom(state, 6);
    lua_createtable(state, elements, fields);
    return lua_gettop(state);
}

void setElement(Call& call, int table, int number)
{
    lua_rawseti(stateOf(call), table, number);
}

void setField(Call& call, int table)
{
    lua_rawset(stateOf(call), table);
}

} // namespace tbScripts::lua::typedPushing

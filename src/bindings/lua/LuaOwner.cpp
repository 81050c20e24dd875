#include "bindings/lua/LuaOwner.h"

#include "core/lua/LuaText.h"

namespace tbScripts::lua
{

LuaOwner LuaOwner::globals()
{
    return LuaOwner(true, tbMemory::StringView());
}

LuaOwner LuaOwner::table(const tbMemory::StringView& fullName)
{
    return LuaOwner(false, fullName);
}

LuaOwner::LuaOwner(bool isGlobals, const tbMemory::StringView& fullName)
    : m_isGlobals(isGlobals)
    , m_fullName(fullName)
{
}

void LuaOwner::publish(
    const LuaStateSlot& slot, lua_State* state, const tbMemory::StringView& name) const
{
    if (m_isGlobals)
        slot.pushGlobals(state);
    else
        pushNamedTable(state, m_fullName);
    lua_insert(state, -2);
    pushName(state, name);
    lua_insert(state, -2);
    lua_settable(state, -3);
    lua_pop(state, 1);
}

void LuaOwner::unpublish(
    const LuaStateSlot& slot, lua_State* state, const tbMemory::StringView& name) const
{
    lua_pushnil(state);
    publish(slot, state, name);
}

void pushNamedTable(lua_State* state, const tbMemory::StringView& fullName)
{
    pushName(state, fullName);
    lua_rawget(state, LUA_REGISTRYINDEX);
}

} // namespace tbScripts::lua

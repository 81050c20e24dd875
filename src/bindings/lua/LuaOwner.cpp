#include "bindings/lua/LuaOwner.h"

#include "core/lua/LuaText.h"

#include <utility>

namespace tbScripts::lua
{

LuaOwner LuaOwner::globals()
{
    return LuaOwner(Counted<SharedName>());
}

LuaOwner LuaOwner::table(const tbMemory::StringView& fullName)
{
    return LuaOwner(makeCounted<SharedName>(fullName));
}

LuaOwner::LuaOwner(Counted<SharedName> fullName)
    : m_fullName(std::move(fullName))
{
}

void LuaOwner::becomeTable(const tbMemory::StringView& fullName)
{
    if (!m_fullName || m_fullName->text != fullName)
        m_fullName = makeCounted<SharedName>(fullName);
}

void LuaOwner::publish(
    const LuaStateSlot& slot, lua_State* state, const tbMemory::StringView& name) const
{
    _pushTable(slot, state);
    lua_insert(state, -2);
    pushName(state, name);
    lua_insert(state, -2);
    lua_settable(state, -3);
    lua_pop(state, 1);
}

void LuaOwner::pushPublished(
    const LuaStateSlot& slot, lua_State* state, const tbMemory::StringView& name) const
{
    _pushTable(slot, state);
    if (lua_istable(state, -1))
    {
        pushName(state, name);
        lua_rawget(state, -2);
    }
    else
        lua_pushnil(state);
    lua_remove(state, -2);
}

void LuaOwner::_pushTable(const LuaStateSlot& slot, lua_State* state) const
{
    if (m_fullName)
        pushNamedTable(state, m_fullName->text);
    else
        slot.pushGlobals(state);
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

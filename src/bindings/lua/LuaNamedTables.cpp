#include "bindings/lua/LuaNamedTables.h"

#include "bindings/lua/LuaOwner.h"
#include "core/lua/LuaText.h"

namespace tbScripts::lua
{

// The set of our tables holds the full name for those of user types, `false` for others.
NAMED_TABLE kindOfTable(const LuaStateSlot& slot, lua_State* state)
{
    slot.pushTypeTables(state);
    lua_pushvalue(state, -2);
    lua_rawget(state, -2);
    const int noted = lua_type(state, -1);
    lua_pop(state, 2);
    if (noted == LUA_TSTRING)
        return NAMED_TABLE::OF_USER_TYPE;
    return noted == LUA_TBOOLEAN ? NAMED_TABLE::OF_NAMESPACE : NAMED_TABLE::FOREIGN;
}

NAMED_TABLE
makeNamedTable(const LuaStateSlot& slot, lua_State* state, const tbMemory::StringView& fullName)
{
    pushNamedTable(state, fullName);
    if (lua_isnil(state, -1))
    {
        lua_pop(state, 1);
        lua_createtable(state, 0, 0);
        pushName(state, fullName);
        lua_pushvalue(state, -2);
        lua_rawset(state, LUA_REGISTRYINDEX);
        return NAMED_TABLE::NONE;
    }
    const NAMED_TABLE kind =
        lua_istable(state, -1) ? kindOfTable(slot, state) : NAMED_TABLE::FOREIGN;
    if (kind == NAMED_TABLE::FOREIGN)
    {
        lua_pop(state, 1);
        lua_pushnil(state);
    }
    return kind;
}

void registerNamespaceTable(const LuaStateSlot& slot, lua_State* state)
{
    if (kindOfTable(slot, state) != NAMED_TABLE::FOREIGN)
        return;
    slot.pushTypeTables(state);
    lua_pushvalue(state, -2);
    lua_pushboolean(state, 0);
    lua_rawset(state, -3);
    lua_pop(state, 1);
}

void removeNamedTable(lua_State* state, const tbMemory::StringView& fullName)
{
    pushName(state, fullName);
    lua_pushnil(state);
    lua_rawset(state, LUA_REGISTRYINDEX);
}

} // namespace tbScripts::lua

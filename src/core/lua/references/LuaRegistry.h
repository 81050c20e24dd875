#pragma once

#include "core/lua/LuaApi.h"
#include "core/lua/LuaStateHandle.h"

#include <string>

namespace tbScripts::lua
{

/// Moves the value on top of the stack into a registry slot and returns the slot's key (decision
/// 0016).
///
/// May raise: the registry may have to grow.
inline int takeRegistrySlot(LuaStateSlot& slot, lua_State* state)
{
    LuaSpareKeys& spare = slot.m_spareKeys;
    // A slot with nil would look free to `luaL_ref`, which has a special key for nil.
    if (spare.count == 0 || lua_isnil(state, -1))
        return luaL_ref(state, LUA_REGISTRYINDEX);
    const int key = spare.keys[spare.count - 1];
    lua_rawseti(state, LUA_REGISTRYINDEX, key);
    --spare.count;
    return key;
}

/// Frees registry slot `key`. Ignores 0, `LUA_NOREF` and `LUA_REFNIL`, which are no slots.
///
/// May raise: the stack may be full.
inline void giveRegistrySlotBack(LuaStateSlot& slot, lua_State* state, int key)
{
    if (key <= 0)
        return;
    LuaSpareKeys& spare = slot.m_spareKeys;
    ++spare.freed;
    if (spare.count == spare.keys.size())
    {
        luaL_unref(state, LUA_REGISTRYINDEX, key);
        return;
    }
    lua_pushinteger(state, LuaSpareKeys::PLACEHOLDER);
    lua_rawseti(state, LUA_REGISTRYINDEX, key);
    spare.keys[spare.count++] = key;
}

/// Frees registry slot `key`, unless the state is closed. Ignores keys of no slot. Returns false if
/// the interpreter raised an error, which `errorText` describes.
bool freeRegistrySlot(LuaStateSlot& slot, int key, std::string& errorText);

/// The same; after an error the slot is lost.
void freeRegistrySlot(LuaStateSlot& slot, int key);

} // namespace tbScripts::lua

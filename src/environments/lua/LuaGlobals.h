#pragma once

#include "core/lua/LuaApi.h"
#include "core/lua/LuaStateHandle.h"
#include "core/lua/LuaText.h"

#include <tbMemory/StringView.h>

namespace tbScripts::lua
{

/// Stack: +1, global `name`. May raise anything, because metamethods of the global table run.
inline void pushGlobal(const LuaStateSlot& slot, lua_State* state, const tbMemory::StringView& name)
{
    if (slot.isMainThread(state))
    {
        pushName(state, name);
        lua_gettable(state, LUA_GLOBALSINDEX);
        return;
    }
    // A coroutine may have a global table of its own; the host's globals are the main thread's.
    slot.pushGlobals(state);
    pushName(state, name);
    lua_gettable(state, -2);
    lua_remove(state, -2);
}

/// Sets global `name` to the value that `pushValue(state)` pushes. May raise, for the same reason.
/// Stack: +0.
template <typename PushValue>
void setGlobal(
    const LuaStateSlot& slot,
    lua_State* state,
    const tbMemory::StringView& name,
    PushValue&& pushValue)
{
    if (slot.isMainThread(state))
    {
        pushName(state, name);
        pushValue(state);
        lua_settable(state, LUA_GLOBALSINDEX);
        return;
    }
    slot.pushGlobals(state);
    pushName(state, name);
    pushValue(state);
    lua_settable(state, -3);
    lua_pop(state, 1);
}

/// Anchors, if scripts loaded the foreign function library, its tables that the interpreter uses
/// without keeping them alive. LuaJIT 2.1.0-beta3 reads one of them when the state closes, long
/// after the library itself was collected (ForeignLibraryTest). Stack: +0.
void keepForeignTables(lua_State* state);

/// Sets every global to nil, and empties the tables of loaded modules, because a module keeps alive
/// what it refers to. Metamethods do not run. Stack: +0.
void clearAllGlobals(const LuaStateSlot& slot, lua_State* state);

} // namespace tbScripts::lua

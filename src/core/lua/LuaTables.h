#pragma once

#include "core/lua/LuaApi.h"

namespace tbScripts::lua
{

class LuaHostCall;

/// Sets every field of the table on top of the stack to nil, without metamethods, but leaves those
/// for which `isKept(state)` says so with the key below the value on top. Allocates nothing and
/// never raises, if `isKept` does not. Stack: +0.
template <typename IsKept>
void clearTableExcept(lua_State* state, IsKept&& isKept)
{
    lua_pushnil(state);
    while (lua_next(state, -2))
    {
        const bool stays = isKept(state);
        lua_pop(state, 1);
        if (stays)
            continue;
        lua_pushvalue(state, -1);
        lua_pushnil(state);
        lua_rawset(state, -4);
    }
}

/// Sets every field of the table on top of the stack to nil, without metamethods. Never raises.
/// Stack: +0.
void clearTable(lua_State* state);

/// Runs two full collections. A finaliser that raises is logged; the collection that it interrupts
/// continues in steps, because a new full collection for each finaliser would take quadratic time.
void collectGarbageTwice(LuaHostCall& call);

/// Collects once, while the host is about to be told that the interpreter ran out of memory. If the
/// collection runs out of memory too, that is not logged again.
void collectAfterLackOfMemory(LuaHostCall& call);

} // namespace tbScripts::lua

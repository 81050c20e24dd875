#pragma once

#include "core/lua/LuaApi.h"

namespace tbScripts::lua
{

class LuaHostCall;

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

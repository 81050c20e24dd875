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

} // namespace tbScripts::lua

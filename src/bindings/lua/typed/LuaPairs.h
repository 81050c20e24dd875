#pragma once

#include "core/lua/LuaApi.h"
#include "core/lua/LuaStateSlot.h"

namespace tbScripts::lua
{

/// Makes the global `pairs` walk over instances whose type has an iteration, unless it does so
/// already or a script has replaced it. For all other values it stays what it was.
void teachPairs(LuaStateSlot& slot, lua_State* state);

} // namespace tbScripts::lua

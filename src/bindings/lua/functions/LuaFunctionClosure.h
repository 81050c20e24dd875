#pragma once

#include "core/lua/LuaApi.h"

namespace tbScripts::lua
{

/// The script's side of every host function. Its upvalue is the function's anchor.
int callHostFunction(lua_State* state);

} // namespace tbScripts::lua

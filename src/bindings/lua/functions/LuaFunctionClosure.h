#pragma once

#include "core/lua/LuaApi.h"

namespace tbScripts::lua
{

/// The closure that scripts call for every host function. Its first upvalue is the function's
/// anchor.
///
/// Why an anchor: docs/decisions/0005-anchors-for-closures.md
int callHostFunction(lua_State* state);

} // namespace tbScripts::lua

#pragma once

#include "core/lua/LuaApi.h"

#include <string>

namespace tbScripts::lua
{

/// Returns the message of the error value at `index`. A value that is neither string nor number is
/// described by its kind: "(error object is a table value)". Allocates nothing in the interpreter,
/// so it never raises.
std::string errorTextAt(lua_State* state, int index);

} // namespace tbScripts::lua

#pragma once

// Guards of the interpreter's own functions against the end of the C stack.
//
// Script functions that call each other take room on the interpreter's stack, which has a limit.
// Some functions of its libraries call back from C: `string.gsub`, `table.sort`, `load`, and
// others. A script that recurses through one of them takes C stack as well, and the interpreter
// does not look where it ends. A guard looks there first and raises "C stack overflow" if too
// little is left.
//
// A guard is not a function of its own. It takes the place of the C function inside the function
// object of the interpreter, and calls it in the same frame. So scripts see the same object, error
// messages name the same function and argument, and the compiler, which recognises functions by the
// object, compiles those that it knows as before.
//
// Why: docs/decisions/0028-guards-of-the-c-stack.md

#include "core/lua/LuaApi.h"

namespace tbScripts::lua
{

class LuaStateSlot;

/// Guards the functions of all open libraries that call back, in the state of `slot`. A function
/// that the interpreter does not have, or keeps in another way than is known, stays as it is.
/// Stack: +0.
///
/// Requires: scripts have not run yet; `slot` outlives the state.
void guardLibraries(LuaStateSlot& slot, lua_State* state);

} // namespace tbScripts::lua

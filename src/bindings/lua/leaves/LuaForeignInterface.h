#pragma once

// The interpreter's foreign function interface, for the library alone.
//
// Why: docs/decisions/0034-compiled-leaves.md

#include "core/lua/LuaApi.h"

namespace tbScripts::lua
{

/// Functions of the interpreter that its compiler knows.
enum class LUA_OWN_FUNCTION
{
    FFI_CAST,
    FFI_TYPEOF,
    FFI_STRING,
    GETMETATABLE, // that of `debug`, for which the field "__metatable" means nothing
    JIT_ATTACH,
    SELECT
};

/// Loads the interface, unless a script has done so, and pushes its table. Scripts get no hold of
/// it, and `require 'ffi'` does for them what it did before. Returns false, and pushes nothing, if
/// the interpreter has none, or if nobody can tell any more which table is the interpreter's own.
///
/// May raise: there may be no memory.
bool pushForeignInterface(lua_State* state);

/// Pushes a function of the interpreter, if it still is where it was at first and no script has put
/// another in its place. `interfaceIndex` is where the table of the foreign function interface is.
/// Returns false, and pushes nothing, if not.
bool pushOwnFunction(lua_State* state, int interfaceIndex, LUA_OWN_FUNCTION function);

/// Pushes a new function object that is the interpreter's `table.clear`, which scripts have another
/// one of. Returns false, and pushes nothing, if there is none. Requires: `pushForeignInterface`
/// has returned true.
bool pushNewClear(lua_State* state);

} // namespace tbScripts::lua

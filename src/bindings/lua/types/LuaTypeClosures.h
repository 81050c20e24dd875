#pragma once

#include "core/lua/LuaApi.h"

namespace tbScripts::lua
{

// The script's side of a user type. The first upvalue of each closure is the type's anchor, but for
// those of fields.

/// Reads a field: (instance). Upvalues: a `LuaFieldLink`, the anchor.
int readField(lua_State* state);

/// Writes a field: (instance, value). Upvalues: the same.
int writeField(lua_State* state);

/// Reads and writes an element: (instance, index), (instance, index, value). Requires: the index is
/// a number; texts that read as one come by way of the two below.
int readElement(lua_State* state);
int writeElement(lua_State* state);

/// Reads what is no field: (value, key). Upvalues: anchor, the type's table, its readers.
///
/// Raw entries that it finds are noted among the readers, so that they are found there next time.
int readOther(lua_State* state);

/// Writes what is no field: (value, key, new value).
int writeOther(lua_State* state);

/// Makes an instance. Second upvalue: the type's table.
int makeInstance(lua_State* state);

/// Destroys the object of the instance on top of the stack, if the script owns it.
int finaliseInstance(lua_State* state);

/// Says whether the script owns the instance on top of the stack.
int enableGc(lua_State* state);
int disableGc(lua_State* state);

} // namespace tbScripts::lua

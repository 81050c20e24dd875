#pragma once

#include "core/lua/LuaApi.h"

namespace tbScripts::lua
{

// The closures of a user type that scripts call. The first upvalue of each is the type's anchor,
// except for those of fields.
//
// Why: docs/decisions/0008-dispatch-by-script-closures.md, 0009-type-cores-outlive-types.md

/// Reads a field: (instance). Upvalues: a `LuaFieldLink`, the anchor.
int readField(lua_State* state);

/// Writes a field: (instance, value). Upvalues: the same.
int writeField(lua_State* state);

/// Reads and writes an element: (instance, index), (instance, index, value). Requires: the index is
/// a number; strings that read as a number go through `readOther` and `writeOther`.
int readElement(lua_State* state);
int writeElement(lua_State* state);

/// Reads a key that is no field: (value, key). Upvalues: anchor, the type's table, its readers.
///
/// Adds raw entries that it finds to the readers, so that the next read finds them there.
int readOther(lua_State* state);

/// Writes a key that is no field: (value, key, new value).
int writeOther(lua_State* state);

/// Creates an instance. Second upvalue: the type's table.
int makeInstance(lua_State* state);

/// Destroys the object of the instance on top of the stack, if the script owns it.
int finaliseInstance(lua_State* state);

/// Set and clear the ownership flag of the instance on top of the stack.
int enableGc(lua_State* state);
int disableGc(lua_State* state);

} // namespace tbScripts::lua

#pragma once

#include "core/lua/LuaApi.h"
#include "core/lua/LuaStateHandle.h"

#include <tbMemory/StringView.h>

namespace tbScripts::lua
{

/// What the registry holds under the name of a user type or namespace.
enum class NAMED_TABLE
{
    NONE,
    OF_NAMESPACE,
    OF_USER_TYPE,
    FOREIGN // a value of the interpreter or its libraries
};

/// Stack: +1, the table that user types and namespaces of that full name share, created if there is
/// none; nil if the registry holds a foreign value there.
///
/// Why they share it: docs/decisions/0018-two-types-of-one-name.md
NAMED_TABLE
makeNamedTable(const LuaStateSlot& slot, lua_State* state, const tbMemory::StringView& fullName);

/// Returns what the table on top of the stack is to us, never NONE. Never raises. Stack: +0.
NAMED_TABLE kindOfTable(const LuaStateSlot& slot, lua_State* state);

/// Registers the table on top of the stack as one of a namespace, unless it belongs to a user type.
/// Stack: +0.
void registerNamespaceTable(const LuaStateSlot& slot, lua_State* state);

/// Removes the table of that full name from the registry.
void removeNamedTable(lua_State* state, const tbMemory::StringView& fullName);

} // namespace tbScripts::lua

#pragma once

#include "core/lua/LuaApi.h"
#include "core/lua/LuaStateHandle.h"

#include <tbMemory/StringView.h>

namespace tbScripts::lua
{

/// What the registry held under the name of a user type or namespace.
enum class NAMED_TABLE
{
    NONE,
    OF_NAMESPACE,
    OF_USER_TYPE,
    FOREIGN // something of the interpreter or its libraries
};

/// Stack: +1, the table that user types and namespaces of that full name share, made if there is
/// none; nil if the registry holds something foreign there.
NAMED_TABLE
makeNamedTable(const LuaStateSlot& slot, lua_State* state, const tbMemory::StringView& fullName);

/// Notes the table on top of the stack as one of a namespace, unless it is one of a user type.
/// Stack: +0.
void registerNamespaceTable(const LuaStateSlot& slot, lua_State* state);

/// Takes the table of that full name out of the registry.
void removeNamedTable(lua_State* state, const tbMemory::StringView& fullName);

} // namespace tbScripts::lua

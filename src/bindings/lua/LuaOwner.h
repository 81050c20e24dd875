#pragma once

#include "core/lua/LuaApi.h"
#include "core/lua/LuaStateHandle.h"

#include <tbMemory/String.h>
#include <tbMemory/StringView.h>

namespace tbScripts::lua
{

/// The table in which scripts find a binding under its name: the globals, or the table that the
/// registry holds under the full name of a namespace or user type.
class LuaOwner
{
public:
    static LuaOwner globals();

    static LuaOwner table(const tbMemory::StringView& fullName);

    /// Sets field `name` to the value on top of the stack, and pops the value. Raises if there is
    /// no such table, and may raise anything, because metamethods of the table run.
    void
    publish(const LuaStateSlot& slot, lua_State* state, const tbMemory::StringView& name) const;

    /// Sets field `name` to nil, whatever it holds. May raise, for the same reasons.
    void
    unpublish(const LuaStateSlot& slot, lua_State* state, const tbMemory::StringView& name) const;

private:
    LuaOwner(bool isGlobals, const tbMemory::StringView& fullName);

    bool m_isGlobals;
    tbMemory::String m_fullName;
};

/// Stack: +1, the value that the registry holds under `fullName`; normally a table.
void pushNamedTable(lua_State* state, const tbMemory::StringView& fullName);

} // namespace tbScripts::lua

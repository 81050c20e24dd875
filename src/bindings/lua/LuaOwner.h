#pragma once

#include "core/lua/LuaApi.h"
#include "core/lua/LuaStateHandle.h"

#include <tbMemory/String.h>
#include <tbMemory/StringView.h>

namespace tbScripts::lua
{

/// Where scripts find a binding under its name: among the globals, or in a table that the registry
/// holds under the full name of a namespace or user type.
class LuaOwner
{
public:
    static LuaOwner globals();

    static LuaOwner table(const tbMemory::StringView& fullName);

    /// Sets field `name` to the value on top of the stack, which it pops. Metamethods of the table
    /// run, so this may raise anything; also if there is no such table.
    void
    publish(const LuaStateSlot& slot, lua_State* state, const tbMemory::StringView& name) const;

    /// Sets field `name` to nil, whatever it holds. May raise, as above.
    void
    unpublish(const LuaStateSlot& slot, lua_State* state, const tbMemory::StringView& name) const;

private:
    LuaOwner(bool isGlobals, const tbMemory::StringView& fullName);

    bool m_isGlobals;
    tbMemory::String m_fullName;
};

/// Stack: +1, the table that the registry holds under `fullName`, or whatever it holds there.
void pushNamedTable(lua_State* state, const tbMemory::StringView& fullName);

} // namespace tbScripts::lua

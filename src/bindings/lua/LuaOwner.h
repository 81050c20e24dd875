#pragma once

#include "core/SharedName.h"
#include "core/lua/LuaApi.h"
#include "core/lua/LuaStateHandle.h"

#include <tbMemory/StringView.h>

namespace tbScripts::lua
{

/// The table in which scripts find a binding under its name: the globals, or the table that the
/// registry holds under the full name of a namespace or user type. Copies share the name.
class LuaOwner
{
public:
    static LuaOwner globals();

    static LuaOwner table(const tbMemory::StringView& fullName);

    /// Makes this the table of that name, unless it is that already.
    void becomeTable(const tbMemory::StringView& fullName);

    /// Sets field `name` to the value on top of the stack, and pops the value. Raises if there is
    /// no such table, and may raise anything, because metamethods of the table run.
    void
    publish(const LuaStateSlot& slot, lua_State* state, const tbMemory::StringView& name) const;

    /// Stack: +1, what the table itself has in field `name`; nil if there is no such table.
    void pushPublished(
        const LuaStateSlot& slot, lua_State* state, const tbMemory::StringView& name) const;

    /// Sets field `name` to nil, whatever it holds. May raise, for the same reasons.
    void
    unpublish(const LuaStateSlot& slot, lua_State* state, const tbMemory::StringView& name) const;

private:
    explicit LuaOwner(Counted<SharedName> fullName);

    // Stack: +1, the table, or whatever is in its place.
    void _pushTable(const LuaStateSlot& slot, lua_State* state) const;

    Counted<SharedName> m_fullName; // empty for the globals
};

/// Stack: +1, the value that the registry holds under `fullName`; normally a table.
void pushNamedTable(lua_State* state, const tbMemory::StringView& fullName);

} // namespace tbScripts::lua

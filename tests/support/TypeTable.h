#pragma once

#include "core/lua/LuaApi.h"
#include "core/lua/LuaStateHandle.h"

#include <memory>
#include <string>

namespace tbScripts::test
{

/// Publishes a metatable for boxes of the user type `fullName`, unless there is one, as declaring
/// the type does. Stack: +0.
inline void publishTypeTable(lua::LuaStateSlot& slot, lua_State* state, const std::string& fullName)
{
    struct Kept : lua::LuaKeptObject
    {
        Kept(const void* table, const std::string& name)
            : identity(table, tbMemory::String(name))
        {
        }

        lua::LuaTypeIdentity identity;
    };

    luaL_newmetatable(state, fullName.c_str());
    const void* const table = lua_topointer(state, -1);
    lua_pop(state, 1);
    if (slot.findType(table))
        return;
    auto kept = std::make_shared<Kept>(table, fullName);
    slot.addType(kept->identity);
    slot.keepUntilClosed(std::move(kept));
}

} // namespace tbScripts::test

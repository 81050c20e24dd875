#pragma once

#include "bindings/lua/values/LuaInstanceBox.h"
#include "core/lua/LuaApi.h"
#include "core/lua/LuaStateHandle.h"

#include <string>

namespace tbScripts::test
{

/// Publishes a metatable for boxes of the user type `fullName`, unless there is one, as declaring
/// the type does. Stack: +0.
inline void publishTypeTable(lua::LuaStateSlot& slot, lua_State* state, const std::string& fullName)
{
    luaL_newmetatable(state, fullName.c_str());
    lua::registerTypeTable(slot, state, fullName);
    lua::replaceEarlierType(slot, state, fullName);
    lua_pop(state, 1);
}

} // namespace tbScripts::test

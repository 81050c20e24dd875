#pragma once

#include "core/lua/LuaApi.h"

namespace tbScripts::lua
{

/// A state for one piece of work, without libraries. A plain pointer owns it, because no other
/// object ever refers to it.
class LuaPrivateState
{
public:
    LuaPrivateState()
        : m_state(luaL_newstate())
    {
    }

    LuaPrivateState(const LuaPrivateState&) = delete;
    LuaPrivateState& operator=(const LuaPrivateState&) = delete;

    ~LuaPrivateState()
    {
        if (m_state)
            lua_close(m_state);
    }

    /// Returns the state, null if there was no memory for it.
    lua_State* get() const { return m_state; }

private:
    lua_State* m_state;
};

} // namespace tbScripts::lua

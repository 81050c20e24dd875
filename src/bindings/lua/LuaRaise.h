#pragma once

#include "core/lua/LuaApi.h"

namespace tbScripts::lua
{

/// What the body of a closure returns instead of a number of results when the value on top of the
/// stack is to be raised.
constexpr int RAISE_MESSAGE_ON_TOP = -1;

/// Has `text` raised, up to its first NUL.
inline int raiseText(lua_State* state, const char* text)
{
    lua_pushstring(state, text);
    return RAISE_MESSAGE_ON_TOP;
}

/// A closure of the interpreter around `body`, which may own whatever it likes: its frame is gone
/// before the error is raised. This frame owns nothing, so that leaving it skips no destructor.
template <int (*body)(lua_State* state)>
int closureOf(lua_State* state)
{
    const int results = body(state);
    return results == RAISE_MESSAGE_ON_TOP ? lua_error(state) : results;
}

} // namespace tbScripts::lua

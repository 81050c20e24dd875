#pragma once

#include "core/lua/LuaApi.h"

namespace tbScripts::lua
{

/// The body of a closure returns this, instead of a number of results, to raise the value on top of
/// the stack.
constexpr int RAISE_MESSAGE_ON_TOP = -1;

/// Returned by the body of a closure, raises `text` up to its first NUL.
inline int raiseText(lua_State* state, const char* text)
{
    lua_pushstring(state, text);
    return RAISE_MESSAGE_ON_TOP;
}

/// A closure of the interpreter around `body`. `body` may own objects: its frame has returned
/// before the error is raised. This frame owns nothing, so leaving it skips no destructor.
template <int (*body)(lua_State* state)>
int closureOf(lua_State* state)
{
    const int results = body(state);
    return results == RAISE_MESSAGE_ON_TOP ? lua_error(state) : results;
}

} // namespace tbScripts::lua

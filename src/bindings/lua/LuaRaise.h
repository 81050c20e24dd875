#pragma once

#include "core/lua/LuaApi.h"
#include "core/lua/LuaStackWords.h"

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

/// Returns the block that is the first upvalue of the running closure.
inline void* firstUpvalueOf(lua_State* state)
{
    return LuaStackWords::isKnown() ? LuaStackWords::readFirstUpvalue(state)
                                    : lua_touserdata(state, lua_upvalueindex(1));
}

/// What a closure returns whose body has returned `results`. Raises from the closure's own frame,
/// which must own nothing.
inline int finishClosure(lua_State* state, int results)
{
    return results == RAISE_MESSAGE_ON_TOP ? lua_error(state) : results;
}

/// A closure of the interpreter around `body`. `body` may own objects: its frame has returned
/// before the error is raised. This frame owns nothing, so leaving it skips no destructor.
template <int (*body)(lua_State* state)>
int closureOf(lua_State* state)
{
    return finishClosure(state, body(state));
}

} // namespace tbScripts::lua

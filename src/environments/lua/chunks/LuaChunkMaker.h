#pragma once

#include "core/lua/LuaApi.h"
#include "scripts/lua/LuaBytecode.h"

namespace tbScripts::lua
{

/// Stack: +1, a Lua function without parameters that returns a new function of the chunk whenever
/// it is called; or nothing, and false is returned, if the chunk cannot be loaded that way.
///
/// Functions of one maker share what the interpreter's own compiler has learned about the chunk,
/// and nothing else: a script finds each as if it had been loaded anew.
bool pushChunkMaker(lua_State* state, const LuaBytecode& bytecode, const char* chunkName);

} // namespace tbScripts::lua

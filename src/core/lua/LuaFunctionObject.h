#pragma once

#include "core/lua/LuaApi.h"

#include <cstddef>
#include <cstring>

namespace tbScripts::lua
{

/// Has the function on top of the stack call `replacement` instead of its C function, which it
/// returns; null if that cannot be. Stack: +0.
///
/// The interpreter has no call for this. A function object begins with five or six words, and one
/// of them is the address that `lua_tocfunction` returns: in all versions the last one.
inline lua_CFunction replaceFunction(lua_State* state, lua_CFunction replacement)
{
    constexpr std::size_t WORDS = 6;
    const lua_CFunction function = lua_tocfunction(state, -1);
    if (!function || function == replacement)
        return nullptr;
    auto* word = static_cast<unsigned char*>(const_cast<void*>(lua_topointer(state, -1)));
    for (std::size_t i = 0; i < WORDS; ++i, word += sizeof(function))
    {
        if (std::memcmp(word, &function, sizeof(function)) != 0)
            continue;
        std::memcpy(word, &replacement, sizeof(replacement));
        return function;
    }
    return nullptr;
}

} // namespace tbScripts::lua

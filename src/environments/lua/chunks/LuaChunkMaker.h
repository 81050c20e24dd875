#pragma once

#include "core/lua/LuaApi.h"
#include "scripts/lua/LuaBytecode.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace tbScripts::lua
{

/// Creates functions that return a new function of a chunk whenever they are called
/// (docs/decisions/0015-scripts-that-run-again.md).
///
/// A function that creates another can be put behind any compiled chunk in the place of its end,
/// and then creates that chunk's function. This one is compiled once for each interpreter that runs
/// a script again, and not once for the process: it would be an object that is created by the first
/// use and destroyed before the last, where a host runs scripts while its static objects are
/// destroyed.
class LuaChunkMaker
{
public:
    /// Stack: +1, a Lua function without parameters that returns a new function of the chunk
    /// whenever it is called; or nothing, and false is returned, if the chunk cannot be loaded that
    /// way.
    ///
    /// Functions of one maker share what the interpreter's own compiler has learned about the
    /// chunk, and nothing else: a script finds each as if it had been loaded anew.
    bool push(lua_State* state, const LuaBytecode& bytecode, const char* chunkName);

private:
    static constexpr std::size_t CAPACITY = 256;

    void _compile();

    std::array<char, CAPACITY> m_tail{}; // the function that creates another, and the end
    std::size_t m_size = 0;              // of the tail; 0 if there is none
    std::uint64_t m_flags = 0;
    bool m_isCompiled = false; // also if that has failed, which is not tried again
};

} // namespace tbScripts::lua

#pragma once

#include "core/lua/LuaApi.h"
#include "environments/lua/chunks/LuaChunkMaker.h"
#include "scripts/lua/LuaBytecode.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace tbScripts::lua
{

/// The chunks that one interpreter has run more than once lately. Another run need not load them,
/// and reuses the machine code that the interpreter's compiler has created.
///
/// Each run still gets its own function, so it does not notice what an earlier run has done to its
/// function, such as keeping it or giving it another environment.
///
/// Why: docs/decisions/0015-scripts-that-run-again.md
class LuaChunkCache
{
public:
    /// Stack: +1, a new function of the chunk, whose environment the caller sets; if the chunk
    /// cannot be loaded, the error message.
    void pushFunction(lua_State* state, const LuaBytecode& bytecode, const char* chunkName);

private:
    // Scripts that are created one after the other have different places. A script that is loaded
    // again keeps its place, so that its old chunk is dropped.
    static constexpr std::size_t CAPACITY = 128;

    struct Place
    {
        std::uint64_t version = 0; // of the chunk that ran last of those that have this place
        bool hasMaker = false;     // whether its maker is in the table
    };

    bool _pushMaker(lua_State* state, const LuaBytecode& bytecode, const char* chunkName);
    void _dropMaker(lua_State* state, std::size_t index) const;
    bool _loadMaker(lua_State* state, const LuaBytecode& bytecode, const char* chunkName);

    int m_makersKey = LUA_NOREF; // registry slot of the table of makers, by place
    std::array<Place, CAPACITY> m_places;
    LuaChunkMaker m_maker;
};

} // namespace tbScripts::lua

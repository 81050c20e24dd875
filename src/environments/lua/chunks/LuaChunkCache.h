#pragma once

#include "core/lua/LuaApi.h"
#include "scripts/lua/LuaBytecode.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace tbScripts::lua
{

/// The chunks that one interpreter has run more than once lately, so that running them again need
/// not load them, and what the interpreter's own compiler has made of them is used again.
///
/// Each run gets a function of its own all the same: what an earlier one has done to its own, such
/// as giving it another environment or keeping it, does not show.
class LuaChunkCache
{
public:
    /// Stack: +1, a new function of the chunk, whose environment the caller sets; if it cannot be
    /// loaded, the message why.
    void pushFunction(lua_State* state, const LuaBytecode& bytecode, const char* chunkName);

private:
    // Scripts that are made one after the other have different places; a script that is loaded anew
    // keeps its own, so that its old chunk goes.
    static constexpr std::size_t CAPACITY = 128;

    struct Place
    {
        std::uint64_t version = 0; // of the chunk that ran last of those that belong here
        bool hasMaker = false;     // it has run before, and its maker is in the table
    };

    bool _pushMaker(lua_State* state, const LuaBytecode& bytecode, const char* chunkName);
    void _dropMaker(lua_State* state, std::size_t index) const;
    bool _loadMaker(lua_State* state, const LuaBytecode& bytecode, const char* chunkName);

    int m_makersKey = LUA_NOREF; // registry slot of the table of makers, each at its place
    std::array<Place, CAPACITY> m_places;
};

} // namespace tbScripts::lua

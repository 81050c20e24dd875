#pragma once

// How the metatable of a userdata block is read.
//
// The library reads it each time it recognises an instance, and the interpreter's own way takes
// three calls: get the metatable, ask for its address, drop it. LuaJIT keeps that address in front
// of the block, 16 bytes on machines of 64 bits. Whether it does is found out with blocks that have
// known metatables; if anything differs, the calls stay
// (docs/decisions/0031-metatables-in-front-of-blocks.md).

#include "core/lua/LuaApi.h"

#include <atomic>
#include <cstddef>
#include <cstring>

namespace tbScripts::lua
{

class LuaMetatableWord
{
public:
    /// Finds out where the metatables of this interpreter are, once for the process. May raise.
    static void probe(lua_State* state);

    /// Returns whether metatables are read in front of blocks.
    static bool isKnown() { return s_isKnown.load(std::memory_order_relaxed); }

    /// Chooses the way: the same result has to come of both.
    static void setKnown(bool isKnown) { s_isKnown.store(isKnown, std::memory_order_relaxed); }

    /// Returns what stands where the metatable's address is expected.
    ///
    /// Requires: `block` belongs to a full userdata. In front of a light one is unknown memory.
    static const void* read(const void* block)
    {
        const void* metatable = nullptr;
        std::memcpy(
            &metatable, static_cast<const unsigned char*>(block) - DISTANCE, sizeof(metatable));
        return metatable;
    }

private:
    static constexpr std::ptrdiff_t DISTANCE = 16;

    static std::atomic<bool> s_isKnown;
};

/// Returns the address of the metatable of the value at `index` by calls of the interpreter, null
/// if it has none.
const void* askForMetatable(lua_State* state, int index);

/// Returns the address of the metatable of the full userdata at `index`, whose block is `block`;
/// null if it has none.
inline const void* metatableOf(lua_State* state, int index, const void* block)
{
    return LuaMetatableWord::isKnown() ? LuaMetatableWord::read(block)
                                       : askForMetatable(state, index);
}

} // namespace tbScripts::lua

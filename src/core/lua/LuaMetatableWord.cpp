#include "core/lua/LuaMetatableWord.h"

#include <cstdint>

namespace tbScripts::lua
{

namespace
{

// Returns whether the word in front of the block on top of the stack is what the interpreter says.
bool agrees(lua_State* state)
{
    return LuaMetatableWord::read(lua_touserdata(state, -1)) == askForMetatable(state, -1);
}

// Returns whether the word follows the metatable of a new block of `size` bytes. Stack: +0.
bool agreesForBlock(lua_State* state, std::size_t size)
{
    // The interpreter wants size and metatable of a block in front of it, so that these words
    // exist.
    void* const block = lua_newuserdata(state, size);
    std::memset(block, 0xFF, size);
    bool isFollowed = agrees(state);
    for (int tables = 0; tables < 2; ++tables)
    {
        lua_createtable(state, 0, 0);
        lua_setmetatable(state, -2);
        isFollowed = isFollowed && askForMetatable(state, -1) && agrees(state);
    }
    lua_pushnil(state);
    lua_setmetatable(state, -2);
    isFollowed = isFollowed && agrees(state);
    lua_pop(state, 1);
    return isFollowed;
}

} // namespace

std::atomic<bool> LuaMetatableWord::s_isKnown{false};

void LuaMetatableWord::probe(lua_State* state)
{
    static std::atomic<bool> isProbed{false};
    if (isProbed)
        return;
    constexpr std::size_t SMALL = 16;
    constexpr std::size_t LARGE = 1000;
    setKnown(
        sizeof(void*) == sizeof(std::uint64_t) && agreesForBlock(state, SMALL) &&
        agreesForBlock(state, LARGE));
    isProbed = true;
}

const void* askForMetatable(lua_State* state, int index)
{
    if (!lua_getmetatable(state, index))
        return nullptr;
    const void* const metatable = lua_topointer(state, -1);
    lua_pop(state, 1);
    return metatable;
}

} // namespace tbScripts::lua

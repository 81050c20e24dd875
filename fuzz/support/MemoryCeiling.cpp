#include "support/MemoryCeiling.h"

#include <lua.hpp>

#include <cstdlib>
#include <limits>
#include <utility>

namespace
{

constexpr std::size_t NO_CEILING = std::numeric_limits<std::size_t>::max();

std::size_t livingBytes = 0;
std::size_t ceiling = NO_CEILING;
bool isRefused = false;

void* allocate(void* /*data*/, void* block, std::size_t oldSize, std::size_t newSize)
{
    const std::size_t before = block ? oldSize : 0;
    if (newSize == 0)
    {
        livingBytes -= before;
        std::free(block);
        return nullptr;
    }
    // Shrinking always works, as the interpreter requires.
    if (newSize > before && livingBytes + (newSize - before) > ceiling)
    {
        isRefused = true;
        return nullptr;
    }
    livingBytes += newSize - before;
    return std::realloc(block, newSize);
}

} // namespace

// Defined in the executable, this is found before that of the interpreter's library.
extern "C" lua_State* luaL_newstate()
{
    const std::size_t present = std::exchange(ceiling, NO_CEILING);
    lua_State* const state = lua_newstate(&allocate, nullptr);
    ceiling = present;
    return state;
}

namespace tbScripts::fuzz
{

void MemoryCeiling::set(std::size_t bytes)
{
    ceiling = livingBytes + bytes;
}

void MemoryCeiling::lift()
{
    ceiling = NO_CEILING;
    isRefused = false;
}

bool MemoryCeiling::hasRefused()
{
    return isRefused;
}

} // namespace tbScripts::fuzz

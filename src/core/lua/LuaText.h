#pragma once

#include "core/lua/LuaApi.h"

#include <tbMemory/StringView.h>

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace tbScripts::lua
{

/// Returns whether one of `size` bytes is 0. Most strings here are names, which are so short that a
/// call of the C library would take longer.
inline bool holdsNul(const char* bytes, std::size_t size)
{
    constexpr std::size_t LONG = 64;
    constexpr std::size_t WORD = sizeof(std::uint64_t);
    constexpr std::size_t HALF = sizeof(std::uint32_t);
    const auto hasZeroByte = [](std::uint64_t word)
    { return ((word - 0x0101010101010101U) & ~word & 0x8080808080808080U) != 0; };
    const auto wordAt = [bytes](std::size_t position, std::size_t length)
    {
        std::uint64_t word = ~std::uint64_t(0);
        std::memcpy(&word, bytes + position, length);
        return word;
    };

    // The last piece overlaps the one before, so there is no remainder.
    if (size >= LONG)
        return std::memchr(bytes, '\0', size) != nullptr;
    if (size >= WORD)
    {
        for (std::size_t i = 0; i + WORD < size; i += WORD)
        {
            if (hasZeroByte(wordAt(i, WORD)))
                return true;
        }
        return hasZeroByte(wordAt(size - WORD, WORD));
    }
    if (size >= HALF)
        return hasZeroByte(wordAt(0, HALF)) || hasZeroByte(wordAt(size - HALF, HALF));
    return size > 0 && (bytes[0] == 0 || bytes[size / 2] == 0 || bytes[size - 1] == 0);
}

/// Returns `text` up to its first NUL: for the interpreter, names and strings of the host end
/// there, whether or not the view is zero-terminated.
inline tbMemory::StringView upToFirstNul(const tbMemory::StringView& text)
{
    if (!holdsNul(text.data(), text.size()))
        return text;
    return tbMemory::StringView(text.data(), std::strlen(text.data()));
}

/// Stack: +1, the name; a null view is the empty name.
inline void pushName(lua_State* state, const tbMemory::StringView& name)
{
    const tbMemory::StringView shown = upToFirstNul(name);
    lua_pushlstring(state, shown.empty() ? "" : shown.data(), shown.size());
}

/// Stack: +1, the string; a null view is nil.
inline void pushText(lua_State* state, const tbMemory::StringView& text)
{
    if (text.isNull())
        lua_pushnil(state);
    else
        pushName(state, text);
}

/// Returns the bytes of the string or number at `index`. A number there becomes a string.
inline tbMemory::StringView textAt(lua_State* state, int index)
{
    std::size_t size = 0;
    const char* const data = lua_tolstring(state, index, &size);
    return tbMemory::StringView(data, size);
}

} // namespace tbScripts::lua

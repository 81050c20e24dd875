#pragma once

#include "core/lua/LuaApi.h"

#include <tbMemory/StringView.h>

#include <array>
#include <cstddef>

namespace tbScripts::lua
{

/// The strings of tables that a reader meets next, interned a few at a time.
///
/// Interning a string misses the cache several times. Issuing up to 32 lookups back to back
/// overlaps those misses: 25 % on lists of small tables above 256 KiB.
class LuaStringsAhead
{
public:
    static constexpr int CAPACITY = 32;

    /// Requires: the `size` bytes at `data` do not change while this object exists.
    LuaStringsAhead(const unsigned char* data, std::size_t size)
        : m_data(data)
        , m_size(size)
    {
    }

    /// Stack: +32, the slots of the strings. Without this call, `push` interns each string on its
    /// own.
    void reserve(lua_State* state);

    /// Returns the size of the string record at `position`. Stack: +1, its string.
    ///
    /// Requires: the position is inside the bytes.
    std::size_t push(lua_State* state, std::size_t position);

private:
    struct Text
    {
        std::size_t position = 0; // of its record
        tbMemory::StringView bytes;
    };

    void _find(std::size_t position);
    void _lookUp(lua_State* state) const;

    tbMemory::StringView _textAt(std::size_t position) const;

    int _indexOf(std::size_t place) const { return m_base + static_cast<int>(place); }

    const unsigned char* m_data;
    std::size_t m_size;
    std::array<Text, CAPACITY> m_texts; // in their order in the bytes
    std::size_t m_count = 0;            // of the used elements of `m_texts`
    std::size_t m_next = 0;             // the first that `push` has not returned yet
    int m_base = 0;                     // stack index of the first; 0 without reserved slots
};

} // namespace tbScripts::lua

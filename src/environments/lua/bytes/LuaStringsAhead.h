#pragma once

#include "core/lua/LuaApi.h"

#include <tbMemory/StringView.h>

#include <array>
#include <cstddef>

namespace tbScripts::lua
{

/// The texts of tables that a reader meets next, looked up a few at a time.
///
/// Looking a text up in the interpreter waits for memory in several places. Right after each other,
/// lookups wait together, if nothing else is between them: that is a quarter of the reading of a
/// long list of small tables.
class LuaStringsAhead
{
public:
    static constexpr int CAPACITY = 32;

    /// Requires: the `size` bytes at `data` stay as they are while this lives.
    LuaStringsAhead(const unsigned char* data, std::size_t size)
        : m_data(data)
        , m_size(size)
    {
    }

    /// Stack: +32, the place of the texts. Without it each is looked up when it is met.
    void reserve(lua_State* state);

    /// Returns the size of the text record at `position`. Stack: +1, its text.
    ///
    /// Requires: the position is in the bytes.
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
    std::size_t m_count = 0;            // of those
    std::size_t m_next = 0;             // the first that was not met yet
    int m_base = 0;                     // the stack index of the first; 0 without room for them
};

} // namespace tbScripts::lua

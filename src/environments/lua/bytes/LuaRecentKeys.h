#pragma once

#include "core/ByteWords.h"
#include "core/lua/LuaApi.h"
#include "environments/lua/bytes/LuaValueFormat.h"

#include <array>
#include <cstddef>

namespace tbScripts::lua
{

/// The string keys that a reader met last, each with the key that followed it.
///
/// Neighbouring tables have the same keys in the same order, so the reader mostly knows the next
/// key and copies it on the stack. A copy takes a third of the time in which the interpreter
/// interns a string: this saves a third of the time for a list of small tables.
class LuaRecentKeys
{
public:
    static constexpr int CAPACITY = 32;

    /// Stack: +32, the slots of the keys. Without this call no key is ever expected.
    void reserve(lua_State* state)
    {
        const int top = lua_gettop(state);
        m_base = top + 1;
        lua_settop(state, top + CAPACITY);
    }

    /// Returns the size of the record at the start of the `room` bytes at `record` if it is the
    /// record of the expected key, else 0. Stack: +1, the key, if it is the expected one.
    std::size_t pushIfExpected(lua_State* state, const unsigned char* record, std::size_t room)
    {
        const std::size_t expected = m_keys[m_last].follower;
        const Key& key = m_keys[expected];
        if (key.size > room || !_isSame(key, record))
            return 0;
        lua_pushvalue(state, _indexOf(expected));
        m_last = expected;
        return key.size;
    }

    /// Stores the key on top of the stack in place of the oldest key. Stack: +0.
    ///
    /// Requires: `record` has `size` bytes, which do not change while this object exists.
    void note(lua_State* state, const unsigned char* record, std::size_t size)
    {
        if (m_base == 0)
            return;
        lua_pushvalue(state, -1);
        lua_replace(state, _indexOf(m_oldest));
        m_keys[m_oldest] = Key{record, size, m_keys[m_oldest].follower};
        m_keys[m_last].follower = m_oldest;
        m_last = m_oldest;
        m_oldest = (m_oldest + 1) % CAPACITY;
    }

private:
    struct Key
    {
        const unsigned char* record = nullptr;
        std::size_t size = 0;     // of the record, a multiple of 4; 0 for none
        std::size_t follower = 0; // the place of the key that came next the last time
    };

    // Equal records have equal strings. If only the padding differs, the reader interns the string.
    static bool _isSame(const Key& key, const unsigned char* record)
    {
        return key.size != 0 && areSameQuads(key.record, record, key.size);
    }

    int _indexOf(std::size_t place) const { return m_base + static_cast<int>(place); }

    std::array<Key, CAPACITY> m_keys;
    int m_base = 0; // the stack index of the first key; 0 without room for them
    std::size_t m_last = 0;
    std::size_t m_oldest = 0;
};

} // namespace tbScripts::lua

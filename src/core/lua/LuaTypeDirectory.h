#pragma once

#include "core/lua/LuaTypeIdentity.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace tbScripts::lua
{

/// Maps the address of a user type's table to the type, for the types of one state that keep their
/// tables alive.
///
/// The library looks up every instance that it reads from a script here, so this is a hash table
/// with open addressing: entries lie in one block, each at or behind the place of its address.
class LuaTypeDirectory
{
public:
    /// Adds `table` of `type`. A table that is listed already gets the new type.
    ///
    /// Requires: `type` exists until `remove`.
    void add(const void* table, const LuaTypeIdentity& type)
    {
        if ((m_count + 1) * 2 > m_entries.size())
            _grow();
        Entry& entry = m_entries[_placeOf(table)];
        m_count += entry.table ? 0 : 1;
        entry = {table, &type};
    }

    /// Removes `table`, unless a later `add` has given it to another type. Needs no memory.
    void remove(const void* table, const LuaTypeIdentity& type)
    {
        if (find(table) == &type)
            forget(table);
    }

    /// Removes `table`, if it is listed. Needs no memory.
    void forget(const void* table)
    {
        if (!find(table))
            return;
        std::size_t place = _placeOf(table);
        m_entries[place] = Entry();
        --m_count;
        // Entries behind may lie there only because this place was taken.
        for (place = (place + 1) & m_mask; m_entries[place].table; place = (place + 1) & m_mask)
        {
            const Entry moved = m_entries[place];
            m_entries[place] = Entry();
            m_entries[_placeOf(moved.table)] = moved;
        }
    }

    /// Returns the type whose table this is, null if there is none.
    const LuaTypeIdentity* find(const void* table) const { return m_entries[_placeOf(table)].type; }

private:
    struct Entry
    {
        const void* table = nullptr;
        const LuaTypeIdentity* type = nullptr;
    };

    static constexpr std::size_t FIRST_SIZE = 16; // a power of two, as all sizes are

    // The entry of `table`, or the free one where it belongs.
    std::size_t _placeOf(const void* table) const
    {
        constexpr std::uint64_t FIBONACCI = 0x9E3779B97F4A7C15U; // spreads neighbouring addresses
        constexpr unsigned UPPER_HALF = 32;
        const std::uint64_t spread = reinterpret_cast<std::uintptr_t>(table) * FIBONACCI;
        std::size_t place = static_cast<std::size_t>(spread >> UPPER_HALF) & m_mask;
        while (m_entries[place].table != table && m_entries[place].table)
            place = (place + 1) & m_mask;
        return place;
    }

    void _grow()
    {
        std::vector<Entry> old(m_entries.size() * 2);
        old.swap(m_entries);
        m_mask = m_entries.size() - 1;
        m_count = 0;
        for (const Entry& entry : old)
        {
            if (entry.table)
                add(entry.table, *entry.type);
        }
    }

    std::vector<Entry> m_entries = std::vector<Entry>(FIRST_SIZE); // twice as many as are used
    std::size_t m_mask = FIRST_SIZE - 1;
    std::size_t m_count = 0;
};

} // namespace tbScripts::lua

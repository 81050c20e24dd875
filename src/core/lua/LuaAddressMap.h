#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace tbScripts::lua
{

/// Maps addresses of the interpreter's tables and blocks to pointers.
///
/// The library looks here for every instance that it reads from a script, so this is a hash table
/// with open addressing: entries lie in one block, each at or behind the place of its address.
template <typename T>
class LuaAddressMap
{
public:
    /// Makes room, so that the next `set` allocates nothing.
    void reserve()
    {
        if ((m_count + 1) * 2 > m_entries.size())
            _grow();
    }

    /// Maps `address`, which must not be null, to `value`, whatever it was mapped to before.
    void set(const void* address, T* value)
    {
        reserve();
        Entry& entry = m_entries[_placeOf(address)];
        m_count += entry.address ? 0 : 1;
        entry = {address, value};
    }

    /// Maps `address`, which is mapped already, to `value`. Allocates nothing.
    void replace(const void* address, T* value) { m_entries[_placeOf(address)].value = value; }

    /// Returns whether `address` was mapped, and maps it no longer. Allocates nothing.
    bool remove(const void* address)
    {
        std::size_t place = _placeOf(address);
        if (!m_entries[place].address)
            return false;
        m_entries[place] = Entry();
        --m_count;
        // Entries behind may lie there only because this place was taken.
        for (place = (place + 1) & m_mask; m_entries[place].address; place = (place + 1) & m_mask)
        {
            const Entry moved = m_entries[place];
            m_entries[place] = Entry();
            m_entries[_placeOf(moved.address)] = moved;
        }
        return true;
    }

    /// Returns what `address` is mapped to, null if it is not.
    T* find(const void* address) const { return m_entries[_placeOf(address)].value; }

    bool isEmpty() const { return m_count == 0; }

    /// Calls `use` with each value. It must not change the map.
    template <typename Use>
    void forEach(Use&& use) const
    {
        for (const Entry& entry : m_entries)
        {
            if (entry.address)
                use(entry.value);
        }
    }

private:
    struct Entry
    {
        const void* address = nullptr;
        T* value = nullptr;
    };

    static constexpr std::size_t FIRST_SIZE = 16; // a power of two, as all sizes are

    // The entry of `address`, or the free one where it belongs.
    std::size_t _placeOf(const void* address) const
    {
        constexpr std::uint64_t FIBONACCI = 0x9E3779B97F4A7C15U; // spreads neighbouring addresses
        constexpr unsigned UPPER_HALF = 32;
        const std::uint64_t spread = reinterpret_cast<std::uintptr_t>(address) * FIBONACCI;
        std::size_t place = static_cast<std::size_t>(spread >> UPPER_HALF) & m_mask;
        while (m_entries[place].address != address && m_entries[place].address)
            place = (place + 1) & m_mask;
        return place;
    }

    void _grow()
    {
        std::vector<Entry> old(m_entries.size() * 2);
        old.swap(m_entries);
        m_mask = m_entries.size() - 1;
        for (const Entry& entry : old)
        {
            if (entry.address)
                m_entries[_placeOf(entry.address)] = entry;
        }
    }

    std::vector<Entry> m_entries = std::vector<Entry>(FIRST_SIZE); // twice as many as are used
    std::size_t m_mask = FIRST_SIZE - 1;
    std::size_t m_count = 0;
};

} // namespace tbScripts::lua

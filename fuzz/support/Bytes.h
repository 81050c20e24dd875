#pragma once

#include "support/Require.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>

namespace tbScripts::fuzz
{

/// The bytes that a fuzzer gives, taken from the front as small decisions. Past the end everything
/// is 0, empty and false, so that each input means something.
class Bytes
{
public:
    /// Valid until: the bytes at `data` go.
    Bytes(const std::uint8_t* data, std::size_t size)
        : m_data(data)
        , m_size(size)
    {
    }

    bool empty() const { return m_size == 0; }

    std::uint8_t byte()
    {
        if (empty())
            return 0;
        --m_size;
        return *m_data++;
    }

    bool flag() { return (byte() & 1U) != 0; }

    /// Returns a number below `count`. Requires: `count` is 1 to 256.
    std::size_t below(std::size_t count) { return byte() % count; }

    /// Returns true for one byte of 32.
    bool isRare() { return below(32) == 31; }

    /// Returns one of the numbers 0 to `count` - 1. Numbers from `count` to `CAPACITY` - 1 are
    /// skipped, so that a byte keeps its meaning when `count` grows.
    template <std::size_t CAPACITY>
    std::size_t choice(std::size_t count)
    {
        static_assert(256 % CAPACITY == 0, "each number is equally frequent");
        require(0 < count && count <= CAPACITY, "each choice has a number of its own");
        std::size_t number = below(CAPACITY);
        while (number >= count)
            number = below(CAPACITY); // 0 past the end
        return number;
    }

    /// Returns one of the elements of an array, whose places are their numbers: see `choice`.
    template <std::size_t CAPACITY, typename List>
    const auto& numbered(const List& list)
    {
        return list[choice<CAPACITY>(std::size(list))];
    }

    /// Returns one of the cases of a table. Numbers that no case has are skipped.
    template <typename Table>
    const auto& caseOf(const Table& table)
    {
        const auto* found = table.find(below(Table::CAPACITY));
        while (!found)
            found = table.find(below(Table::CAPACITY)); // past the end 0, which every table has
        return *found;
    }

    /// Returns a text whose length is given by the first byte, at most `longest`.
    std::string text(std::size_t longest)
    {
        const std::size_t size = std::min(m_size, below(longest + 1));
        const std::string taken(reinterpret_cast<const char*>(m_data), size);
        m_data += size;
        m_size -= size;
        return taken;
    }

    /// Returns all that is left.
    std::string rest()
    {
        const std::string taken(reinterpret_cast<const char*>(m_data), m_size);
        m_data += m_size;
        m_size = 0;
        return taken;
    }

private:
    const std::uint8_t* m_data; // not owned
    std::size_t m_size;
};

} // namespace tbScripts::fuzz

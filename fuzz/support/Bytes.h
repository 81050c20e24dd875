#pragma once

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

    /// Returns one of the elements of an array.
    template <typename List>
    const auto& oneOf(const List& list)
    {
        return list[below(std::size(list))];
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

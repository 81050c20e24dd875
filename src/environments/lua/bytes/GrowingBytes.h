#pragma once

#include "environments/EnvironmentMessages.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>
#include <string_view>

namespace tbScripts::lua
{

/// Bytes that grow at their end, in amortised constant time for each. New bytes are uninitialised:
/// the writer sets all of them.
///
/// They grow up to a limit, and the allocation never exceeds it. So `extend` compares with the
/// limit only where it allocates.
class GrowingBytes
{
public:
    explicit GrowingBytes(std::size_t limit)
        : m_limit(limit)
    {
    }

    /// Adds `size` bytes and returns the first of them. Throws `std::bad_alloc` without memory, and
    /// as `throwTooLong` beyond the limit.
    ///
    /// Valid until: the next call.
    unsigned char* extend(std::size_t size)
    {
        if (m_capacity - m_size < size)
            _grow(size);
        unsigned char* const added = m_bytes.get() + m_size;
        m_size += size;
        return added;
    }

    /// Throws the `std::length_error` that says what the limit is.
    [[noreturn]] void throwTooLong() const
    {
        const tbMemory::String text = messages::valueIsTooLong(std::to_string(m_limit));
        throw std::length_error(std::string(std::string_view(text)));
    }

    void clear() { m_size = 0; }

    const unsigned char* data() const { return m_bytes.get(); }

    std::size_t size() const { return m_size; }

private:
    static constexpr std::size_t SMALLEST_CAPACITY = 256;

    struct Freer
    {
        void operator()(unsigned char* bytes) const { std::free(bytes); }
    };

    void _grow(std::size_t size)
    {
        if (size > m_limit - m_size)
            throwTooLong();
        const std::size_t wanted = std::max({2 * m_capacity, m_size + size, SMALLEST_CAPACITY});
        const std::size_t capacity = std::min(wanted, m_limit);
        auto* const grown = static_cast<unsigned char*>(std::realloc(m_bytes.get(), capacity));
        if (!grown)
            throw std::bad_alloc();
        static_cast<void>(m_bytes.release()); // freed by the reallocation
        m_bytes.reset(grown);
        m_capacity = capacity;
    }

    std::unique_ptr<unsigned char, Freer> m_bytes;
    std::size_t m_limit;
    std::size_t m_size = 0;
    std::size_t m_capacity = 0; // at most the limit
};

} // namespace tbScripts::lua

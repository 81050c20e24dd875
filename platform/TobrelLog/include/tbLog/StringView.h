#pragma once

#include <cstddef>
#include <string_view>

namespace tbLog
{

/// Borrowed bytes of a string, as a `Logger` receives them.
///
/// A type of its own, so that a logger depends on no other library of the family. The bytes need
/// not end with a zero.
///
/// Valid until: the call that passes it returns.
class StringView
{
public:
    /// Makes a view of nothing.
    constexpr StringView() noexcept = default;

    /// Views `size` bytes at `data`; a null pointer becomes an empty view, whatever the size.
    constexpr StringView(const char* data, std::size_t size) noexcept
        : m_data(data)
        , m_size(data == nullptr ? 0 : size)
    {
    }

    constexpr const char* data() const noexcept { return m_data; }

    constexpr std::size_t size() const noexcept { return m_size; }

    constexpr operator std::string_view() const noexcept { return {m_data, m_size}; }

private:
    const char* m_data = nullptr; // not owned
    std::size_t m_size = 0;
};

} // namespace tbLog

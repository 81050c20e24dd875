#pragma once

#include <cstddef>
#include <iosfwd>
#include <string>
#include <string_view>
#include <type_traits>

namespace tbMemory
{

class String;

/// Borrowed bytes of a string: an address and a length, nothing owned.
///
/// The bytes need not end with a zero and may contain zeros. A null view (no address) compares
/// equal to an empty one; `isNull` tells them apart.
///
/// Valid until: the bytes' owner is changed or destroyed, for a temporary at the end of the
/// expression.
class StringView
{
public:
    /// Creates a null view.
    constexpr StringView() noexcept = default;

    /// Views `text` up to its terminating zero; a null pointer becomes a null view.
    constexpr StringView(const char* text) noexcept
        : StringView(text, text == nullptr ? 0 : std::char_traits<char>::length(text))
    {
    }

    /// Views `size` bytes at `data`; a null pointer becomes a null view, whatever the size.
    constexpr StringView(const char* data, std::size_t size) noexcept
        : m_data(data)
        , m_size(data == nullptr ? 0 : size)
    {
    }

    StringView(const std::string& text) noexcept
        : StringView(text.data(), text.size())
    {
    }

    // Deduced, so that nothing is converted: a `String` has two ways to get here.
    template <typename Text, typename = std::enable_if_t<std::is_same_v<Text, std::string_view>>>
    constexpr StringView(Text text) noexcept
        : StringView(text.data(), text.size())
    {
    }

    constexpr const char* data() const noexcept { return m_data; }

    constexpr std::size_t size() const noexcept { return m_size; }

    constexpr bool empty() const noexcept { return m_size == 0; }

    constexpr bool isNull() const noexcept { return m_data == nullptr; }

    /// Requires: `index` is less than `size()`.
    constexpr char operator[](std::size_t index) const noexcept { return m_data[index]; }

    constexpr const char* begin() const noexcept { return m_data; }

    constexpr const char* end() const noexcept { return m_data + m_size; }

    constexpr operator std::string_view() const noexcept { return {m_data, m_size}; }

private:
    const char* m_data = nullptr; // not owned, not necessarily zero-terminated
    std::size_t m_size = 0;
};

namespace detail
{

template <typename Text>
inline constexpr bool isFamilyText =
    std::is_same_v<Text, StringView> || std::is_same_v<Text, String>;

template <typename Left, typename Right>
inline constexpr bool isEitherFamilyText = isFamilyText<Left> || isFamilyText<Right>;

template <typename Text>
inline constexpr bool isAnyText = std::is_convertible_v<const Text&, StringView>;

/// Admits an operator for two strings of which at least one is a `StringView` or a `String`.
///
/// Each side is deduced, so both match exactly. With fixed parameter types the standard view's own
/// operators, which convert the other side, would be as good a match.
template <typename Left, typename Right, typename Result>
using ForTexts = std::
    enable_if_t<isEitherFamilyText<Left, Right> && isAnyText<Left> && isAnyText<Right>, Result>;

constexpr int compareBytes(StringView left, StringView right) noexcept
{
    return std::string_view(left).compare(std::string_view(right));
}

} // namespace detail

// Comparisons go byte by byte, as unsigned values; a string that is a prefix of another is less.

template <typename Left, typename Right>
constexpr detail::ForTexts<Left, Right, bool>
operator==(const Left& left, const Right& right) noexcept
{
    return detail::compareBytes(left, right) == 0;
}

template <typename Left, typename Right>
constexpr detail::ForTexts<Left, Right, bool>
operator!=(const Left& left, const Right& right) noexcept
{
    return detail::compareBytes(left, right) != 0;
}

template <typename Left, typename Right>
constexpr detail::ForTexts<Left, Right, bool>
operator<(const Left& left, const Right& right) noexcept
{
    return detail::compareBytes(left, right) < 0;
}

/// Writes the bytes as they are. Serves `String` too.
template <typename Traits>
std::basic_ostream<char, Traits>&
operator<<(std::basic_ostream<char, Traits>& stream, const StringView& text)
{
    return stream << std::basic_string_view<char, Traits>(text.data(), text.size());
}

} // namespace tbMemory

namespace std
{

/// Equal strings have equal hashes, whether viewed or owned.
template <>
struct hash<tbMemory::StringView>
{
    size_t operator()(const tbMemory::StringView& text) const noexcept
    {
        return hash<string_view>()(string_view(text));
    }
};

} // namespace std

#pragma once

#include "tbMemory/StringView.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

namespace tbMemory
{

/// Owned string of any bytes, with a zero behind the last one.
class String
{
public:
    /// Creates an empty string.
    String() noexcept = default;

    /// Copies `text` up to its terminating zero; a null pointer becomes an empty string.
    String(const char* text)
        : String(StringView(text))
    {
    }

    String(StringView text)
        : m_text(text.data(), text.size())
    {
    }

    /// Copies `size` bytes at `data`; a null pointer becomes an empty string.
    String(const char* data, std::size_t size)
        : String(StringView(data, size))
    {
    }

    String(std::string text) noexcept // by value: a temporary is taken over
        : m_text(std::move(text))
    {
    }

    String(const String&) = default;
    String(String&&) noexcept = default;
    String& operator=(const String&) = default;
    String& operator=(String&&) noexcept = default;
    ~String() = default;

    /// Copies the bytes of anything that converts to a `StringView`.
    ///
    /// Allocates only if they exceed the capacity. They may be bytes of this string.
    template <
        typename Text,
        typename = std::enable_if_t<
            !std::is_same_v<Text, String> && std::is_convertible_v<const Text&, StringView>>>
    String& operator=(const Text& text)
    {
        const StringView view = text;
        if (view.empty())
            m_text.clear(); // a null view has no address to hand on
        else
            m_text.assign(view.data(), view.size());
        return *this;
    }

    /// Adds the bytes of `text`, which may be bytes of this string.
    String& append(StringView text)
    {
        if (!text.empty())
            m_text.append(text.data(), text.size());
        return *this;
    }

    String& operator+=(StringView text) { return append(text); }

    /// Removes all bytes and keeps the capacity.
    void clear() noexcept { m_text.clear(); }

    /// Valid until: the string is changed or destroyed; the same holds for `data` and views.
    // NOLINTNEXTLINE(readability-identifier-naming): the usual C++ name
    const char* c_str() const noexcept { return m_text.c_str(); }

    const char* data() const noexcept { return m_text.data(); }

    std::size_t size() const noexcept { return m_text.size(); }

    bool empty() const noexcept { return m_text.empty(); }

    /// The view is never null, also that of an empty string.
    operator StringView() const noexcept { return {m_text.data(), m_text.size()}; }

    operator std::string_view() const noexcept { return m_text; }

private:
    std::string m_text;
};

/// Joins two strings of which at least one is a `StringView` or a `String`.
template <typename Left, typename Right>
detail::ForTexts<Left, Right, String> operator+(const Left& left, const Right& right)
{
    const StringView leftView = left;
    const StringView rightView = right;
    std::string joined;
    joined.reserve(leftView.size() + rightView.size());
    joined.append(leftView).append(rightView);
    return joined;
}

/// As above, in the storage of `left`: a chain of `+` is one growing string.
template <typename Right>
detail::ForTexts<String, Right, String> operator+(String&& left, const Right& right)
{
    left.append(right);
    return std::move(left);
}

} // namespace tbMemory

namespace std
{

/// The hash of the same bytes as a `StringView`.
template <>
struct hash<tbMemory::String>
{
    size_t operator()(const tbMemory::String& text) const noexcept
    {
        return hash<tbMemory::StringView>()(text);
    }
};

} // namespace std

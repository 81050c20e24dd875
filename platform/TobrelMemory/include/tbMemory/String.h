#pragma once

#include "tbMemory/StringView.h"

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

namespace tbMemory
{

/// Owned text of any bytes, with a zero behind the last one.
class String
{
public:
    /// Makes an empty text.
    String() noexcept = default;

    /// Copies `text` up to its terminating zero; a null pointer gives an empty text.
    String(const char* text)
        : String(StringView(text))
    {
    }

    String(StringView text)
        : m_text(text.data(), text.size())
    {
    }

    /// Copies `size` bytes at `data`; a null pointer gives an empty text.
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

    /// Takes over the bytes of anything that a `StringView` can be made from.
    ///
    /// Allocates only if they exceed the capacity. They may be bytes of this text.
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

    /// Adds the bytes of `text`, which may be bytes of this text.
    String& append(StringView text)
    {
        if (!text.empty())
            m_text.append(text.data(), text.size());
        return *this;
    }

    String& operator+=(StringView text) { return append(text); }

    /// Removes all bytes and keeps the capacity.
    void clear() noexcept { m_text.clear(); }

    /// Valid until: the text changes or dies; so are `data` and views of it.
    // NOLINTNEXTLINE(readability-identifier-naming): the name that every C++ text has for this
    const char* c_str() const noexcept { return m_text.c_str(); }

    const char* data() const noexcept { return m_text.data(); }

    std::size_t size() const noexcept { return m_text.size(); }

    bool empty() const noexcept { return m_text.empty(); }

    /// The view is never null, also that of an empty text.
    operator StringView() const noexcept { return {m_text.data(), m_text.size()}; }

    operator std::string_view() const noexcept { return m_text; }

private:
    std::string m_text;
};

/// Joins two texts of which at least one is a `StringView` or a `String`.
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

/// As above, in the storage of `left`: a chain of `+` is one growing text.
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

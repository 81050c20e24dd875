#pragma once

#include "tbMemory/Buffer.h"

#include <array>
#include <cstddef>
#include <initializer_list>
#include <type_traits>
#include <vector>

namespace tbMemory
{

/// Borrowed run of elements: an address and a count, nothing owned.
///
/// Constness is deep: through a const view the elements are const, through another they can be
/// changed. A view can still be created from const elements; such a view is to be used as a
/// const one (`const BufferView<T>&` as a parameter, `const BufferView<T>` as a variable).
///
/// Valid until: the elements' owner reallocates or is destroyed. A view of a braced list lives as
/// long as the full expression that the list stands in. As with every list constructor, braces
/// around a pointer and a count make a list where `T` can be made from both; parentheses never do.
template <typename T>
class BufferView
{
    static_assert(!std::is_const_v<T>, "const elements are viewed by a const BufferView");

public:
    using value_type = T;
    using iterator = T*;
    using const_iterator = const T*;

    /// Creates a null view of no elements.
    constexpr BufferView() noexcept = default;

    /// Views `size` elements at `data`; a null pointer becomes a null view, whatever the size.
    constexpr BufferView(T* data, std::size_t size) noexcept
        : m_data(data)
        , m_size(data == nullptr ? 0 : size)
    {
    }

    constexpr BufferView(const T* data, std::size_t size) noexcept
        : BufferView(const_cast<T*>(data), size) // see the class: used as a const view
    {
    }

    template <std::size_t N>
    constexpr BufferView(T (&elements)[N]) noexcept
        : BufferView(static_cast<T*>(elements), N)
    {
    }

    template <std::size_t N>
    constexpr BufferView(const T (&elements)[N]) noexcept
        : BufferView(static_cast<const T*>(elements), N)
    {
    }

    template <std::size_t N>
    constexpr BufferView(std::array<T, N>& elements) noexcept
        : BufferView(elements.data(), N)
    {
    }

    template <std::size_t N>
    constexpr BufferView(const std::array<T, N>& elements) noexcept
        : BufferView(elements.data(), N)
    {
    }

    constexpr BufferView(std::initializer_list<T> elements) noexcept
        : BufferView(elements.begin(), elements.size())
    {
    }

    BufferView(std::vector<T>& elements) noexcept
        : BufferView(elements.data(), elements.size())
    {
    }

    BufferView(const std::vector<T>& elements) noexcept
        : BufferView(elements.data(), elements.size())
    {
    }

    template <
        typename Element = T,
        typename = std::enable_if_t<std::is_same_v<Element, unsigned char>>>
    BufferView(Buffer& bytes) noexcept
        : BufferView(bytes.data(), bytes.size())
    {
    }

    template <
        typename Element = T,
        typename = std::enable_if_t<std::is_same_v<Element, unsigned char>>>
    BufferView(const Buffer& bytes) noexcept
        : BufferView(bytes.data(), bytes.size())
    {
    }

    constexpr T* data() noexcept { return m_data; }

    constexpr const T* data() const noexcept { return m_data; }

    constexpr std::size_t size() const noexcept { return m_size; }

    constexpr bool empty() const noexcept { return m_size == 0; }

    /// Requires: `index` is less than `size()`.
    constexpr T& operator[](std::size_t index) noexcept { return m_data[index]; }

    constexpr const T& operator[](std::size_t index) const noexcept { return m_data[index]; }

    constexpr T* begin() noexcept { return m_data; }

    constexpr T* end() noexcept { return m_data + m_size; }

    constexpr const T* begin() const noexcept { return m_data; }

    constexpr const T* end() const noexcept { return m_data + m_size; }

private:
    T* m_data = nullptr;    // not owned
    std::size_t m_size = 0; // elements, not bytes
};

} // namespace tbMemory

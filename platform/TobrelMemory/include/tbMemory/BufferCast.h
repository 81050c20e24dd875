#pragma once

#include "tbMemory/BufferView.h"

#include <cstddef>
#include <type_traits>
#include <utility>
#include <vector>

namespace tbMemory
{

/// Owned run of elements that grows by one element per `append`.
template <typename T>
class BufferCast
{
    static_assert(!std::is_same_v<T, bool>, "a vector of bool has no elements to point at");

public:
    using value_type = T;
    using iterator = T*;
    using const_iterator = const T*;

    /// Makes an empty buffer.
    BufferCast() noexcept = default;

    BufferCast(const BufferCast&) = default;

    /// Leaves `other` empty.
    BufferCast(BufferCast&& other) noexcept
        : m_elements(std::exchange(other.m_elements, {}))
    {
    }

    BufferCast& operator=(const BufferCast&) = default;

    /// Leaves `other` empty, unless it is this buffer.
    BufferCast& operator=(BufferCast&& other) noexcept
    {
        if (this != &other)
            m_elements = std::exchange(other.m_elements, {});
        return *this;
    }

    ~BufferCast() = default;

    /// Adds `element` at the end; it may be a copy of one of this buffer's own.
    void append(T element) { m_elements.push_back(std::move(element)); }

    std::size_t size() const noexcept { return m_elements.size(); }

    bool empty() const noexcept { return m_elements.empty(); }

    /// The bytes that the elements take: their count times the size of one.
    std::size_t getByteSize() const noexcept { return size() * sizeof(T); }

    /// Requires: `index` is less than `size()`.
    T& operator[](std::size_t index) noexcept { return m_elements[index]; }

    const T& operator[](std::size_t index) const noexcept { return m_elements[index]; }

    /// Valid until: the size changes or the buffer is destroyed; the same holds for iterators and
    /// views.
    T* data() noexcept { return m_elements.data(); }

    const T* data() const noexcept { return m_elements.data(); }

    T* begin() noexcept { return data(); }

    T* end() noexcept { return data() + size(); }

    const T* begin() const noexcept { return data(); }

    const T* end() const noexcept { return data() + size(); }

    /// Destroys all elements.
    void clear() noexcept { m_elements.clear(); }

    operator BufferView<T>() noexcept { return BufferView<T>(data(), size()); }

    /// The view of a const buffer is to be used as a const view.
    operator BufferView<T>() const noexcept { return BufferView<T>(data(), size()); }

private:
    std::vector<T> m_elements;
};

} // namespace tbMemory

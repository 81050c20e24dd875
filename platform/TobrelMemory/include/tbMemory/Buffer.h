#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <utility>
#include <vector>

namespace tbMemory
{

/// Owned run of bytes.
class Buffer
{
public:
    using value_type = unsigned char;
    using iterator = unsigned char*;
    using const_iterator = const unsigned char*;

    /// Makes an empty buffer, whose `data` is null.
    Buffer() noexcept = default;

    /// Copies `size` bytes at `data`; a null pointer becomes an empty buffer.
    Buffer(const void* data, std::size_t size) { append(data, size); }

    Buffer(const Buffer&) = default;

    /// Leaves `other` empty.
    Buffer(Buffer&& other) noexcept
        : m_bytes(std::exchange(other.m_bytes, {}))
    {
    }

    Buffer& operator=(const Buffer&) = default;

    /// Leaves `other` empty, unless it is this buffer.
    Buffer& operator=(Buffer&& other) noexcept
    {
        if (this != &other)
            m_bytes = std::exchange(other.m_bytes, {});
        return *this;
    }

    ~Buffer() = default;

    /// Valid until: the size changes or the buffer is destroyed.
    unsigned char* data() noexcept { return m_bytes.data(); }

    const unsigned char* data() const noexcept { return m_bytes.data(); }

    std::size_t size() const noexcept { return m_bytes.size(); }

    bool empty() const noexcept { return m_bytes.empty(); }

    /// Cuts off the end, or adds zero bytes.
    void resize(std::size_t size) { m_bytes.resize(size); }

    /// Adds `size` bytes at `data`, which may be bytes of this buffer; a null pointer adds nothing.
    void append(const void* data, std::size_t size)
    {
        if (data == nullptr || size == 0)
            return;
        const auto* bytes = static_cast<const unsigned char*>(data);
        const bool isOwn = _isOwn(bytes);
        const auto offset = isOwn ? static_cast<std::size_t>(bytes - m_bytes.data()) : 0;
        const std::size_t oldSize = m_bytes.size();
        m_bytes.resize(oldSize + size); // bytes of this buffer may have moved with it
        std::memcpy(&m_bytes[oldSize], isOwn ? &m_bytes[offset] : bytes, size);
    }

    /// Removes all bytes and keeps the capacity.
    void clear() noexcept { m_bytes.clear(); }

    unsigned char* begin() noexcept { return data(); }

    unsigned char* end() noexcept { return data() + size(); }

    const unsigned char* begin() const noexcept { return data(); }

    const unsigned char* end() const noexcept { return data() + size(); }

    friend bool operator==(const Buffer& left, const Buffer& right) noexcept
    {
        return left.m_bytes == right.m_bytes;
    }

    friend bool operator!=(const Buffer& left, const Buffer& right) noexcept
    {
        return !(left == right);
    }

private:
    bool _isOwn(const unsigned char* bytes) const noexcept
    {
        // As numbers, any two addresses are in order; as pointers, only those of one array.
        const auto address = reinterpret_cast<std::uintptr_t>(bytes);
        const auto first = reinterpret_cast<std::uintptr_t>(data());
        return address >= first && address < first + size();
    }

    std::vector<unsigned char> m_bytes;
};

} // namespace tbMemory

#pragma once

// How the interpreter's compiled code is read, in one place.
//
// Compiled code begins with an escape, two letters and one byte of version. Then come the flags;
// the length of the chunk's name and the name, unless a flag says that there is no debug
// information; each function after its length, inner ones before the one that creates them; a
// length of zero at the end. All lengths, and the flags, are numbers of 7 bits a byte, the lowest
// first, and the last byte is below 128.

#include <tbMemory/StringView.h>

#include <cstddef>
#include <cstdint>

namespace tbScripts::lua
{

constexpr std::uint64_t DUMP_FLAG_BIG_ENDIAN = 1;
constexpr std::uint64_t DUMP_FLAG_WITHOUT_DEBUG_INFORMATION = 2;
constexpr std::uint64_t DUMP_FLAG_OF_FOREIGN_FUNCTIONS = 4;

/// Reads compiled code, or a part of it, from its beginning. Whatever the bytes are, nothing behind
/// their end is read: what is not there is reported as false.
class LuaDumpReader
{
public:
    explicit LuaDumpReader(const tbMemory::StringView& bytes)
        : m_bytes(bytes)
    {
    }

    std::size_t getPosition() const { return m_position; }

    std::size_t getRest() const { return m_bytes.size() - m_position; }

    bool skip(std::uint64_t size)
    {
        if (getRest() < size)
            return false;
        m_position += static_cast<std::size_t>(size);
        return true;
    }

    bool readByte(unsigned& byte)
    {
        if (getRest() == 0)
            return false;
        byte = static_cast<unsigned char>(m_bytes.data()[m_position++]);
        return true;
    }

    bool readBytes(std::uint64_t size, tbMemory::StringView& bytes)
    {
        const std::size_t begin = m_position;
        if (!skip(size))
            return false;
        bytes = getFrom(begin);
        return true;
    }

    bool readNumber(std::uint64_t& number)
    {
        constexpr unsigned BITS = 7;
        constexpr unsigned MOST_BITS = 5 * BITS; // no number of the interpreter has more
        number = 0;
        unsigned byte = 0;
        for (unsigned shift = 0; shift < MOST_BITS && readByte(byte); shift += BITS)
        {
            number |= static_cast<std::uint64_t>(byte & 0x7FU) << shift;
            if (byte < 0x80U)
                return true;
        }
        return false;
    }

    /// Reads what a whole dump begins with.
    bool readFlags(std::uint64_t& flags)
    {
        constexpr std::size_t START_SIZE = 4;
        return skip(START_SIZE) && readNumber(flags);
    }

    bool skipName(std::uint64_t flags)
    {
        std::uint64_t length = 0;
        return (flags & DUMP_FLAG_WITHOUT_DEBUG_INFORMATION) != 0 ||
               (readNumber(length) && skip(length));
    }

    /// Returns the bytes that were read since the position was `begin`.
    tbMemory::StringView getFrom(std::size_t begin) const
    {
        return tbMemory::StringView(m_bytes.data() + begin, m_position - begin);
    }

private:
    tbMemory::StringView m_bytes;
    std::size_t m_position = 0;
};

} // namespace tbScripts::lua

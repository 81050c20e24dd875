// The frame of compiled code: escape, two letters and a version; flags; the length of the chunk's
// name and the name, unless a flag says that there is no debug information; then each function,
// with its length before it; a length of zero at the end. All lengths, and the flags, are numbers
// of 7 bits a byte, the lowest first, and the last byte is below 128.

#include "environments/lua/chunks/LuaDumpFrame.h"

#include <cstddef>
#include <cstdint>

namespace tbScripts::lua
{

namespace
{

constexpr char ESCAPE = '\x1B';
constexpr std::size_t START_SIZE = 4;
constexpr std::uint64_t FLAG_WITHOUT_DEBUG_INFORMATION = 2;

class FrameReader
{
public:
    explicit FrameReader(const tbMemory::StringView& bytes)
        : m_bytes(bytes)
    {
    }

    bool skip(std::uint64_t size)
    {
        if (m_bytes.size() - m_position < size)
            return false;
        m_position += static_cast<std::size_t>(size);
        return true;
    }

    bool readNumber(std::uint64_t& number)
    {
        constexpr unsigned BITS = 7;
        constexpr unsigned MOST_BITS = 5 * BITS; // no number of the interpreter has more
        number = 0;
        for (unsigned shift = 0; shift < MOST_BITS && m_position < m_bytes.size(); shift += BITS)
        {
            const auto byte = static_cast<unsigned char>(m_bytes.data()[m_position++]);
            number |= static_cast<std::uint64_t>(byte & 0x7FU) << shift;
            if (byte < 0x80U)
                return true;
        }
        return false;
    }

private:
    const tbMemory::StringView& m_bytes;
    std::size_t m_position = 0;
};

} // namespace

bool isDump(const tbMemory::StringView& chunk)
{
    return !chunk.empty() && chunk.data()[0] == ESCAPE;
}

bool isWholeDump(const tbMemory::StringView& chunk)
{
    FrameReader reader(chunk);
    std::uint64_t number = 0;
    if (!reader.skip(START_SIZE) || !reader.readNumber(number))
        return false;
    const bool hasName = (number & FLAG_WITHOUT_DEBUG_INFORMATION) == 0;
    if (hasName && (!reader.readNumber(number) || !reader.skip(number)))
        return false;
    do
    {
        if (!reader.readNumber(number) || !reader.skip(number))
            return false;
    } while (number != 0);
    return true;
}

} // namespace tbScripts::lua

#include "environments/lua/chunks/LuaDump.h"

#include <cstddef>

namespace tbScripts::lua
{

namespace
{

constexpr char ESCAPE = '\x1B';
constexpr char END_OF_DUMP = '\0'; // the length of a function that is none
constexpr std::size_t START_SIZE = 4;
constexpr std::uint64_t FLAG_WITHOUT_DEBUG_INFORMATION = 2;
constexpr std::uint64_t FLAG_OF_FOREIGN_FUNCTIONS = 4; // the only one in which parts may differ

enum class PART
{
    FUNCTION,
    END,
    CUT_OFF
};

// Reads a dump from its beginning.
class DumpReader
{
public:
    explicit DumpReader(const tbMemory::StringView& bytes)
        : m_bytes(bytes)
    {
    }

    std::size_t getPosition() const { return m_position; }

    bool readFlags(std::uint64_t& flags) { return _skip(START_SIZE) && _readNumber(flags); }

    bool skipName(std::uint64_t flags)
    {
        std::uint64_t length = 0;
        return (flags & FLAG_WITHOUT_DEBUG_INFORMATION) != 0 ||
               (_readNumber(length) && _skip(length));
    }

    PART skipPart()
    {
        std::uint64_t length = 0;
        if (!_readNumber(length) || !_skip(length))
            return PART::CUT_OFF;
        return length == 0 ? PART::END : PART::FUNCTION;
    }

private:
    bool _skip(std::uint64_t size)
    {
        if (m_bytes.size() - m_position < size)
            return false;
        m_position += static_cast<std::size_t>(size);
        return true;
    }

    bool _readNumber(std::uint64_t& number)
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
    DumpReader reader(chunk);
    std::uint64_t flags = 0;
    if (!reader.readFlags(flags) || !reader.skipName(flags))
        return false;
    PART part = PART::FUNCTION;
    while (part == PART::FUNCTION)
        part = reader.skipPart();
    return part == PART::END;
}

LuaDumpTail tailOf(const tbMemory::StringView& dump)
{
    DumpReader reader(dump);
    LuaDumpTail tail;
    if (!reader.readFlags(tail.flags) || !reader.skipName(tail.flags))
        return LuaDumpTail();
    std::size_t beginOfLast = 0;
    std::size_t begin = reader.getPosition();
    PART part = reader.skipPart();
    while (part == PART::FUNCTION)
    {
        beginOfLast = begin;
        begin = reader.getPosition();
        part = reader.skipPart();
    }
    if (part != PART::END || beginOfLast == 0 || reader.getPosition() != dump.size())
        return LuaDumpTail();
    tail.bytes = tbMemory::StringView(dump.data() + beginOfLast, dump.size() - beginOfLast);
    return tail;
}

tbMemory::StringView frontForTail(const tbMemory::StringView& dump, std::uint64_t flagsOfTail)
{
    DumpReader reader(dump);
    std::uint64_t flags = 0;
    if (!reader.readFlags(flags) || ((flags ^ flagsOfTail) & ~FLAG_OF_FOREIGN_FUNCTIONS) != 0 ||
        dump.data()[dump.size() - 1] != END_OF_DUMP)
        return tbMemory::StringView();
    return tbMemory::StringView(dump.data(), dump.size() - 1);
}

} // namespace tbScripts::lua

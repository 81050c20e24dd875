#include "environments/lua/chunks/LuaDump.h"

#include "core/lua/LuaDumpReader.h"

#include <cstddef>

namespace tbScripts::lua
{

namespace
{

constexpr char ESCAPE = '\x1B';
constexpr char END_OF_DUMP = '\0'; // the length of a function that is none

enum class PART
{
    FUNCTION,
    END,
    CUT_OFF
};

PART skipPart(LuaDumpReader& reader)
{
    std::uint64_t length = 0;
    if (!reader.readNumber(length) || !reader.skip(length))
        return PART::CUT_OFF;
    return length == 0 ? PART::END : PART::FUNCTION;
}

} // namespace

bool isDump(const tbMemory::StringView& chunk)
{
    return !chunk.empty() && chunk.data()[0] == ESCAPE;
}

bool isWholeDump(const tbMemory::StringView& chunk)
{
    LuaDumpReader reader(chunk);
    std::uint64_t flags = 0;
    if (!reader.readFlags(flags) || !reader.skipName(flags))
        return false;
    PART part = PART::FUNCTION;
    while (part == PART::FUNCTION)
        part = skipPart(reader);
    return part == PART::END;
}

LuaDumpTail tailOf(const tbMemory::StringView& dump)
{
    LuaDumpReader reader(dump);
    LuaDumpTail tail;
    if (!reader.readFlags(tail.flags) || !reader.skipName(tail.flags))
        return LuaDumpTail();
    std::size_t beginOfLast = 0;
    std::size_t begin = reader.getPosition();
    PART part = skipPart(reader);
    while (part == PART::FUNCTION)
    {
        beginOfLast = begin;
        begin = reader.getPosition();
        part = skipPart(reader);
    }
    if (part != PART::END || beginOfLast == 0 || reader.getPosition() != dump.size())
        return LuaDumpTail();
    tail.bytes = tbMemory::StringView(dump.data() + beginOfLast, dump.size() - beginOfLast);
    return tail;
}

tbMemory::StringView frontForTail(const tbMemory::StringView& dump, std::uint64_t flagsOfTail)
{
    LuaDumpReader reader(dump);
    std::uint64_t flags = 0;
    // Flags other than this one say how to read the parts.
    if (!reader.readFlags(flags) ||
        ((flags ^ flagsOfTail) & ~DUMP_FLAG_OF_FOREIGN_FUNCTIONS) != 0 ||
        dump.data()[dump.size() - 1] != END_OF_DUMP)
        return tbMemory::StringView();
    return tbMemory::StringView(dump.data(), dump.size() - 1);
}

} // namespace tbScripts::lua

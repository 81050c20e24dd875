#include "JsonErrorPlace.h"

#include <algorithm>
#include <string>
#include <string_view>

namespace tbExport::json
{

namespace
{

// Bytes of the line that are shown, and how many of them may lie before the place.
constexpr std::size_t SHOWN = 60;
constexpr std::size_t SHOWN_BEFORE = 40;

// Bytes of a UTF-8 character after its first.
constexpr std::size_t MAX_CONTINUATIONS = 3;

bool isContinuation(char byte)
{
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

bool isControl(char byte)
{
    return static_cast<unsigned char>(byte) < 0x20U || byte == '\x7F';
}

std::size_t beginOfLine(std::string_view text, std::size_t offset)
{
    const std::size_t lineFeed = text.substr(0, offset).rfind('\n');
    return lineFeed == std::string_view::npos ? 0 : lineFeed + 1;
}

// Both bounds of what is shown move towards the place, so as not to cut a character in two. Where
// bytes are no UTF-8 they move no further than a character is long.

std::size_t beginOfContext(std::string_view text, std::size_t lineBegin, std::size_t offset)
{
    if (offset - lineBegin <= SHOWN_BEFORE)
        return lineBegin;
    std::size_t begin = offset - SHOWN_BEFORE;
    for (std::size_t moved = 0; moved < MAX_CONTINUATIONS && isContinuation(text[begin]); ++moved)
        ++begin;
    return begin;
}

std::size_t endOfContext(std::string_view text, std::size_t limit, std::size_t offset)
{
    std::size_t end = limit;
    for (std::size_t moved = 0;
         moved < MAX_CONTINUATIONS && end > offset && isContinuation(text[end]);
         ++moved)
        --end;
    return end;
}

std::string withoutControls(std::string_view text)
{
    std::string shown(text);
    std::replace_if(shown.begin(), shown.end(), isControl, ' ');
    return shown;
}

} // namespace

tbMemory::String
describeError(tbMemory::StringView text, std::size_t offset, tbMemory::StringView error)
{
    const std::string_view before(text.data(), offset);
    const auto lines = std::count(before.begin(), before.end(), '\n');
    const std::string_view line = before.substr(beginOfLine(before, offset));
    const auto inside = std::count_if(line.begin(), line.end(), isContinuation);
    const std::size_t column = line.size() - static_cast<std::size_t>(inside) + 1;
    return "line " + std::to_string(lines + 1) + ", column " + std::to_string(column) + ": " +
           tbMemory::String(error);
}

tbMemory::String describeContext(tbMemory::StringView text, std::size_t offset)
{
    const std::string_view whole = text;
    const std::size_t lineBegin = beginOfLine(whole, offset);
    const std::size_t begin = beginOfContext(whole, lineBegin, offset);

    const std::size_t limit = std::min(whole.size(), begin + SHOWN);
    std::size_t end = std::min(limit, whole.find('\n', offset));
    const bool isCutBehind = end == limit && limit < whole.size() && whole[limit] != '\n';
    if (isCutBehind)
        end = endOfContext(whole, limit, offset);
    else if (end > offset && whole[end - 1] == '\r')
        --end;

    tbMemory::String context = begin > lineBegin ? "..." : "";
    context += withoutControls(whole.substr(begin, offset - begin));
    context += ">>>";
    context += withoutControls(whole.substr(offset, end - offset));
    context += isCutBehind ? "..." : "";
    return context;
}

} // namespace tbExport::json

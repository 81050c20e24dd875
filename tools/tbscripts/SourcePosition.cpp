#include "tbscripts/SourcePosition.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <system_error>

// The library passes the source text to the interpreter as the chunk's name, and the interpreter's
// messages begin with a short form of that name. A search for "]:7:" would fail for a source that
// begins with `x = [["]:7:]]`. So this file builds the short form in the same way, and splits only
// a message that begins with exactly this form. tests/tools/SourcePositionTest.cpp compares the
// form with the interpreter's.
namespace tool
{

namespace
{

// With its terminating zero, a short form has at most this many bytes.
constexpr std::size_t ID_SIZE = 60;

constexpr std::string_view OPENING = "[string \"";
constexpr std::string_view CLOSING = "\"]";
constexpr std::string_view ELLIPSIS = "...";

// Of a source as it is: what fits between opening and closing.
constexpr std::size_t LONGEST_WHOLE = ID_SIZE - 1 - OPENING.size() - CLOSING.size(); // 48
constexpr std::size_t LONGEST_CUT = LONGEST_WHOLE - ELLIPSIS.size();                 // 45

std::string_view upToFirstNul(std::string_view text)
{
    return text.substr(0, text.find('\0'));
}

bool isControl(char byte)
{
    return static_cast<unsigned char>(byte) < 0x20;
}

// "@" says that the rest is the name of a file, whose end matters.
std::string idOfFileName(std::string_view name)
{
    if (name.size() < ID_SIZE)
        return std::string(name);
    const std::size_t kept = ID_SIZE - 1 - ELLIPSIS.size();
    return std::string(ELLIPSIS) + std::string(name.substr(name.size() - kept));
}

std::string idOfText(std::string_view text)
{
    const auto end = std::find_if(text.begin(), text.end(), isControl);
    const auto firstLine = static_cast<std::size_t>(end - text.begin());
    const bool isWhole = firstLine == text.size() && firstLine <= LONGEST_WHOLE;
    const std::string_view kept =
        text.substr(0, isWhole ? firstLine : std::min(firstLine, LONGEST_CUT));
    return std::string(OPENING) + std::string(kept) + std::string(isWhole ? "" : ELLIPSIS) +
           std::string(CLOSING);
}

bool take(std::string_view& text, std::string_view beginning)
{
    if (text.substr(0, beginning.size()) != beginning)
        return false;
    text.remove_prefix(beginning.size());
    return true;
}

} // namespace

std::string chunkIdOf(std::string_view source)
{
    const std::string_view name = upToFirstNul(source);
    if (!name.empty() && name[0] == '=')
        return std::string(name.substr(1, ID_SIZE - 1));
    if (!name.empty() && name[0] == '@')
        return idOfFileName(name.substr(1));
    return idOfText(name);
}

PlacedMessage placeMessage(std::string_view message, std::string_view source)
{
    std::string_view rest = message;
    int line = 0;
    if (!take(rest, chunkIdOf(source)) || !take(rest, ":"))
        return {0, std::string(message)};
    const auto [end, error] = std::from_chars(rest.data(), rest.data() + rest.size(), line);
    rest.remove_prefix(static_cast<std::size_t>(end - rest.data()));
    if (error != std::errc() || line < 1 || !take(rest, ": "))
        return {0, std::string(message)};
    return {line, std::string(rest)};
}

} // namespace tool

#include "tbscripts/Escaping.h"

#include "tables/Character.h"

namespace tool
{

namespace
{

// Control characters, also those of the upper half, and those that turn the writing direction.
bool isHarmful(char32_t codePoint)
{
    return codePoint < 0x20 || (codePoint >= 0x7F && codePoint <= 0x9F) || codePoint == 0x061C ||
           codePoint == 0x200E || codePoint == 0x200F ||
           (codePoint >= 0x2028 && codePoint <= 0x202E) ||
           (codePoint >= 0x2066 && codePoint <= 0x2069);
}

void appendHex(std::string& result, std::string_view bytes)
{
    constexpr std::string_view DIGITS = "0123456789abcdef";
    for (const char byte : bytes)
    {
        const auto value = static_cast<unsigned char>(byte);
        result += "\\x";
        result += DIGITS[value >> 4U];
        result += DIGITS[value & 0xFU];
    }
}

void appendEscaped(std::string& result, std::string_view bytes)
{
    if (bytes == "\n")
        result += "\\n";
    else if (bytes == "\r")
        result += "\\r";
    else if (bytes == "\t")
        result += "\\t";
    else
        appendHex(result, bytes);
}

} // namespace

std::string escape(std::string_view text, LAYOUT layout)
{
    std::string result;
    result.reserve(text.size());
    while (!text.empty())
    {
        const tables::Character character = tables::takeCharacter(text);
        const std::string_view bytes = character.bytes;
        const bool isLayout = bytes == "\n" || bytes == "\t";
        if (character.isValid &&
            (!isHarmful(character.codePoint) || (isLayout && layout == LAYOUT::KEPT)))
            result += bytes;
        else
            appendEscaped(result, bytes);
    }
    return result;
}

} // namespace tool

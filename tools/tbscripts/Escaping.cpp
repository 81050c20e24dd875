#include "tbscripts/Escaping.h"

#include <algorithm>
#include <array>

namespace tool
{

namespace
{

// One letter at the beginning of a text.
struct Letter
{
    std::size_t size = 1; // in bytes
    char32_t codePoint = 0;
    bool isValid = false;
};

// The forms of UTF-8, by their number of bytes: what marks the first byte, and the least code point
// that needs that many.
struct Form
{
    unsigned char mask;
    unsigned char mark;
    char32_t least;
};

constexpr std::array<Form, 4> FORMS = {
    {{0x80, 0x00, 0x0}, {0xE0, 0xC0, 0x80}, {0xF0, 0xE0, 0x800}, {0xF8, 0xF0, 0x10000}}};

constexpr char32_t LAST_CODE_POINT = 0x10FFFF;

bool isContinuation(char byte)
{
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

bool isSurrogate(char32_t codePoint)
{
    return codePoint >= 0xD800 && codePoint <= 0xDFFF;
}

Letter readForm(std::string_view text, std::size_t size)
{
    const Form& form = FORMS[size - 1];
    const auto first = static_cast<unsigned char>(text[0]);
    if ((first & form.mask) != form.mark || text.size() < size)
        return {};
    char32_t codePoint = first & static_cast<unsigned char>(~form.mask);
    for (std::size_t i = 1; i < size; ++i)
    {
        if (!isContinuation(text[i]))
            return {};
        codePoint = (codePoint << 6U) | (static_cast<unsigned char>(text[i]) & 0x3FU);
    }
    const bool isValid =
        codePoint >= form.least && codePoint <= LAST_CODE_POINT && !isSurrogate(codePoint);
    return isValid ? Letter{size, codePoint, true} : Letter{};
}

// `text` is not empty.
Letter readLetter(std::string_view text)
{
    for (std::size_t size = 1; size <= FORMS.size(); ++size)
    {
        const Letter letter = readForm(text, size);
        if (letter.isValid)
            return letter;
    }
    return {};
}

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
        const Letter letter = readLetter(text);
        const std::string_view bytes = text.substr(0, letter.size);
        const bool isLayout = bytes == "\n" || bytes == "\t";
        if (letter.isValid &&
            (!isHarmful(letter.codePoint) || (isLayout && layout == LAYOUT::KEPT)))
            result += bytes;
        else
            appendEscaped(result, bytes);
        text.remove_prefix(letter.size);
    }
    return result;
}

std::size_t countLetters(std::string_view escaped)
{
    return escaped.size() -
           static_cast<std::size_t>(std::count_if(escaped.begin(), escaped.end(), isContinuation));
}

} // namespace tool

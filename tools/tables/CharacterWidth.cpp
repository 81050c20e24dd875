#include "tables/CharacterWidth.h"

#include "port/CharacterWidth.h"
#include "tables/Character.h"

#include <algorithm>
#include <array>

namespace tables
{

namespace
{

struct Block
{
    char32_t first;
    char32_t last;
    std::size_t width;
};

constexpr std::array<Block, 17> BLOCKS = {
    {{0x0000, 0x001F, 0},     // control characters
     {0x007F, 0x009F, 0},     // and those of the upper half
     {0x0300, 0x036F, 0},     // combining marks
     {0x1100, 0x115F, 2},     // Hangul, leading parts
     {0x1AB0, 0x1AFF, 0},     // combining marks
     {0x1DC0, 0x1DFF, 0},     // combining marks
     {0x200B, 0x200F, 0},     // joiners and marks without a shape
     {0x20D0, 0x20FF, 0},     // combining marks for symbols
     {0x2E80, 0x303E, 2},     // radicals, punctuation
     {0x3041, 0xA4CF, 2},     // Kana, Han, Yi
     {0xAC00, 0xD7A3, 2},     // Hangul
     {0xF900, 0xFAFF, 2},     // Han, compatibility
     {0xFE00, 0xFE0F, 0},     // selectors of variants
     {0xFE30, 0xFE6F, 2},     // punctuation for vertical writing
     {0xFF00, 0xFF60, 2},     // full-width forms
     {0x1F300, 0x1FAFF, 2},   // pictures
     {0x20000, 0x3FFFD, 2}}}; // Han, extensions

} // namespace

std::size_t widthOf(char32_t codePoint)
{
    const int width = tbScripts::port::characterWidth(codePoint);
    return width < 0 ? roughWidthOf(codePoint) : static_cast<std::size_t>(width);
}

std::size_t widthOf(std::string_view string)
{
    std::size_t width = 0;
    while (!string.empty())
    {
        const Character character = takeCharacter(string);
        width += character.isValid ? widthOf(character.codePoint) : 1;
    }
    return width;
}

std::size_t roughWidthOf(char32_t codePoint)
{
    const auto holds = [codePoint](const Block& block)
    { return codePoint >= block.first && codePoint <= block.last; };
    const auto found = std::find_if(BLOCKS.begin(), BLOCKS.end(), holds);
    return found == BLOCKS.end() ? 1 : found->width;
}

} // namespace tables

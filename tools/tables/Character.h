#pragma once

#include <string_view>

namespace tables
{

/// One character of a string in UTF-8, or one byte that belongs to none.
struct Character
{
    std::string_view bytes;
    char32_t codePoint; // 0 if it is not valid
    bool isValid;
};

/// Removes the first character from `remaining`, which is not empty, and returns it.
Character takeCharacter(std::string_view& remaining);

} // namespace tables

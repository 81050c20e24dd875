#pragma once

#include <cstddef>
#include <string_view>

namespace tables
{

/// Returns how many columns of a terminal the character takes: none for those that combine with the
/// one before and for control characters, two for the wide ones of East Asia, one for most.
std::size_t widthOf(char32_t codePoint);

/// Returns how many columns a string takes. A byte that is no UTF-8 takes one.
std::size_t widthOf(std::string_view string);

/// What `widthOf` returns for a character that the platform does not know, or has no table for:
/// only the large blocks of wide and combining characters.
std::size_t roughWidthOf(char32_t codePoint);

} // namespace tables

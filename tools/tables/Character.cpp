#include "tables/Character.h"

#include <algorithm>
#include <utf8.h>

namespace tables
{

namespace
{

constexpr std::size_t LONGEST = 4; // bytes of a character

} // namespace

Character takeCharacter(std::string_view& remaining)
{
    const char* const begin = remaining.data();
    const char* const limit = begin + std::min(remaining.size(), LONGEST);
    const char* end = begin;
    // What follows a valid character may be cut by the limit, so only the first place counts.
    const bool isValid = utf8::find_invalid(begin, limit) != begin;
    const char32_t codePoint = isValid ? utf8::unchecked::next(end) : U'\0';
    const std::size_t size = isValid ? static_cast<std::size_t>(end - begin) : 1;
    const std::string_view bytes = remaining.substr(0, size);
    remaining.remove_prefix(size);
    return {bytes, codePoint, isValid};
}

} // namespace tables

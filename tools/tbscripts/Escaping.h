#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace tool
{

/// What becomes of line feeds and tabs.
enum class LAYOUT : std::int32_t
{
    ESCAPED,
    KEPT
};

/// Makes any bytes safe to print: what could move the cursor, change the order of letters or break
/// the encoding becomes "\n", "\r", "\t" or "\x" and two hexadecimal digits for each byte. A text
/// without such bytes stays as it is, backslashes included.
std::string escape(std::string_view text, LAYOUT layout = LAYOUT::ESCAPED);

} // namespace tool

#pragma once

namespace tbScripts::port
{

/// Returns how many columns of a terminal the system gives a character, or a negative number if the
/// system does not know.
int characterWidth(char32_t codePoint);

} // namespace tbScripts::port

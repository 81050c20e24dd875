#pragma once

#include <string>

namespace bench
{

/// Ends the program: what cannot be right must not be timed.
[[noreturn]] void fail(const std::string& reason);

} // namespace bench

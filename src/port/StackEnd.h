#pragma once

#include <cstdint>

namespace tbScripts::port
{

/// Returns the lowest address of this thread's stack, 0 if nobody knows.
std::uintptr_t findEndOfStack();

} // namespace tbScripts::port

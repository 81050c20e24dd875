#pragma once

#include <cstdio>
#include <cstdlib>

namespace tbScripts::fuzz
{

/// Ends the process if `condition` does not hold: a fuzzer counts that as a finding, like a report
/// of a sanitizer.
inline void require(bool condition, const char* fact)
{
    if (condition)
        return;
    std::fprintf(stderr, "does not hold: %s\n", fact);
    std::abort();
}

} // namespace tbScripts::fuzz

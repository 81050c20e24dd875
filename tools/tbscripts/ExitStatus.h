#pragma once

#include <algorithm>
#include <cstdint>

namespace tool
{

/// Exit status of the process, from good to bad.
enum class EXIT_STATUS : std::int32_t
{
    WELL = 0,
    SCRIPT_FAILED = 1, // did not compile, or raised an error
    TROUBLE = 2        // a wrong command line, or files that cannot be read or written
};

inline EXIT_STATUS worseOf(EXIT_STATUS left, EXIT_STATUS right)
{
    return std::max(left, right);
}

} // namespace tool

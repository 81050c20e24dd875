#pragma once

#include <tbMemory/String.h>

#include <cstdint>

namespace tbScripts
{

/// Outcome of the last execution or script call of an environment. A new result reads as a success.
///
/// Format: docs/messages.md lists the messages and codes.
struct ExecutionResult
{
    tbMemory::String message; ///< what failed, empty on success

    /// 0 success, 1 error inside the error handling, 2 no interpreter, 3 script compiled for
    /// another interpreter, 4 no bytecode, 5 runtime error, 6 out of memory.
    std::int32_t code = 0;

    bool success = true; ///< whether it returned without an error
};

} // namespace tbScripts

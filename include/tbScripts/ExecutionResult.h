#pragma once

#include <tbMemory/String.h>

#include <cstdint>

namespace tbScripts
{

/// Outcome of the last execution or script call of an environment. A fresh one is a success.
///
/// Format: docs/messages.md lists the texts and codes.
struct ExecutionResult
{
    tbMemory::String message; ///< text of the failure, empty on success

    /// 0 success, 1 error inside the error handling, 2 no interpreter, 3 script made for another
    /// interpreter, 4 no bytecode, 5 runtime error, 6 out of memory.
    std::int32_t code = 0;

    bool success = true; ///< whether it ended without an error
};

} // namespace tbScripts

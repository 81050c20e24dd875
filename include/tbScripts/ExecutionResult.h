#pragma once

#include "tbScripts/ResultCodes.h"

#include <tbMemory/String.h>

#include <cstdint>

namespace tbScripts
{

/// Outcome of the last execution or script call of an environment. A new result reads as a success.
///
/// Format: docs/messages.md lists the messages and codes.
struct ExecutionResult
{
    tbMemory::String message;              ///< what failed, empty on success
    std::int32_t code = EXECUTION_SUCCESS; ///< see ResultCodes.h
    bool success = true;                   ///< whether it returned without an error
};

} // namespace tbScripts

#pragma once

#include "tbScripts/ResultCodes.h"

#include <tbMemory/String.h>

#include <cstdint>

namespace tbScripts
{

/// Outcome of the last compilation of a script. A new result reads as a success.
///
/// Format: docs/messages.md lists the messages and codes.
struct CompilationResult
{
    tbMemory::String message;                      ///< what failed, empty on success
    std::uint32_t errorCode = COMPILATION_SUCCESS; ///< see ResultCodes.h
    bool success = true;                           ///< whether the script has a compiled form
};

} // namespace tbScripts

#pragma once

#include <tbMemory/String.h>

#include <cstdint>

namespace tbScripts
{

/// Outcome of the last compilation of a script. A new result reads as a success.
///
/// Format: docs/messages.md lists the messages and codes.
struct CompilationResult
{
    tbMemory::String message;    ///< what failed, empty on success
    std::uint32_t errorCode = 0; ///< 0 success, 2 no interpreter, 3 syntax error, 4 out of memory
    bool success = true;         ///< whether the script has a compiled form
};

} // namespace tbScripts

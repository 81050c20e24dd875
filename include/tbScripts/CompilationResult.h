#pragma once

#include <tbMemory/String.h>

#include <cstdint>

namespace tbScripts
{

/// Outcome of the last compilation of a script. A fresh one reads as a success.
///
/// Format: docs/messages.md lists the texts and codes.
struct CompilationResult
{
    tbMemory::String message;    ///< text of the failure, empty on success
    std::uint32_t errorCode = 0; ///< 0 success, 2 no interpreter, 3 syntax error, 4 out of memory
    bool success = true;         ///< whether there is a compiled form
};

} // namespace tbScripts

#pragma once

#include "tbScripts/ResultCodes.h"

#include <tbMemory/BufferCast.h>
#include <tbMemory/String.h>

namespace tbScripts
{

/// Outcome of reading declarations.
///
/// Format: docs/messages.md lists the errors, docs/script-declarations.md says when each of them
/// is reported.
template <typename T>
struct ContentLoadResult
{
    tbMemory::BufferCast<tbMemory::String> errors; ///< in the order of the declarations
    tbMemory::BufferCast<T*> objects; ///< not owned; scripts belong to the `ScriptManager`

    /// See ResultCodes.h. With `CONTENT_LOAD_FAILURE` no script was created or updated.
    unsigned int status = CONTENT_LOAD_SUCCESS;
};

} // namespace tbScripts

#pragma once

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

    /// 0: success. 1: an array of declarations, of which at least one failed. 2: no script was
    /// created or updated, because the input is unreadable, of the wrong kind, or incomplete.
    unsigned int status = 0;
};

} // namespace tbScripts

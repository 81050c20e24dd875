#pragma once

#include <tbMemory/BufferCast.h>
#include <tbMemory/String.h>

namespace tbScripts
{

/// What became of a declaration text.
///
/// Format: docs/messages.md lists the errors, docs/script-declarations.md which of them is told
/// when.
template <typename T>
struct ContentLoadResult
{
    tbMemory::BufferCast<tbMemory::String> errors; ///< in the order met
    tbMemory::BufferCast<T*> objects; ///< not owned; scripts belong to the `ScriptManager`

    /// 0: success. 1: an array of declarations, of which at least one failed. 2: nothing came of
    /// it: not readable, of the wrong kind, or incomplete.
    unsigned int status = 0;
};

} // namespace tbScripts

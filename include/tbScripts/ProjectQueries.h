#pragma once

#include <tbMemory/BufferCast.h>
#include <tbMemory/String.h>

namespace tbScripts
{

class ResourceDeclAugmentCallback;
class Script;

/// What `ProjectLoader::save` is asked for.
struct ProjectSaveQuery
{
    /// The project's own path; that of its scripts is derived from it.
    tbMemory::String path;

    void* userData = nullptr; ///< the host's; carried along and not used
};

/// What `ProjectLoader::load` is asked for.
struct ProjectLoadQuery
{
    tbMemory::String path; ///< of the scripts file itself

    /// Told of each script before it is compiled; may be null. Not owned.
    ResourceDeclAugmentCallback* callback = nullptr;
};

/// What came of `ProjectLoader::load`.
struct ProjectLoadResult
{
    /// In the order of the file. Not owned: they belong to the `ScriptManager`.
    tbMemory::BufferCast<Script*> scripts;
};

} // namespace tbScripts

#pragma once

#include <tbMemory/BufferCast.h>
#include <tbMemory/String.h>

namespace tbScripts
{

class ResourceDeclAugmentCallback;
class Script;

/// Input of `ProjectLoader::save`.
struct ProjectSaveQuery
{
    /// Path of the project; the path of its scripts file is derived from it.
    tbMemory::String path;

    void* userData = nullptr; ///< the host's; the library does not use it
};

/// Input of `ProjectLoader::load`.
struct ProjectLoadQuery
{
    tbMemory::String path; ///< path of the scripts file itself

    /// Called for each script before it is compiled; may be null. Not owned.
    ResourceDeclAugmentCallback* callback = nullptr;
};

/// Result of `ProjectLoader::load`.
struct ProjectLoadResult
{
    /// The loaded scripts in the order of the file. The `ScriptManager` owns them.
    tbMemory::BufferCast<Script*> scripts;
};

} // namespace tbScripts

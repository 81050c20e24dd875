#pragma once

#include "tbScripts/Api.h"
#include "tbScripts/ProjectQueries.h"

namespace tbScripts
{

/// Saves all scripts of the `ScriptManager` beside a project, and loads them back.
///
/// Format: docs/script-declarations.md.
class TBSCRIPTS_API ProjectLoader
{
public:
    ProjectLoader() = delete; // static operations only

    /// Writes all scripts into one file beside the project, resolved as `ContentLoader::outputData`
    /// resolves it: the project's path up to its last ".", followed by "_scripts.tbscripts".
    ///
    /// Kept: a "." in the name of a folder counts too.
    /// On failure: a file that cannot be opened is logged (tag "ContentLoader"). Nothing is
    /// returned.
    static void save(const ProjectSaveQuery& query);

    /// Reads a file that `save` has written into the `ScriptManager`, and compiles each script.
    ///
    /// Scripts of the same names are updated in place, others stay. Elements that are no complete
    /// declarations are skipped. How each script compiled is said by its own
    /// `getLastCompilationResult`.
    /// On failure: no scripts; what cannot be read or parsed is logged as by
    /// `ContentLoader::inputData`.
    static ProjectLoadResult load(const ProjectLoadQuery& query);
};

} // namespace tbScripts

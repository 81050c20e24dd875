#pragma once

#include "tbScripts/Api.h"
#include "tbScripts/ProjectQueries.h"

namespace tbScripts
{

/// Saves all scripts of the `ScriptManager` beside a project, and loads them back.
///
/// @code
/// ProjectSaveQuery saving;
/// saving.path = "level1.proj"; // writes level1_scripts.tbscripts
/// ProjectLoader::save(saving);
/// @endcode
///
/// `save` takes the path of the project, `load` that of the scripts file:
///
/// @code
/// ProjectLoadQuery query;
/// query.path = "level1_scripts.tbscripts";
/// query.callback = &startList;
/// const ProjectLoadResult project = ProjectLoader::load(query);
/// @endcode
///
/// Format: docs/script-declarations.md.
class TBSCRIPTS_API ProjectLoader
{
public:
    ProjectLoader() = delete; // static operations only

    /// Writes all scripts into one file beside the project, as `ContentLoader::outputData` does.
    /// The file's name is the project's path up to its last ".", followed by "_scripts.tbscripts".
    ///
    /// On failure: a file that cannot be opened is logged (tag "ContentLoader").
    /// Compatibility: a "." in the name of a folder counts as the last one too (decision 0014).
    static void save(const ProjectSaveQuery& query);

    /// Reads a file that `save` has written into the `ScriptManager`, and compiles each script.
    ///
    /// Scripts of the same names are updated in place, other scripts stay. Elements that are no
    /// complete declarations are skipped. `Script::getLastCompilationResult` says how a script
    /// compiled.
    /// On failure: returns no scripts. An unreadable or invalid file is logged as by
    /// `ContentLoader::inputData`.
    static ProjectLoadResult load(const ProjectLoadQuery& query);
};

} // namespace tbScripts

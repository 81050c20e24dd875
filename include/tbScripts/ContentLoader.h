#pragma once

#include "tbScripts/Api.h"
#include "tbScripts/ContentLoadResult.h"

#include <tbExport/ExporterLoadResult.h>
#include <tbMemory/String.h>
#include <tbMemory/StringView.h>

namespace tbExport
{
class Exportable;
class Node;
} // namespace tbExport

namespace tbScripts
{

class Script;

/// Reads and writes declaration files, and turns declarations into scripts of the `ScriptManager`.
///
/// @code
/// const ContentLoadResult<Script> loaded =
///     ContentLoader::loadScriptDeclaration("patrol.json", true);
/// for (const tbMemory::String& error : loaded.errors)
///     std::cout << error << '\n';
/// @endcode
///
/// Relative paths to read are resolved against the working directory of
/// `tbResources::ResourceManager`. A directory, a FIFO and an unreadable file count as missing.
///
/// Format: docs/script-declarations.md.
class TBSCRIPTS_API ContentLoader
{
public:
    ContentLoader() = delete; // static operations only

    /// Reads and parses a file.
    ///
    /// On failure: returns a result without root. A missing file is logged (tag
    /// "ContentLoader::inputData"), invalid JSON as by `inputDataSources`.
    static tbExport::ExporterLoadResult inputData(const tbMemory::StringView& path);

    /// Parses a JSON document.
    ///
    /// On failure: returns a result without root. Six log entries say what is wrong and where (tag
    /// "ContentLoader::inputDataSources", separators with tag "-").
    static tbExport::ExporterLoadResult inputDataSources(const tbMemory::StringView& text);

    /// Returns all bytes of a file.
    ///
    /// On failure: returns an empty string and logs nothing.
    static tbMemory::String inputDataStr(const tbMemory::StringView& path);

    /// Writes `data` to a file and returns whether the file could be opened. The file's name is the
    /// working path directly followed by `path`.
    ///
    /// A regular file is replaced as a whole or not at all: if the disk is full or the process is
    /// killed during the call, the old file stays. Links are followed and permissions preserved.
    /// Devices, pipes, and files that cannot be replaced in their folder are written in place.
    /// On failure: a file that cannot be opened is logged (tag "ContentLoader"). If `path` is
    /// absolute and differs from the path that was tried, a second message has the latter.
    /// Compatibility: a failure while writing is not reported (decision 0014).
    static bool outputData(const tbMemory::StringView& data, const tbMemory::StringView& path);

    /// Prints `tree` as JSON and writes it as `outputData` does. Returns false for null.
    static bool saveTreeDeclaration(tbExport::Node* tree, const tbMemory::StringView& path);

    /// The same for an object that writes itself into a tree.
    static bool
    saveObjectDeclaration(tbExport::Exportable* object, const tbMemory::StringView& path);

    /// Reads a file and processes its declarations.
    ///
    /// Compatibility: `compile` is ignored, the scripts are always compiled (decision 0014).
    static ContentLoadResult<Script>
    loadScriptDeclaration(const tbMemory::StringView& path, bool compile);

    /// Creates or updates the scripts that `text` declares, and compiles them if `compile` is set.
    /// `text` holds one declaration or an array of them.
    ///
    /// Errors go into the result, not into the log; an element that fails reports its first error
    /// only. `Script::getLastCompilationResult` says how a script compiled.
    static ContentLoadResult<Script>
    processScriptSources(const tbMemory::StringView& text, bool compile);

    /// The same for one declaration, which the caller keeps. Null counts as a node that is no
    /// object.
    static ContentLoadResult<Script> processScriptTree(tbExport::Node* declaration, bool compile);
};

} // namespace tbScripts

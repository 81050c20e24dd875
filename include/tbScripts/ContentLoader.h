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
/// Format: docs/script-declarations.md. Paths to read are resolved against the working directory of
/// `tbResources::ResourceManager`, absolute ones taken as they are. A path that is a directory, a
/// FIFO or unreadable counts as a missing file.
class TBSCRIPTS_API ContentLoader
{
public:
    ContentLoader() = delete; // static operations only

    /// Reads and parses a file.
    ///
    /// On failure: a result without root. A missing file is logged (tag
    /// "ContentLoader::inputData"), a text that is no JSON as below.
    static tbExport::ExporterLoadResult inputData(const tbMemory::StringView& path);

    /// Parses a text.
    ///
    /// On failure: a result without root; what is wrong and where is logged in six entries (tag
    /// "ContentLoader::inputDataSources", separators with tag "-").
    static tbExport::ExporterLoadResult inputDataSources(const tbMemory::StringView& text);

    /// Returns all bytes of a file; empty, and nothing logged, if it cannot be read.
    static tbMemory::String inputDataStr(const tbMemory::StringView& path);

    /// Writes `data` to the file whose name is the working path directly followed by `path`, and
    /// returns whether it could be opened.
    ///
    /// A file is replaced whole or not at all: if the disk is full or the process ends meanwhile,
    /// the old one stays. Links are followed and permissions kept. Devices and pipes, and files
    /// that cannot be replaced in their folder, are written in place.
    /// On failure: one that cannot be opened is logged (tag "ContentLoader"). Kept: a failure while
    /// writing is not reported.
    static bool outputData(const tbMemory::StringView& data, const tbMemory::StringView& path);

    /// Prints `tree` and writes it as `outputData` does. False for null.
    static bool saveTreeDeclaration(tbExport::Node* tree, const tbMemory::StringView& path);

    /// The same for an object that writes itself into a tree.
    static bool
    saveObjectDeclaration(tbExport::Exportable* object, const tbMemory::StringView& path);

    /// Reads a file and processes its text. Kept: the second argument is ignored, the scripts are
    /// always compiled.
    static ContentLoadResult<Script>
    loadScriptDeclaration(const tbMemory::StringView& path, bool compile);

    /// Makes or updates the scripts that `text` declares, one declaration or an array of them, and
    /// compiles them if `compile` says so.
    ///
    /// Errors are in the result, not in the log; of an element that fails only the first one. How a
    /// script compiled is said by its own `getLastCompilationResult`.
    static ContentLoadResult<Script>
    processScriptSources(const tbMemory::StringView& text, bool compile);

    /// The same for one declaration. `declaration` stays the caller's; null is no object.
    static ContentLoadResult<Script> processScriptTree(tbExport::Node* declaration, bool compile);
};

} // namespace tbScripts

#pragma once

#include <tbExport/ExporterLoadResult.h>

#include <string>
#include <string_view>
#include <vector>

namespace tbExport
{
class Node;
}

namespace tool
{

/// A JSON file with script declarations: one, an array of them, or a project's list.
struct Document
{
    tbExport::ExporterLoadResult parsed;       // owns the declarations
    std::vector<tbExport::Node*> declarations; // of any kind, checked by whoever uses them
    std::string trouble;                       // a whole line if there is nothing to use
};

/// Reads and parses the file `path`.
Document readDocument(const std::string& path);

/// Whether files of that name are documents: .json and .tbscripts. All others are scripts.
bool isDocumentName(std::string_view path);

/// Whether the file looks as if it was meant for scripts, and not as some other JSON. What cannot
/// be parsed does.
bool isAboutScripts(const Document& document);

} // namespace tool

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
    std::vector<tbExport::Node*> declarations; // of any kind; the caller checks them
    std::string trouble;                       // a whole line if the document is unusable
};

/// Reads and parses the file `path`.
Document readDocument(const std::string& path);

/// Whether a file of that name is a document: .json and .tbscripts. All others are scripts.
bool isDocumentName(std::string_view path);

/// Whether the file looks like script declarations and not like other JSON. A file that cannot be
/// parsed does.
bool isAboutScripts(const Document& document);

} // namespace tool

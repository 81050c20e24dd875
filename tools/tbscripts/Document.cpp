#include "tbscripts/Document.h"

#include "tbscripts/Console.h"
#include "tbscripts/Escaping.h"
#include "tbscripts/FileReading.h"
#include "tbscripts/FolderWalk.h"

#include <tbExport/JsonExporter.h>
#include <tbExport/Node.h>

#include <algorithm>
#include <cstddef>
#include <cstdio>

namespace tool
{

namespace
{

constexpr const char* MEMBER_SCRIPTS = "scripts";
constexpr const char* MEMBER_SOURCES = "sources";

std::string troubleWith(const std::string& path, std::string_view reason)
{
    return "tbscripts: " + show(path) + ": " + escape(reason);
}

// The parser says "line 3, column 14: syntax error"; editors jump to "file:3: ".
std::string describeParseError(const std::string& path, const tbExport::ExporterLoadResult& parsed)
{
    const std::string error(parsed.getError());
    std::size_t line = 0;
    std::size_t column = 0;
    int length = 0;
    const int found =
        std::sscanf(error.c_str(), "line %zu, column %zu: %n", &line, &column, &length);
    if (found != 2 || length == 0)
        return troubleWith(path, error);
    return show(path) + ':' + std::to_string(line) + ": " +
           escape(std::string_view(error).substr(static_cast<std::size_t>(length))) +
           " at column " + std::to_string(column) + ": " + escape(parsed.getErrorContext());
}

void addElements(Document& document, tbExport::Node& array)
{
    for (std::size_t i = 0; i < array.getSize(); ++i)
        document.declarations.push_back(array.getElement(i));
}

// Finds the declarations and returns the error, empty if there is none.
std::string findDeclarations(Document& document)
{
    tbExport::Node& root = *document.parsed.getRoot();
    if (root.isArray())
    {
        addElements(document, root);
        return {};
    }
    if (!root.isObject())
        return "is neither a script declaration nor a list of them";
    tbExport::Node* const scripts = root.getMember(MEMBER_SCRIPTS);
    if (!scripts)
    {
        document.declarations.push_back(&root);
        return {};
    }
    if (!scripts->isArray())
        return "the member \"scripts\" is not an array";
    addElements(document, *scripts);
    return {};
}

} // namespace

Document readDocument(const std::string& path)
{
    Document document;
    const FileContent content = readFile(path);
    if (!content.trouble.empty())
    {
        document.trouble = troubleWith(path, content.trouble);
        return document;
    }
    document.parsed = tbExport::JsonExporter::importIntoTree(content.bytes);
    if (!document.parsed.getRoot())
    {
        document.trouble = describeParseError(path, document.parsed);
        return document;
    }
    const std::string problem = findDeclarations(document);
    if (!problem.empty())
        document.trouble = troubleWith(path, problem);
    return document;
}

bool isDocumentName(std::string_view path)
{
    return endsWith(path, ".json") || endsWith(path, ".tbscripts");
}

bool isAboutScripts(const Document& document)
{
    const tbExport::Node* const root = document.parsed.getRoot();
    if (!root || root->getMember(MEMBER_SCRIPTS))
        return true;
    return std::any_of(
        document.declarations.begin(),
        document.declarations.end(),
        [](const tbExport::Node* node) { return node->getMember(MEMBER_SOURCES) != nullptr; });
}

} // namespace tool

#include "tbExport/JsonExporter.h"

#include "JsonErrorPlace.h"
#include "JsonPrinter.h"
#include "JsonReader.h"
#include "JsonTree.h"
#include "tbExport/Exportable.h"
#include "tbExport/Node.h"

#include <string_view>
#include <utility>

namespace tbExport
{

namespace
{

/// The text without the byte order mark that some editors put in front. It is no part of the
/// document, and no column either.
tbMemory::StringView skipByteOrderMark(std::string_view text)
{
    constexpr std::string_view MARK = "\xEF\xBB\xBF";
    if (text.substr(0, MARK.size()) == MARK)
        text.remove_prefix(MARK.size());
    return text;
}

} // namespace

ExporterLoadResult JsonExporter::importIntoTree(tbMemory::StringView text)
{
    const tbMemory::StringView document = skipByteOrderMark(text);
    json::ReadDocument read = json::readDocument(document);
    if (!read.error.empty())
    {
        return ExporterLoadResult(
            json::describeError(document, read.offset, read.error),
            json::describeContext(document, read.offset));
    }

    Node root;
    json::valueOf(root) = std::move(read.root);
    return ExporterLoadResult(std::move(root));
}

tbMemory::String JsonExporter::exportTreeIntoString(const Node* tree)
{
    if (tree == nullptr)
        return tbMemory::String();
    return json::printDocument(json::valueOf(*tree));
}

tbMemory::String JsonExporter::exportObjectIntoString(Exportable* object)
{
    if (object == nullptr)
        return tbMemory::String();
    Node node;
    node.setObject();
    object->exportClassToTree(&node);
    return exportTreeIntoString(&node);
}

} // namespace tbExport

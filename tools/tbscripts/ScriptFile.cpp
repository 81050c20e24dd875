#include "tbscripts/ScriptFile.h"

#include "tbscripts/Console.h"
#include "tbscripts/Document.h"
#include "tbscripts/Escaping.h"
#include "tbscripts/FileReading.h"

#include <tbScripts/ContentLoader.h>
#include <tbScripts/ScriptManager.h>

#include <cstddef>

namespace tool
{

namespace
{

ScriptFile readSourceFile(const std::string& path)
{
    ScriptFile file;
    const FileContent content = readFile(path);
    if (!content.trouble.empty())
    {
        file.troubles.push_back("tbscripts: " + show(path) + ": " + content.trouble);
        return file;
    }
    tbScripts::Script script;
    script.setName(path);
    script.setTargetInterpreter(tbScripts::INTERPRETER_LUA);
    script.setSources(content.bytes); // the interpreter skips a byte order mark and a "#" line
    file.scripts.push_back({show(path), script});
    return file;
}

void takeScript(ScriptFile& file, const std::string& path, tbExport::Node* node, std::size_t place)
{
    const auto result = tbScripts::ContentLoader::processScriptTree(node, false);
    if (result.objects.empty())
    {
        file.troubles.push_back(
            "tbscripts: " + show(path) + ": element " + std::to_string(place) + ": " +
            escape(result.errors[0]));
        return;
    }
    const tbScripts::Script& script = *result.objects[0];
    const tbMemory::String name = script.getName();
    file.scripts.push_back({show(path) + '(' + escape(name) + ')', script});
    // A script of the same name in another document is a new script, no update of this one.
    tbScripts::ScriptManager::getInstanceRef().erase(name);
}

} // namespace

ScriptFile readScriptFile(const std::string& path)
{
    return isDocumentName(path) ? takeScripts(path, readDocument(path)) : readSourceFile(path);
}

ScriptFile takeScripts(const std::string& path, const Document& document)
{
    ScriptFile file;
    if (!document.trouble.empty())
        file.troubles.push_back(document.trouble);
    for (std::size_t i = 0; i < document.declarations.size(); ++i)
        takeScript(file, path, document.declarations[i], i + 1);
    return file;
}

} // namespace tool

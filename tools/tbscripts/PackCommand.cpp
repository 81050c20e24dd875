#include "tbscripts/CommandLine.h"
#include "tbscripts/Commands.h"
#include "tbscripts/Console.h"
#include "tbscripts/Document.h"
#include "tbscripts/FileReading.h"
#include "tbscripts/FileWriting.h"
#include "tbscripts/FolderWalk.h"

#include <tbExport/Node.h>
#include <tbScripts/Script.h>

#include <cstddef>
#include <filesystem>
#include <system_error>
#include <utility>

namespace tool
{

namespace
{

struct NamedSource
{
    std::string name;
    std::string bytes;
};

// Reports each problem and returns whether there was none.
bool reportAll(const std::vector<std::string>& troubles)
{
    for (const std::string& trouble : troubles)
        report("tbscripts: " + trouble);
    return troubles.empty();
}

bool isFolder(const std::string& path)
{
    std::error_code error;
    if (std::filesystem::is_directory(path, error))
        return true;
    reportTrouble(path, error ? error.message() : "is not a folder");
    return false;
}

// Reads all scripts. Reports unreadable ones and returns whether there were none.
bool collect(const std::string& folder, std::vector<NamedSource>& sources)
{
    if (!isFolder(folder))
        return false;
    const FolderContent content = walkFolder(folder, {".lua"});
    bool isComplete = reportAll(content.troubles);
    for (const std::string& name : content.files)
    {
        const std::string path = (std::filesystem::path(folder) / name).string();
        FileContent file = readFile(path);
        if (!file.trouble.empty())
        {
            reportTrouble(path, file.trouble);
            isComplete = false;
        }
        sources.push_back({name, std::move(file.bytes)});
    }
    return isComplete;
}

tbExport::Node makeList(const std::vector<NamedSource>& sources)
{
    tbExport::Node root;
    root.setObject();
    tbExport::Node* const scripts = root.addMember("scripts");
    scripts->setArray();
    for (const NamedSource& source : sources)
    {
        tbScripts::Script script;
        script.setName(source.name);
        script.setTargetInterpreter(tbScripts::INTERPRETER_LUA);
        script.setSources(source.bytes);
        tbExport::Node* const declaration = scripts->addElement();
        declaration->setObject();
        script.exportClassToTree(declaration);
    }
    return root;
}

bool isSame(const tbExport::Node& declaration, const NamedSource& source)
{
    const tbExport::Node* const name = declaration.getMember("name");
    const tbExport::Node* const bytes = declaration.getMember("sources");
    return name && bytes && name->getString() == source.name && bytes->getString() == source.bytes;
}

// Reads the list as every other reader does.
bool readsBack(const std::string& path, const std::vector<NamedSource>& sources)
{
    const Document document = readDocument(path);
    if (!document.trouble.empty() || document.declarations.size() != sources.size())
        return false;
    for (std::size_t i = 0; i < sources.size(); ++i)
    {
        if (!isSame(*document.declarations[i], sources[i]))
            return false;
    }
    return true;
}

// Returns what is wrong with `path`, empty if the list was written.
std::string write(const std::string& path, const std::vector<NamedSource>& sources)
{
    if (!endsWith(path, ".tbscripts"))
        return "the name of a list ends with .tbscripts";
    std::string trouble = troubleAsOutput(path);
    if (!trouble.empty())
        return trouble;
    tbExport::Node list = makeList(sources);
    trouble = writeTree(path, list);
    if (!trouble.empty())
        return trouble;
    return readsBack(path, sources) ? "" : "was written, but does not read back the same";
}

} // namespace

EXIT_STATUS packScripts(const CommandLine& line)
{
    std::vector<NamedSource> sources;
    if (!collect(line.paths[0], sources))
        return EXIT_STATUS::TROUBLE;
    const std::string trouble = write(line.output, sources);
    if (!trouble.empty())
    {
        reportTrouble(line.output, trouble);
        return EXIT_STATUS::TROUBLE;
    }
    print(show(line.output) + ": " + count(sources.size(), "script") + " packed\n");
    return EXIT_STATUS::WELL;
}

} // namespace tool

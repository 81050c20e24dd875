#include "tables/Table.h"

#include "tbscripts/CommandLine.h"
#include "tbscripts/Commands.h"
#include "tbscripts/Console.h"
#include "tbscripts/Escaping.h"
#include "tbscripts/Failure.h"
#include "tbscripts/ScriptFile.h"

#include <tbExport/JsonExporter.h>
#include <tbExport/Node.h>
#include <tbScripts/StringUtils.h>

#include <cstddef>
#include <optional>

namespace tool
{

namespace
{

struct Entry
{
    std::string name;
    std::string type;
    std::size_t size;
    std::optional<PlacedMessage> failure;
};

std::vector<Entry> examine(std::vector<LabelledScript>& scripts)
{
    std::vector<Entry> entries;
    for (LabelledScript& scriptOfFile : scripts)
    {
        tbScripts::Script& script = scriptOfFile.script;
        const auto type =
            tbScripts::StringUtils::interpreterToString(script.getTargetInterpreter());
        entries.push_back(
            {std::string(script.getName()),
             std::string(type),
             script.getSources().size(),
             compile(script)});
    }
    return entries;
}

std::string describeOutcome(const std::optional<PlacedMessage>& failure)
{
    if (!failure)
        return "yes";
    const std::string line = failure->line == 0 ? "" : ", line " + std::to_string(failure->line);
    return "no" + line + ": " + escape(failure->text);
}

std::string makeTable(const std::vector<Entry>& entries)
{
    using tables::ALIGNMENT;
    std::vector<tables::Row> rows = {{"NAME", "TYPE", "BYTES", "COMPILED"}};
    for (const Entry& entry : entries)
        rows.push_back(
            {show(entry.name),
             entry.type,
             std::to_string(entry.size),
             describeOutcome(entry.failure)});
    return tables::layOut(
        rows, {ALIGNMENT::LEFT, ALIGNMENT::LEFT, ALIGNMENT::RIGHT, ALIGNMENT::LEFT});
}

void addTo(tbExport::Node& array, const Entry& entry)
{
    tbExport::Node* const object = array.addElement();
    object->setObject();
    object->addMember("name")->setString(entry.name);
    object->addMember("type")->setString(entry.type);
    object->addMember("bytes")->setNumber(static_cast<double>(entry.size));
    object->addMember("compiled")->setBool(!entry.failure);
    if (!entry.failure)
        return;
    if (entry.failure->line != 0)
        object->addMember("line")->setNumber(entry.failure->line);
    object->addMember("message")->setString(escape(entry.failure->text));
}

// Into a file or a pipe go the exact bytes of all names, which need not be UTF-8; onto a terminal
// goes only what it can show.
std::string makeJson(const std::vector<Entry>& entries)
{
    tbExport::Node array;
    array.setArray();
    for (const Entry& entry : entries)
        addTo(array, entry);
    const std::string json(tbExport::JsonExporter::exportTreeIntoString(&array));
    return isOutputTerminal() ? escape(json, LAYOUT::KEPT) : json;
}

} // namespace

EXIT_STATUS listScripts(const CommandLine& line)
{
    ScriptFile file = readScriptFile(line.paths[0]);
    EXIT_STATUS status = EXIT_STATUS::WELL;
    for (const std::string& trouble : file.troubles)
    {
        report(trouble);
        status = EXIT_STATUS::TROUBLE;
    }
    const std::vector<Entry> entries = examine(file.scripts);
    for (const Entry& entry : entries)
    {
        if (entry.failure)
            status = worseOf(status, EXIT_STATUS::SCRIPT_FAILED);
    }
    if (status != EXIT_STATUS::TROUBLE || !entries.empty())
        print(line.asJson ? makeJson(entries) : makeTable(entries));
    return status;
}

} // namespace tool

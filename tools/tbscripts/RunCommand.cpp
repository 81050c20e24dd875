#include "tbscripts/CommandLine.h"
#include "tbscripts/Commands.h"
#include "tbscripts/Console.h"
#include "tbscripts/Escaping.h"
#include "tbscripts/Failure.h"
#include "tbscripts/LibraryLog.h"
#include "tbscripts/ScriptArguments.h"
#include "tbscripts/ScriptFile.h"

#include <tbScripts/Environment.h>

#include <cstddef>
#include <iterator>

namespace tool
{

namespace
{

using Scripts = std::vector<LabelledScript>;

// Adds the compiled scripts of all files. Reports all errors.
EXIT_STATUS loadAll(const std::vector<std::string>& paths, Scripts& scripts)
{
    EXIT_STATUS status = EXIT_STATUS::WELL;
    for (const std::string& path : paths)
    {
        ScriptFile file = readScriptFile(path);
        for (const std::string& trouble : file.troubles)
        {
            report(trouble);
            status = worseOf(status, EXIT_STATUS::TROUBLE);
        }
        for (LabelledScript& entry : file.scripts)
        {
            if (const auto failure = compile(entry.script))
            {
                report(describe(entry.label, *failure));
                status = worseOf(status, EXIT_STATUS::SCRIPT_FAILED);
            }
            scripts.push_back(entry);
        }
    }
    return status;
}

// If several scripts begin alike, the interpreter's message fits all of them. So the tool's message
// names all of them.
std::string describeOthers(const Scripts& scripts, std::size_t chosen, std::string_view reason)
{
    std::string others;
    for (std::size_t i = 0; i < scripts.size(); ++i)
    {
        const PlacedMessage placed = placeMessage(reason, scripts[i].script.getSources());
        if (i == chosen || placed.line == 0 || scripts[i].label == scripts[chosen].label)
            continue;
        others += others.empty() ? " (or " : ", ";
        others += scripts[i].label + ':' + std::to_string(placed.line);
    }
    return others.empty() ? others : others + ", which begins alike)";
}

// The error may come from a function of a script that ran before.
std::string describeError(const Scripts& executed, std::string_view reason)
{
    std::size_t chosen = executed.size() - 1;
    PlacedMessage failure = placeMessage(reason, executed[chosen].script.getSources());
    for (std::size_t i = chosen; failure.line == 0 && i > 0; --i)
    {
        failure = placeMessage(reason, executed[i - 1].script.getSources());
        chosen = failure.line == 0 ? chosen : i - 1;
    }
    return describe(executed[chosen].label, failure, LAYOUT::KEPT) +
           describeOthers(executed, chosen, reason);
}

std::string
errorIn(tbScripts::Environment& environment, LibraryLog& log, const tbScripts::Script& script)
{
    const tbMemory::String message = environment.getLastExecutionResult().message;
    log.forget(message);
    return std::string(reasonIn(message, "Error while executing script '", script.getName()));
}

EXIT_STATUS executeAll(const Scripts& scripts, const CommandLine& line, LibraryLog& log)
{
    tbScripts::Environment environment;
    environment.setName("tbscripts");
    environment.setEnvironmentFor(tbScripts::INTERPRETER_LUA);
    Scripts executed;
    for (const LabelledScript& entry : scripts)
    {
        executed.push_back(entry);
        const bool isDone =
            provideArguments(environment, entry.script.getName(), line.scriptArguments) &&
            environment.execute(entry.script);
        if (isDone)
            continue;
        report(describeError(executed, errorIn(environment, log, entry.script)));
        return EXIT_STATUS::SCRIPT_FAILED;
    }
    return EXIT_STATUS::WELL;
}

} // namespace

EXIT_STATUS runScripts(const CommandLine& line)
{
    Scripts scripts;
    const EXIT_STATUS status = loadAll(line.paths, scripts);
    if (status != EXIT_STATUS::WELL)
        return status;
    LibraryLog log;
    return executeAll(scripts, line, log);
}

} // namespace tool

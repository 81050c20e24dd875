#include "tbscripts/CommandLine.h"

#include "tbscripts/Console.h"
#include "tbscripts/Escaping.h"
#include "tbscripts/HelpTexts.h"

#include <tbScripts/Version.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <cstdio>
#include <iterator>
#include <utility>

namespace tool
{

namespace
{

using Arguments = std::vector<std::string>;

struct Description
{
    COMMAND command;
    const char* name;
    const char* helpText;
    const char* path; // how messages call what it works on
    bool takesSeveralPaths;
    bool writes;
};

constexpr std::array<Description, 5> DESCRIPTIONS = {
    {{COMMAND::RUN, "run", help::RUN, "FILE", true, false},
     {COMMAND::CHECK, "check", help::CHECK, "FILE", true, false},
     {COMMAND::PACK, "pack", help::PACK, "DIR", false, true},
     {COMMAND::UNPACK, "unpack", help::UNPACK, "FILE", false, true},
     {COMMAND::LIST, "list", help::LIST, "FILE", false, false}}};

const Description* findDescription(const std::string& name)
{
    const auto found = std::find_if(
        DESCRIPTIONS.begin(),
        DESCRIPTIONS.end(),
        [&name](const Description& description) { return name == description.name; });
    return found == DESCRIPTIONS.end() ? nullptr : &*found;
}

std::string versionText()
{
    return "tbscripts " + std::to_string(TBSCRIPTS_VERSION_MAJOR) + '.' +
           std::to_string(TBSCRIPTS_VERSION_MINOR) + '.' + std::to_string(TBSCRIPTS_VERSION_PATCH) +
           '\n';
}

CommandLine refuse(const std::string& reason, const std::string& command = {})
{
    report("tbscripts: " + escape(reason));
    report("Try 'tbscripts " + (command.empty() ? "" : command + ' ') + "--help'.");
    CommandLine result;
    result.status = EXIT_STATUS::TROUBLE;
    return result;
}

CommandLine say(const std::string& text)
{
    print(text);
    return {};
}

// Takes the scripts' own arguments off: what follows the first "--".
Arguments splitOffScriptArguments(Arguments& arguments)
{
    const auto separator = std::find(arguments.begin(), arguments.end(), "--");
    if (separator == arguments.end())
        return {};
    Arguments own(std::next(separator), arguments.end());
    arguments.erase(separator, arguments.end());
    return own;
}

// The parser takes "[a,b]" for two values; as a path it is one.
void protectBrackets(Arguments& arguments)
{
    for (std::string& argument : arguments)
    {
        if (!argument.empty() && argument.front() == '[' && argument.back() == ']')
            argument.insert(0, "./");
    }
}

void addPaths(CLI::App& command, const Description& description, Arguments& paths)
{
    CLI::Option* const option = command.add_option(description.path);
    option->required();
    if (description.takesSeveralPaths)
        option->expected(-1)->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    // Each as it was given: converting the whole list would take "{}" for an empty one.
    option->each([&paths](std::string path) { paths.push_back(std::move(path)); });
}

void addOptions(CLI::App& command, const Description& description, CommandLine& result)
{
    if (description.writes)
    {
        CLI::Option* const output = command.add_option("-o,--output");
        output->required()->type_name(description.command == COMMAND::PACK ? "FILE" : "DIR");
        output->each([&result](std::string path) { result.output = std::move(path); });
    }
    if (description.command == COMMAND::UNPACK)
        command.add_flag("-f,--force", result.mayOverwrite);
    if (description.command == COMMAND::LIST)
        command.add_flag("--json", result.asJson);
}

CommandLine readArgumentsOf(const Description& description, Arguments arguments)
{
    CommandLine result;
    result.command = description.command;
    if (description.command == COMMAND::RUN)
        result.scriptArguments = splitOffScriptArguments(arguments);
    protectBrackets(arguments);

    CLI::App parser;
    addPaths(parser, description, result.paths);
    addOptions(parser, description, result);
    try
    {
        std::reverse(arguments.begin(), arguments.end()); // the parser takes them from the end
        parser.parse(std::move(arguments));
    }
    catch (const CLI::CallForHelp&)
    {
        return say(description.helpText);
    }
    catch (const CLI::ParseError& error)
    {
        return refuse(std::string(description.name) + ": " + error.what(), description.name);
    }
    return result;
}

} // namespace

CommandLine readCommandLine(std::vector<std::string> arguments)
{
    if (arguments.empty())
    {
        std::fputs(help::OVERVIEW, stderr);
        CommandLine result;
        result.status = EXIT_STATUS::TROUBLE;
        return result;
    }
    const std::string first = arguments.front();
    if (first == "--help" || first == "-h")
        return say(help::OVERVIEW);
    if (first == "--version")
        return say(versionText());
    const Description* const description = findDescription(first);
    if (!description)
        return refuse((first[0] == '-' ? "unknown option '" : "unknown command '") + first + "'");
    arguments.erase(arguments.begin());
    return readArgumentsOf(*description, std::move(arguments));
}

} // namespace tool

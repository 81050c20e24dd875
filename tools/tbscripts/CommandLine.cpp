// The commands, their options and their help: each has one function here and one in Commands.h.

#include "tbscripts/CommandLine.h"

#include "tbscripts/Commands.h"
#include "tbscripts/Console.h"
#include "tbscripts/Escaping.h"

#include <tbScripts/Version.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <iterator>
#include <utility>

namespace tool
{

namespace
{

using Arguments = std::vector<std::string>;

constexpr std::size_t WIDTH_OF_NAMES = 29; // in help

// What is read into, and what the process returns afterwards. The parser refers to both.
struct Invocation
{
    CommandLine line;
    EXIT_STATUS status = EXIT_STATUS::WELL;
};

std::string versionText()
{
    return "tbscripts " + std::to_string(TBSCRIPTS_VERSION_MAJOR) + '.' +
           std::to_string(TBSCRIPTS_VERSION_MINOR) + '.' + std::to_string(TBSCRIPTS_VERSION_PATCH);
}

CLI::App& addCommand(
    CLI::App& tool,
    Invocation& invocation,
    const char* name,
    const char* description,
    Command command)
{
    CLI::App& added = *tool.add_subcommand(name, description)->group("Commands");
    added.set_help_flag("-h,--help", "Show this help");
    added.callback([&invocation, command] { invocation.status = command(invocation.line); });
    return added;
}

CLI::Option& addPath(CLI::App& command, Arguments& paths, const char* name, const char* description)
{
    CLI::Option& option = *command.add_option(name)->description(description)->required();
    // Each as it was given: converting the whole list would take "{}" for an empty one.
    option.each([&paths](std::string path) { paths.push_back(std::move(path)); });
    return option;
}

void addPaths(CLI::App& command, Arguments& paths, const char* name, const char* description)
{
    addPath(command, paths, name, description)
        .expected(CLI::detail::expected_max_vector_size)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
}

void addOutput(CLI::App& command, std::string& output, const char* type, const char* description)
{
    command.add_option("-o,--output")
        ->description(description)
        ->required()
        ->type_name(type)
        ->each([&output](std::string path) { output = std::move(path); });
}

void addRun(CLI::App& tool, Invocation& invocation)
{
    CLI::App& command = addCommand(
        tool,
        invocation,
        "run",
        "Runs scripts in one environment, in the order given.",
        runScripts);
    addPaths(command, invocation.line.paths, "FILE", "A script or a document");
    command.footer(
        R"help(All files are read and compiled first; if one of them is broken, nothing runs.
The first error ends the run and is shown as 'file:line: message', for a script
of a document as 'file(script):line: message'.

What follows '--' is for the scripts: arg[1], arg[2] and so on. arg[0] is the
name of the running script. A first line that begins with '#' is skipped.

Examples:
  tbscripts run hello.lua
  tbscripts run config.json main.lua -- --level 3
  tbscripts run ./-odd-name.lua

Exit status:
  0  all is well
  1  a script did not compile, or raised an error
  2  wrong usage, or a file that cannot be read
A script that calls os.exit decides itself.)help");
}

void addCheck(CLI::App& tool, Invocation& invocation)
{
    CLI::App& command = addCommand(
        tool,
        invocation,
        "check",
        "Compiles scripts and reports each one that fails. Runs nothing.",
        checkScripts);
    addPaths(command, invocation.line.paths, "FILE", "A script, a document or a folder");
    command.footer(
        R"help(Folders are searched at any depth for .lua, .json and .tbscripts files, which
are taken in the order of their names. A .json file found there that declares no
scripts is passed over. Failures are shown as 'file:line: message', for a script
of a document as 'file(script):line: message'.

Examples:
  tbscripts check main.lua
  tbscripts check scripts/ levels/level1_scripts.tbscripts

Exit status:
  0  everything compiles
  1  a script does not
  2  wrong usage, or a file that cannot be read)help");
}

void addPack(CLI::App& tool, Invocation& invocation)
{
    CLI::App& command = addCommand(
        tool,
        invocation,
        "pack",
        "Packs all .lua files below a folder into a project's list.",
        packScripts);
    addPath(command, invocation.line.paths, "DIR", "The folder");
    addOutput(command, invocation.line.output, "FILE", "The list; its name ends with .tbscripts");
    command.footer(
        R"help(The scripts are named after their files, relative to the folder, and sorted.
Every byte of them is kept; they are not compiled. A list that exists is
replaced, whole or not at all. What was written is read back and compared.

Examples:
  tbscripts pack scripts/ -o game_scripts.tbscripts

Exit status:
  0  all is well
  2  wrong usage, or a file that cannot be read or written)help");
}

void addUnpack(CLI::App& tool, Invocation& invocation)
{
    CLI::App& command = addCommand(
        tool,
        invocation,
        "unpack",
        "Writes the scripts of a document into files: the reverse of pack.",
        unpackScripts);
    addPath(command, invocation.line.paths, "FILE", "The document");
    addOutput(
        command, invocation.line.output, "DIR", "The folder, which is created if it is missing");
    command.add_flag("-f,--force", invocation.line.mayOverwrite, "Overwrite files that exist");
    command.footer(
        R"help(Each script goes to the file below the folder that its name says. Names that
lead out of the folder, two names for one file and, without --force, files that
exist are refused before anything is written. What was written is read back and
compared.

Examples:
  tbscripts unpack game_scripts.tbscripts -o scripts/

Exit status:
  0  all is well
  2  wrong usage, or a file that cannot be read or written)help");
}

void addList(CLI::App& tool, Invocation& invocation)
{
    CLI::App& command =
        addCommand(tool, invocation, "list", "Shows the scripts of a file.", listScripts);
    addPath(command, invocation.line.paths, "FILE", "A script or a document");
    command.add_flag("--json", invocation.line.asJson, "Print an array of JSON objects");
    command.footer(
        R"help(Shows name, type, size in bytes, and whether the script compiles; if it does
not, why and in which line.

Examples:
  tbscripts list game_scripts.tbscripts
  tbscripts list --json game_scripts.tbscripts

Exit status:
  0  everything compiles
  1  a script does not
  2  wrong usage, or a file that cannot be read)help");
}

constexpr const char* OVERVIEW = R"help('tbscripts COMMAND --help' tells more about a command.

A FILE is a script. If its name ends with .json or .tbscripts, it is a document
that declares scripts: {"name": "hello", "type": "lua", "sources": "print(1)"},
an array of such objects, or a project's list {"scripts": [...]}.

Examples:
  tbscripts run setup.lua main.lua -- fast 3
  tbscripts check scripts/
  tbscripts pack scripts/ -o game_scripts.tbscripts
  tbscripts list game_scripts.tbscripts
  tbscripts unpack game_scripts.tbscripts -o scripts/

Exit status:
  0  all is well
  1  a script did not compile, or raised an error
  2  wrong usage, or a file that cannot be read or written)help";

void describeTool(CLI::App& tool, Invocation& invocation)
{
    tool.set_help_flag("-h,--help", "Show this help, or that of a command");
    tool.set_version_flag("--version", versionText(), "Show the version");
    tool.get_formatter()->column_width(WIDTH_OF_NAMES);
    tool.get_formatter()->label("SUBCOMMAND", "COMMAND");
    tool.allow_windows_style_options(false); // "/scripts" is a path everywhere
    tool.require_subcommand(1);
    tool.footer(OVERVIEW);
    addRun(tool, invocation); // each takes over how the tool is set up
    addCheck(tool, invocation);
    addPack(tool, invocation);
    addUnpack(tool, invocation);
    addList(tool, invocation);
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

bool hasMeaningForParser(const std::string& argument)
{
    const bool isList = !argument.empty() && argument.front() == '[' && argument.back() == ']';
    return isList || argument == "++";
}

// The parser takes "[a,b]" for two values and "++" for the end of a command; as paths they are one.
void protectPaths(Arguments& arguments)
{
    for (std::string& argument : arguments)
    {
        if (hasMeaningForParser(argument))
            argument.insert(0, "./");
    }
}

EXIT_STATUS refuse(const std::string& reason, const std::string& helpOf)
{
    report("tbscripts: " + escape(reason));
    report("Try '" + helpOf + " --help'.");
    return EXIT_STATUS::TROUBLE;
}

// Nothing but options of the tool itself can stand in the place of a command.
EXIT_STATUS runWithoutCommand(CLI::App& tool, const std::string& first)
{
    try
    {
        tool.parse(Arguments{first});
    }
    catch (const CLI::CallForHelp&)
    {
        print(tool.help());
        return EXIT_STATUS::WELL;
    }
    catch (const CLI::CallForVersion& version)
    {
        print(std::string(version.what()) + '\n');
        return EXIT_STATUS::WELL;
    }
    catch (const CLI::ParseError&)
    {
    }
    const bool isOption = !first.empty() && first.front() == '-';
    return refuse((isOption ? "unknown option '" : "unknown command '") + first + "'", "tbscripts");
}

void parse(CLI::App& command, Arguments arguments)
{
    protectPaths(arguments);
    std::reverse(arguments.begin(), arguments.end()); // the parser takes them from the end
    command.parse(std::move(arguments));
}

} // namespace

EXIT_STATUS runCommandLine(std::vector<std::string> arguments)
{
    Invocation invocation;
    CLI::App tool("Runs, checks and packs Lua scripts.", "tbscripts");
    describeTool(tool, invocation);
    if (arguments.empty())
    {
        std::fputs(tool.help().c_str(), stderr);
        return EXIT_STATUS::TROUBLE;
    }
    const std::string name = arguments.front();
    const auto isNamed = [&name](const CLI::App* command) { return command->get_name() == name; };
    const std::vector<CLI::App*> named = tool.get_subcommands(isNamed);
    if (named.empty())
        return runWithoutCommand(tool, name);
    arguments.erase(arguments.begin());
    if (name == "run")
        invocation.line.scriptArguments = splitOffScriptArguments(arguments);

    // The command parses by itself: below the tool it would end at "--" and leave what follows to
    // the tool's own options.
    CLI::App& command = *named.front();
    try
    {
        parse(command, std::move(arguments));
    }
    catch (const CLI::CallForHelp&)
    {
        print(command.help("tbscripts"));
    }
    catch (const CLI::ParseError& error)
    {
        return refuse(name + ": " + error.what(), "tbscripts " + name);
    }
    return invocation.status;
}

} // namespace tool

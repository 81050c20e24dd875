#pragma once

// Why: docs/decisions/0024-libraries-of-the-tool.md

#include "tbscripts/ExitStatus.h"

#include <string>
#include <vector>

namespace tool
{

/// What the command line gives to a command. Each command fills and reads only its own members.
struct CommandLine
{
    std::vector<std::string> paths;           // what the command works on
    std::vector<std::string> scriptArguments; // of run, behind "--"
    std::string output;                       // of pack and unpack
    bool mayOverwrite = false;                // of unpack
    bool asJson = false;                      // of list
};

/// Reads the arguments, without the program's name, and runs the command that they name. Prints
/// help and version, reports mistakes.
EXIT_STATUS runCommandLine(std::vector<std::string> arguments);

} // namespace tool

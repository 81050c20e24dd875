#pragma once

#include "tbscripts/ExitStatus.h"

#include <cstdint>
#include <string>
#include <vector>

namespace tool
{

enum class COMMAND : std::int32_t
{
    NONE, // everything is said already: help, the version, or what is wrong
    RUN,
    CHECK,
    PACK,
    UNPACK,
    LIST
};

/// What the command line asks for.
struct CommandLine
{
    COMMAND command = COMMAND::NONE;
    EXIT_STATUS status = EXIT_STATUS::WELL;   // of the process, if there is no command
    std::vector<std::string> paths;           // what the command works on
    std::vector<std::string> scriptArguments; // of run, behind "--"
    std::string output;                       // of pack and unpack
    bool mayOverwrite = false;                // of unpack
    bool asJson = false;                      // of list
};

/// Reads the arguments, without the program's name. Prints help and version, reports mistakes.
CommandLine readCommandLine(std::vector<std::string> arguments);

} // namespace tool

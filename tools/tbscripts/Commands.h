#pragma once

#include "tbscripts/ExitStatus.h"

namespace tool
{

struct CommandLine;

/// What a command does. CommandLine.cpp connects it with its name, its options and its help.
using Command = EXIT_STATUS (*)(const CommandLine& line);

// One function for each command. docs/tbscripts.md says what they do.
EXIT_STATUS runScripts(const CommandLine& line);
EXIT_STATUS checkScripts(const CommandLine& line);
EXIT_STATUS packScripts(const CommandLine& line);
EXIT_STATUS unpackScripts(const CommandLine& line);
EXIT_STATUS listScripts(const CommandLine& line);

} // namespace tool

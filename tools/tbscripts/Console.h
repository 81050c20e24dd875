#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace tool
{

/// Writes to the standard output, through the same buffer as the scripts' own `print`.
void print(std::string_view text);

/// Flushes the output and returns whether all of it was written. A reader that closed its end early
/// causes no message.
bool finishOutput();

/// Writes a line to the standard error, after all earlier output. `line` is escaped already.
void report(std::string_view line);

/// Reports an error of a file: its path, then `reason`.
void reportTrouble(std::string_view path, std::string_view reason);

/// Returns a path or a name as messages write it.
std::string show(std::string_view name);

/// Whether the standard output is a terminal.
bool isOutputTerminal();

/// Returns "1 script", "2 scripts".
std::string count(std::size_t number, std::string_view what);

} // namespace tool

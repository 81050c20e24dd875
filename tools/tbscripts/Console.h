#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace tool
{

/// Writes to the standard output, through the same buffer as the scripts' own `print`.
void print(std::string_view text);

/// Writes everything out and returns whether all of it arrived. A reader that went away early is
/// no reason for a message.
bool finishOutput();

/// Writes a line to the standard error, after what was printed before. `line` is escaped already.
void report(std::string_view line);

/// Reports that something is wrong with a file: its path, then `reason`.
void reportTrouble(std::string_view path, std::string_view reason);

/// Returns how messages write a path or a name.
std::string show(std::string_view name);

/// Whether the standard output is a terminal.
bool isOutputTerminal();

/// Returns "1 script", "2 scripts".
std::string count(std::size_t number, std::string_view what);

} // namespace tool

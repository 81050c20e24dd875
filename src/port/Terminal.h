#pragma once

namespace tbScripts::port
{

/// Whether the standard output is a terminal.
bool isOutputTerminal();

/// Whether the standard error is a terminal.
bool isErrorTerminal();

} // namespace tbScripts::port

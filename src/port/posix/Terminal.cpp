#include "port/Terminal.h"

#include <unistd.h>

namespace tbScripts::port
{

bool isOutputTerminal()
{
    return ::isatty(STDOUT_FILENO) == 1;
}

bool isErrorTerminal()
{
    return ::isatty(STDERR_FILENO) == 1;
}

} // namespace tbScripts::port

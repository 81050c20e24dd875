#include "port/Terminal.h"

#include <cstdio>
#include <io.h>

namespace tbScripts::port
{

bool isOutputTerminal()
{
    return ::_isatty(::_fileno(stdout)) != 0;
}

bool isErrorTerminal()
{
    return ::_isatty(::_fileno(stderr)) != 0;
}

} // namespace tbScripts::port

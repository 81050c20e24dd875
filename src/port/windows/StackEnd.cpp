#include "port/StackEnd.h"

#include "port/windows/Windows.h"

namespace tbScripts::port
{

std::uintptr_t findEndOfStack()
{
    ULONG_PTR lowest = 0;
    ULONG_PTR highest = 0;
    ::GetCurrentThreadStackLimits(&lowest, &highest);
    return static_cast<std::uintptr_t>(lowest);
}

} // namespace tbScripts::port

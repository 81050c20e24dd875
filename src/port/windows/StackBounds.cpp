#include "port/StackBounds.h"

#include "port/windows/Windows.h"

namespace tbScripts::port
{

StackBounds findStackOfThread()
{
    ULONG_PTR lowest = 0;
    ULONG_PTR highest = 0;
    ::GetCurrentThreadStackLimits(&lowest, &highest);
    return StackBounds{static_cast<std::uintptr_t>(lowest), static_cast<std::uintptr_t>(highest)};
}

} // namespace tbScripts::port

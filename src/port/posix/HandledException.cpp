#include "port/HandledException.h"

#include <cxxabi.h>

namespace tbScripts::port
{

__thread void* const* handledException = nullptr;

void findHandledException()
{
    // The C++ ABI of these platforms fixes that it is the first word of the exception globals.
    handledException = reinterpret_cast<void* const*>(abi::__cxa_get_globals());
}

} // namespace tbScripts::port

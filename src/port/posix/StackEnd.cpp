#include "port/StackEnd.h"

#include <cstddef>
#include <pthread.h>

namespace tbScripts::port
{

#if defined(__linux__)
std::uintptr_t findEndOfStack()
{
    pthread_attr_t attributes;
    if (::pthread_getattr_np(::pthread_self(), &attributes) != 0)
        return 0;
    void* lowest = nullptr;
    std::size_t size = 0;
    ::pthread_attr_getstack(&attributes, &lowest, &size);
    ::pthread_attr_destroy(&attributes);
    return reinterpret_cast<std::uintptr_t>(lowest);
}
#elif defined(__APPLE__) // written from the system's manual, never built
std::uintptr_t findEndOfStack()
{
    const pthread_t thread = ::pthread_self();
    const auto highest = reinterpret_cast<std::uintptr_t>(::pthread_get_stackaddr_np(thread));
    return highest - ::pthread_get_stacksize_np(thread);
}
#else
std::uintptr_t findEndOfStack()
{
    return 0;
}
#endif

} // namespace tbScripts::port

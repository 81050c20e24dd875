#include "port/StackBounds.h"

#include <cstddef>
#include <pthread.h>

namespace tbScripts::port
{

namespace
{

[[maybe_unused]] constexpr StackBounds ALL_ADDRESSES{0, UINTPTR_MAX};

} // namespace

#if defined(__linux__)
StackBounds findStackOfThread()
{
    pthread_attr_t attributes;
    if (::pthread_getattr_np(::pthread_self(), &attributes) != 0)
        return ALL_ADDRESSES;
    void* lowest = nullptr;
    std::size_t size = 0;
    ::pthread_attr_getstack(&attributes, &lowest, &size);
    ::pthread_attr_destroy(&attributes);
    const auto end = reinterpret_cast<std::uintptr_t>(lowest);
    return size > 0 ? StackBounds{end, end + size} : ALL_ADDRESSES;
}
#elif defined(__APPLE__) // written from the system's manual, never built
StackBounds findStackOfThread()
{
    const pthread_t thread = ::pthread_self();
    const auto highest = reinterpret_cast<std::uintptr_t>(::pthread_get_stackaddr_np(thread));
    return StackBounds{highest - ::pthread_get_stacksize_np(thread), highest};
}
#else
StackBounds findStackOfThread()
{
    return ALL_ADDRESSES;
}
#endif

} // namespace tbScripts::port

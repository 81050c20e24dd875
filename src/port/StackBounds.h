#pragma once

#include <cstdint>

#if defined(_MSC_VER)
    #include <intrin.h>
#endif

namespace tbScripts::port
{

/// A stack that grows towards lower addresses.
struct StackBounds
{
    std::uintptr_t lowest = 0;
    std::uintptr_t highest = 0; // the first address above it

    bool isEmpty() const { return lowest == highest; }

    bool contains(std::uintptr_t place) const { return place - lowest < highest - lowest; }
};

/// Returns the stack that the system has created for this thread; all addresses if nobody knows it.
/// Slow: the answer may come from a file.
StackBounds findStackOfThread();

/// Returns an address in the frame of the calling function, also where a checked build keeps local
/// objects elsewhere.
#if defined(_MSC_VER)
__forceinline std::uintptr_t getPlaceOnStack()
{
    return reinterpret_cast<std::uintptr_t>(_AddressOfReturnAddress());
}
#else
__attribute__((always_inline)) inline std::uintptr_t getPlaceOnStack()
{
    return reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0));
}
#endif

} // namespace tbScripts::port

#pragma once

#include <cstddef>
#include <functional>

namespace tbScripts::test
{

/// Where a host takes the stack of a fibre from.
enum class FIBER_MEMORY
{
    HEAP,  // low addresses, other objects of the heap right below
    MAPPED // like the stack of a thread
};

/// Runs `work` on a stack of `stackSize` bytes that neither the system nor the library knows as
/// one. Returns how many bytes of that stack were used; more than `stackSize` if the work wrote
/// below it.
std::size_t
runOnFiber(std::size_t stackSize, FIBER_MEMORY memory, const std::function<void()>& work);

} // namespace tbScripts::test

#include "support/AllocationCounter.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace
{

std::atomic<std::size_t> allocations{0};

void* allocate(std::size_t size)
{
    ++allocations;
    if (void* const block = std::malloc(size > 0 ? size : 1))
        return block;
    throw std::bad_alloc();
}

} // namespace

// Replacing the operators in the executable replaces them for the shared library too.
void* operator new(std::size_t size)
{
    return allocate(size);
}

void* operator new[](std::size_t size)
{
    return allocate(size);
}

// A sanitizer has one of its own, whose blocks only its own `delete` takes.
void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept
{
    ++allocations;
    return std::malloc(size > 0 ? size : 1);
}

void operator delete(void* block) noexcept
{
    std::free(block);
}

void operator delete[](void* block) noexcept
{
    std::free(block);
}

void operator delete(void* block, std::size_t) noexcept
{
    std::free(block);
}

void operator delete[](void* block, std::size_t) noexcept
{
    std::free(block);
}

namespace tbScripts::test
{

AllocationCounter::AllocationCounter()
    : m_before(allocations.load())
{
}

std::size_t AllocationCounter::count() const
{
    return allocations.load() - m_before;
}

} // namespace tbScripts::test

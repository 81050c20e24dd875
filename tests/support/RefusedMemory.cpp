#include "support/RefusedMemory.h"

#include <cstdlib>
#include <new>

namespace
{

struct Supply
{
    std::size_t livingBlocks;
    std::size_t allowed;
    bool isLimited;
    bool refusesAllFurther;
    bool hasRefused;
};

// Without constructor and destructor: there is memory before `main` and after it.
Supply supply;

bool isRefused()
{
    if (!supply.isLimited)
        return false;
    if (supply.allowed > 0)
    {
        --supply.allowed;
        return false;
    }
    supply.hasRefused = true;
    supply.isLimited = supply.refusesAllFurther;
    return true;
}

void* allocate(std::size_t size)
{
    void* const block = isRefused() ? nullptr : std::malloc(size > 0 ? size : 1);
    supply.livingBlocks += block ? 1 : 0;
    return block;
}

void* allocateOrThrow(std::size_t size)
{
    if (void* const block = allocate(size))
        return block;
    throw std::bad_alloc();
}

void giveBack(void* block)
{
    supply.livingBlocks -= block ? 1 : 0;
    std::free(block);
}

} // namespace

void* operator new(std::size_t size)
{
    return allocateOrThrow(size);
}

void* operator new[](std::size_t size)
{
    return allocateOrThrow(size);
}

void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    return allocate(size);
}

void* operator new[](std::size_t size, const std::nothrow_t&) noexcept
{
    return allocate(size);
}

void operator delete(void* block) noexcept
{
    giveBack(block);
}

void operator delete[](void* block) noexcept
{
    giveBack(block);
}

void operator delete(void* block, std::size_t) noexcept
{
    giveBack(block);
}

void operator delete[](void* block, std::size_t) noexcept
{
    giveBack(block);
}

void operator delete(void* block, const std::nothrow_t&) noexcept
{
    giveBack(block);
}

void operator delete[](void* block, const std::nothrow_t&) noexcept
{
    giveBack(block);
}

namespace tbScripts::test
{

RefusedMemory::RefusedMemory(std::size_t allowed, SPAN span)
{
    supply.allowed = allowed;
    supply.refusesAllFurther = span == SPAN::ALL_FURTHER;
    supply.hasRefused = false;
    supply.isLimited = true;
}

RefusedMemory::~RefusedMemory()
{
    supply.isLimited = false;
}

bool RefusedMemory::hasRefused() const
{
    return supply.hasRefused;
}

std::size_t RefusedMemory::countLivingBlocks()
{
    return supply.livingBlocks;
}

} // namespace tbScripts::test

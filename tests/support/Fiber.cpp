#include "support/Fiber.h"

#include "support/Sanitizers.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <sys/mman.h>
#include <ucontext.h>

#if defined(__SANITIZE_ADDRESS__) || defined(__clang__)
    #if __has_include(<sanitizer/common_interface_defs.h>)
        #include <sanitizer/common_interface_defs.h>
    #endif
#endif

namespace tbScripts::test
{

namespace
{

constexpr unsigned char UNUSED = 0xA5;
constexpr std::size_t BELOW = std::size_t{256} << 10; // where an overflow is noticed

using Memory = std::unique_ptr<unsigned char, std::function<void(unsigned char*)>>;

Memory allocate(std::size_t size, FIBER_MEMORY memory)
{
    if (memory == FIBER_MEMORY::HEAP)
    {
        const auto free = [](unsigned char* bytes) { delete[] bytes; };
        return Memory(new unsigned char[size], free);
    }
    void* const mapped =
        mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (mapped == MAP_FAILED)
        throw std::bad_alloc();
    return Memory(
        static_cast<unsigned char*>(mapped), [size](unsigned char* bytes) { munmap(bytes, size); });
}

// A fibre's entry has no arguments that could hold a pointer.
struct Fiber
{
    ucontext_t host;
    ucontext_t fiber;
    const std::function<void()>* work;
    const unsigned char* stack;
    std::size_t stackSize;
    const void* hostStack;
    std::size_t hostStackSize;
};

thread_local Fiber* starting = nullptr;

#if defined(__SANITIZE_ADDRESS__)
void announceSwitch(const void* stack, std::size_t size)
{
    void* unused = nullptr;
    __sanitizer_start_switch_fiber(&unused, stack, size);
}

void finishSwitch(const void** stack, std::size_t* size)
{
    __sanitizer_finish_switch_fiber(nullptr, stack, size);
}
#else
void announceSwitch(const void*, std::size_t) {}

void finishSwitch(const void**, std::size_t*) {}
#endif

void enterFiber()
{
    Fiber& fiber = *starting;
    finishSwitch(&fiber.hostStack, &fiber.hostStackSize);
    (*fiber.work)();
    announceSwitch(fiber.hostStack, fiber.hostStackSize);
}

} // namespace

std::size_t
runOnFiber(std::size_t stackSize, FIBER_MEMORY memory, const std::function<void()>& work)
{
    const Memory bytes = allocate(BELOW + stackSize, memory);
    std::memset(bytes.get(), UNUSED, BELOW + stackSize);

    Fiber fiber{};
    fiber.work = &work;
    fiber.stack = bytes.get() + BELOW;
    fiber.stackSize = stackSize;
    getcontext(&fiber.fiber);
    fiber.fiber.uc_stack.ss_sp = bytes.get() + BELOW;
    fiber.fiber.uc_stack.ss_size = stackSize;
    fiber.fiber.uc_link = &fiber.host;
    makecontext(&fiber.fiber, &enterFiber, 0);
    Fiber* const outer = starting;
    starting = &fiber;
    announceSwitch(fiber.stack, fiber.stackSize);
    swapcontext(&fiber.host, &fiber.fiber);
    finishSwitch(nullptr, nullptr);
    starting = outer;

    const unsigned char* const end = bytes.get() + BELOW + stackSize;
    const unsigned char* const deepest = std::find_if(
        bytes.get() + 0,
        bytes.get() + BELOW + stackSize,
        [](unsigned char byte) { return byte != UNUSED; });
    return static_cast<std::size_t>(end - deepest);
}

} // namespace tbScripts::test

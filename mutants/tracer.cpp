// Notes which basic blocks of the library one run of a suite reaches: the compiler calls
// __sanitizer_cov_trace_pc at the beginning of each, and the byte of that address is set in a file
// that all processes of the run share. The file is complete however they end.

#include <cstddef>
#include <cstdlib>
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

extern "C" const char __ehdr_start __attribute__((visibility("hidden")));

namespace
{

#define UNTRACED __attribute__((no_sanitize_coverage))

constexpr std::size_t SIZE = 64U << 20U; // more than any code here; a file with holes

unsigned char* reached = nullptr; // null: nobody asked, or not begun

UNTRACED __attribute__((constructor(101))) void begin()
{
    const char* const path = std::getenv("MUTANTS_TRACE");
    if (!path)
        return;
    const int file = open(path, O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (file < 0)
        return;
    if (ftruncate(file, SIZE) == 0)
    {
        void* const memory = mmap(nullptr, SIZE, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
        if (memory != MAP_FAILED)
            reached = static_cast<unsigned char*>(memory);
    }
    close(file);
}

} // namespace

// Programs that have a part of the library in them call this too; their own code is not noted.
extern "C" UNTRACED __attribute__((visibility("default"))) void __sanitizer_cov_trace_pc()
{
    const std::size_t place = static_cast<std::size_t>(
        static_cast<const char*>(__builtin_return_address(0)) - &__ehdr_start);
    if (reached && place < SIZE)
        reached[place] = 1;
}

// Random calls of the public interface in any order, also from inside of callables, destructors,
// finalisers and the log receiver. Everything is tried that the headers and docs/embedding.md
// allow.

#include "sequences/World.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    tbScripts::fuzz::World(tbScripts::fuzz::Bytes(data, size)).run();
    return 0;
}

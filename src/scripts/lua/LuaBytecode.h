#pragma once

#include <tbMemory/Buffer.h>

#include <cstdint>

namespace tbScripts::lua
{

/// A compiled chunk.
struct LuaBytecode
{
    tbMemory::Buffer code;
    std::uint64_t script = 0;  ///< number of the script that it was compiled for
    std::uint64_t version = 0; ///< of this chunk alone, in the whole process
};

} // namespace tbScripts::lua

#pragma once

#include <tbMemory/Buffer.h>

#include <cstdint>

namespace tbScripts::lua
{

/// A compiled chunk.
struct LuaBytecode
{
    tbMemory::Buffer code;
    std::uint64_t script = 0;  ///< number of the script, unique in the process
    std::uint64_t version = 0; ///< number of this chunk, unique in the process
};

} // namespace tbScripts::lua

#include "RegularFile.h"

#include <array>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <system_error>

namespace tbResources
{

namespace
{

constexpr std::size_t CHUNK_SIZE = std::size_t{64} * 1024;

} // namespace

// Pipes have names of their own there, so that a path which is looked at cannot become one.
tbMemory::Buffer readRegularFile(const std::string& path)
{
    const std::filesystem::path file(path);
    std::error_code error;
    if (!std::filesystem::is_regular_file(file, error))
        return tbMemory::Buffer();

    std::ifstream stream(file, std::ios::binary);
    std::array<char, CHUNK_SIZE> chunk;
    tbMemory::Buffer bytes;
    while (stream)
    {
        stream.read(chunk.data(), chunk.size());
        bytes.append(chunk.data(), static_cast<std::size_t>(stream.gcount()));
    }
    return stream.bad() ? tbMemory::Buffer() : bytes;
}

} // namespace tbResources

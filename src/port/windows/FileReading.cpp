#include "port/FileReading.h"

#include "port/windows/Handle.h"

#include <array>
#include <cstddef>

namespace tbScripts::port
{

namespace
{

constexpr std::size_t CHUNK_SIZE = std::size_t{64} * 1024;

FileContent failure(READING reading, std::error_code reason = {})
{
    return {reading, {}, reason};
}

FileContent readAll(const Handle& file)
{
    FileContent content;
    std::array<char, CHUNK_SIZE> chunk;
    for (;;)
    {
        DWORD size = 0;
        if (::ReadFile(file.get(), chunk.data(), CHUNK_SIZE, &size, nullptr) == 0)
            return failure(READING::FAILED, systemError());
        if (size == 0)
            return content;
        content.bytes.append(chunk.data(), size);
    }
}

} // namespace

FileContent readFile(const std::string& path)
{
    const Handle file(path, GENERIC_READ, OPEN_EXISTING);
    if (!file.isOpen())
        return failure(READING::FAILED, systemError());
    if (file.isFolder())
        return failure(READING::FOLDER);
    if (!file.isRegularFile())
        return failure(READING::NOT_REGULAR);
    return readAll(file);
}

} // namespace tbScripts::port

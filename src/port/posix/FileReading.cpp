#include "port/FileReading.h"

#include "port/posix/Descriptor.h"

#include <array>
#include <cstddef>
#include <sys/stat.h>

namespace tbScripts::port
{

namespace
{

constexpr std::size_t CHUNK_SIZE = std::size_t{64} * 1024;

FileContent failure(READING reading, std::error_code reason = {})
{
    return {reading, {}, reason};
}

// Read until the end, not up to a size asked for before: some files report none.
FileContent readAll(int descriptor)
{
    FileContent content;
    std::array<char, CHUNK_SIZE> chunk;
    for (;;)
    {
        const ssize_t size = ::read(descriptor, chunk.data(), chunk.size());
        if (size < 0 && errno == EINTR)
            continue;
        if (size < 0)
            return failure(READING::FAILED, systemError());
        if (size == 0)
            return content;
        content.bytes.append(chunk.data(), static_cast<std::size_t>(size));
    }
}

} // namespace

FileContent readFile(const std::string& path)
{
    // Not blocking: a FIFO without a writer would keep us waiting.
    const Descriptor file(path, O_RDONLY | O_NONBLOCK | O_NOCTTY);

    struct stat status
    {
    };

    if (!file.isOpen() || ::fstat(file.get(), &status) != 0)
        return failure(READING::FAILED, systemError());
    if (S_ISDIR(status.st_mode))
        return failure(READING::FOLDER);
    if (!S_ISREG(status.st_mode))
        return failure(READING::NOT_REGULAR);
    return readAll(file.get());
}

} // namespace tbScripts::port

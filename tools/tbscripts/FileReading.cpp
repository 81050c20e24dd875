#include "tbscripts/FileReading.h"

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tool
{

namespace
{

constexpr std::size_t CHUNK_SIZE = std::size_t{64} * 1024;

// An open file, closed at its end.
class OpenFile
{
public:
    // Not blocking: a FIFO without a writer would keep us waiting.
    explicit OpenFile(const std::string& path)
        : m_descriptor(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC))
    {
    }

    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;

    ~OpenFile()
    {
        if (m_descriptor >= 0)
            ::close(m_descriptor);
    }

    int get() const { return m_descriptor; }

private:
    int m_descriptor;
};

FileContent failure(const char* reason)
{
    return {{}, reason};
}

FileContent systemFailure()
{
    return failure(std::strerror(errno));
}

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
            return systemFailure();
        if (size == 0)
            return content;
        content.bytes.append(chunk.data(), static_cast<std::size_t>(size));
    }
}

} // namespace

FileContent readFile(const std::string& path)
{
    const OpenFile file(path);

    struct stat status
    {
    };

    if (file.get() < 0 || ::fstat(file.get(), &status) != 0)
        return systemFailure();
    if (S_ISDIR(status.st_mode))
        return failure("is a folder, not a file");
    if (!S_ISREG(status.st_mode))
        return failure("is not a regular file");
    return readAll(file.get());
}

} // namespace tool

#include "RegularFile.h"

#include <array>
#include <cerrno>
#include <cstddef>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tbResources
{

namespace
{

constexpr std::size_t CHUNK_SIZE = std::size_t{64} * 1024;

// Closes a descriptor whatever happens.
class Descriptor
{
public:
    explicit Descriptor(int number)
        : m_number(number)
    {
    }

    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    ~Descriptor()
    {
        if (m_number >= 0)
            ::close(m_number);
    }

    int get() const { return m_number; }

private:
    int m_number;
};

// Not blocking: opening a FIFO would wait for a writer.
int openToRead(const std::string& path)
{
    int number = -1;
    do
        number = ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    while (number < 0 && errno == EINTR);
    return number;
}

bool isRegular(int descriptor)
{
    struct stat status
    {
    };

    return ::fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
}

} // namespace

tbMemory::Buffer readRegularFile(const std::string& path)
{
    const Descriptor file(openToRead(path));
    if (file.get() < 0 || !isRegular(file.get()))
        return tbMemory::Buffer();

    // Read until the end, not up to a size asked for before: some files report none.
    std::array<char, CHUNK_SIZE> chunk;
    tbMemory::Buffer bytes;
    for (;;)
    {
        const ssize_t size = ::read(file.get(), chunk.data(), chunk.size());
        if (size == 0)
            return bytes;
        if (size > 0)
            bytes.append(chunk.data(), static_cast<std::size_t>(size));
        else if (errno != EINTR)
            return tbMemory::Buffer();
    }
}

} // namespace tbResources

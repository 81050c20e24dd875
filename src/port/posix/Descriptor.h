#pragma once

#include <cerrno>
#include <fcntl.h>
#include <string>
#include <sys/types.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace tbScripts::port
{

constexpr mode_t MODE_OF_NEW_FILES = 0666; // less what the process's mask takes away

/// The reason of the last system call that failed.
inline std::error_code systemError()
{
    return std::error_code(errno, std::generic_category());
}

/// Opens a file, however many signals arrive; -1 on failure, with the reason in `errno`.
inline int openFile(const std::string& path, int flags)
{
    int number = -1;
    do
        number = ::open(path.c_str(), flags | O_CLOEXEC, MODE_OF_NEW_FILES);
    while (number < 0 && errno == EINTR);
    return number;
}

/// A file descriptor, closed by the destructor.
class Descriptor
{
public:
    /// On failure: `errno` has the reason.
    Descriptor(const std::string& path, int flags)
        : m_number(openFile(path, flags))
    {
    }

    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    ~Descriptor() { close(); }

    bool isOpen() const { return m_number >= 0; }

    int get() const { return m_number; }

    bool close()
    {
        const int number = std::exchange(m_number, -1);
        return number < 0 || ::close(number) == 0;
    }

private:
    int m_number;
};

} // namespace tbScripts::port

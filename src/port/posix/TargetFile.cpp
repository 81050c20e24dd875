#include "port/TargetFile.h"

#include "port/posix/BrokenPipeShield.h"
#include "port/posix/Descriptor.h"
#include "port/posix/Writing.h"

#include <sys/stat.h>

namespace tbScripts::port
{

// Not waiting for a reader of a FIFO: without one it cannot be opened.
TargetFile::TargetFile(const std::filesystem::path& path)
    : m_descriptor(openFile(path.string(), O_WRONLY | O_NONBLOCK | O_NOCTTY))
{
    struct stat status
    {
    };

    if (m_descriptor < 0)
        m_kind = errno == ENOENT ? TARGET::MISSING : TARGET::REFUSED;
    else if (::fstat(m_descriptor, &status) == 0)
        m_kind = S_ISREG(status.st_mode) ? TARGET::REGULAR : TARGET::OTHER;
}

TargetFile::~TargetFile()
{
    if (m_descriptor >= 0)
        ::close(m_descriptor);
}

bool TargetFile::isAt(const std::filesystem::path& path) const
{
    struct stat opened
    {
    };

    struct stat found
    {
    };

    return ::fstat(m_descriptor, &opened) == 0 && ::stat(path.c_str(), &found) == 0 &&
           found.st_dev == opened.st_dev && found.st_ino == opened.st_ino;
}

void TargetFile::overwrite(std::string_view bytes) const
{
    const BrokenPipeShield shield;
    ::fcntl(m_descriptor, F_SETFL, ::fcntl(m_descriptor, F_GETFL) & ~O_NONBLOCK);
    if (m_kind != TARGET::REGULAR || ::ftruncate(m_descriptor, 0) == 0)
        writeAll(m_descriptor, bytes);
}

} // namespace tbScripts::port

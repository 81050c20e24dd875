#include "loading/FileReplacement.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <ctime>
#include <fcntl.h>
#include <filesystem>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace tbScripts
{

namespace
{

constexpr mode_t MODE_OF_NEW_FILES = 0666; // less what the process's mask takes away
constexpr mode_t PERMISSION_BITS = 07777;
constexpr uid_t OWNER_AS_IT_IS = static_cast<uid_t>(-1);
constexpr int MOST_LINKS = 40; // as many as the system follows

// Closes a file descriptor at its end.
class Descriptor
{
public:
    explicit Descriptor(int number)
        : m_number(number)
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

int openFile(const std::string& path, int flags)
{
    int number = -1;
    do
        number = ::open(path.c_str(), flags | O_CLOEXEC, MODE_OF_NEW_FILES);
    while (number < 0 && errno == EINTR);
    return number;
}

bool writeAll(int descriptor, std::string_view data)
{
    while (!data.empty())
    {
        const ssize_t written = ::write(descriptor, data.data(), data.size());
        if (written < 0 && errno != EINTR)
            return false;
        if (written > 0)
            data.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

// The file that `path` leads to through links, which need not exist.
std::filesystem::path followLinks(std::filesystem::path path)
{
    std::error_code error;
    for (int i = 0; i < MOST_LINKS && std::filesystem::is_symlink(path, error); ++i)
    {
        const std::filesystem::path target = std::filesystem::read_symlink(path, error);
        if (error)
            break;
        path = path.parent_path() / target;
    }
    return path;
}

// A name that no other save of any process uses at the same time.
std::filesystem::path temporaryBeside(const std::filesystem::path& file)
{
    static unsigned counter = 0;
    return file.parent_path() /
           (".tbscripts-" + std::to_string(::getpid()) + "-" + std::to_string(counter++) + ".tmp");
}

void flushFolder(const std::filesystem::path& file)
{
    const std::filesystem::path folder = file.has_parent_path() ? file.parent_path() : ".";
    const Descriptor descriptor(openFile(folder.string(), O_RDONLY | O_DIRECTORY));
    if (descriptor.isOpen())
        ::fsync(descriptor.get());
}

// Gives the new file what the old one has; owner and group only if that is allowed.
void takeOverAttributes(int descriptor, const struct stat& old)
{
    if (::fchown(descriptor, old.st_uid, old.st_gid) != 0 &&
        ::fchown(descriptor, OWNER_AS_IT_IS, old.st_gid) != 0)
        errno = 0;
    ::fchmod(descriptor, old.st_mode & PERMISSION_BITS);
}

bool isDiskFull(int error)
{
    return error == ENOSPC || error == EDQUOT;
}

// Returns false if this is not the way to write `file`: there can be no new file in its folder, or
// none can take its place, as with another owner's file or a mounted one. `old` may be null.
bool replaceWhole(const std::filesystem::path& file, std::string_view data, const struct stat* old)
{
    std::filesystem::path temporary = temporaryBeside(file);
    int number = openFile(temporary.string(), O_WRONLY | O_CREAT | O_EXCL);
    while (number < 0 && errno == EEXIST) // left by a crash
    {
        temporary = temporaryBeside(file);
        number = openFile(temporary.string(), O_WRONLY | O_CREAT | O_EXCL);
    }
    Descriptor descriptor(number);
    if (!descriptor.isOpen())
        return old && isDiskFull(errno);

    if (old)
        takeOverAttributes(descriptor.get(), *old);
    bool isWritten = writeAll(descriptor.get(), data) && ::fsync(descriptor.get()) == 0;
    isWritten = descriptor.close() && isWritten;
    const bool isReplaced = isWritten && std::rename(temporary.c_str(), file.c_str()) == 0;
    if (isReplaced)
        flushFolder(file);
    else
        ::unlink(temporary.c_str());
    return isReplaced || !isWritten;
}

// Not waiting for a reader of a FIFO: without one it cannot be opened.
int openWithoutTruncation(const std::filesystem::path& file)
{
    return openFile(file.string(), O_WRONLY | O_NONBLOCK | O_NOCTTY);
}

// Some links of the system only look like a path to what they open: /dev/stdout leads to
// "pipe:[4711]", or to the former name of a file that was deleted.
bool isPathOf(const std::filesystem::path& file, const struct stat& status)
{
    struct stat found
    {
    };

    return ::stat(file.c_str(), &found) == 0 && found.st_dev == status.st_dev &&
           found.st_ino == status.st_ino;
}

// While it lives, a pipe whose reader goes away fails the write instead of ending the process. Only
// for this thread: what the host does with the signal elsewhere is its own business.
class BrokenPipeShield
{
public:
    BrokenPipeShield()
    {
        ::sigemptyset(&m_brokenPipe);
        ::sigaddset(&m_brokenPipe, SIGPIPE);
        sigset_t pending;
        ::sigpending(&pending);
        m_wasPending = ::sigismember(&pending, SIGPIPE) == 1;
        ::pthread_sigmask(SIG_BLOCK, &m_brokenPipe, &m_earlierMask);
    }

    BrokenPipeShield(const BrokenPipeShield&) = delete;
    BrokenPipeShield& operator=(const BrokenPipeShield&) = delete;

    ~BrokenPipeShield()
    {
        constexpr timespec AT_ONCE{};
        if (!m_wasPending) // ours then; one that waited before still waits for the host
        {
            while (::sigtimedwait(&m_brokenPipe, nullptr, &AT_ONCE) < 0 && errno == EINTR)
            {
            }
        }
        ::pthread_sigmask(SIG_SETMASK, &m_earlierMask, nullptr);
    }

private:
    sigset_t m_brokenPipe;
    sigset_t m_earlierMask;
    bool m_wasPending = false;
};

void writeInPlace(int descriptor, bool isRegular, std::string_view data)
{
    const BrokenPipeShield shield;
    ::fcntl(descriptor, F_SETFL, ::fcntl(descriptor, F_GETFL) & ~O_NONBLOCK);
    if (!isRegular || ::ftruncate(descriptor, 0) == 0)
        writeAll(descriptor, data);
}

} // namespace

bool replaceFile(const tbMemory::StringView& path, const tbMemory::StringView& data)
{
    const std::string_view name = path;
    if (name.empty() || name.find('\0') != std::string_view::npos)
        return false; // the system would end the path there and write another file
    const std::filesystem::path given(name);
    const Descriptor existing(openWithoutTruncation(given));
    if (!existing.isOpen())
        return errno == ENOENT && replaceWhole(followLinks(given), data, nullptr);

    struct stat status
    {
    };

    if (::fstat(existing.get(), &status) != 0)
        return false;
    const std::filesystem::path file = followLinks(given);
    const bool isRegular = S_ISREG(status.st_mode);
    if (!isRegular || !isPathOf(file, status) || !replaceWhole(file, data, &status))
        writeInPlace(existing.get(), isRegular, data);
    return true;
}

} // namespace tbScripts

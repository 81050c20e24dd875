#include "loading/FileReplacement.h"

#include <cerrno>
#include <cstdio>
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

// Gives the new file what the old one has; the owner only if that is allowed.
void takeOverAttributes(int descriptor, const struct stat& old)
{
    if (::fchown(descriptor, old.st_uid, old.st_gid) != 0)
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

void writeInPlace(int descriptor, bool isRegular, std::string_view data)
{
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
    const std::filesystem::path file = followLinks(std::filesystem::path(name));

    const Descriptor existing(openWithoutTruncation(file));
    if (!existing.isOpen())
        return errno == ENOENT && replaceWhole(file, data, nullptr);

    struct stat status
    {
    };

    if (::fstat(existing.get(), &status) != 0)
        return false;
    const bool isRegular = S_ISREG(status.st_mode);
    if (!isRegular || !replaceWhole(file, data, &status))
        writeInPlace(existing.get(), isRegular, data);
    return true;
}

} // namespace tbScripts

#include "tbscripts/FileWriting.h"

#include <tbScripts/ContentLoader.h>

#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

namespace tool
{

namespace
{

constexpr mode_t MODE_OF_NEW_FILES = 0666; // less what the process's mask takes away
constexpr mode_t PERMISSION_BITS = 07777;
constexpr uid_t OWNER_AS_IT_IS = static_cast<uid_t>(-1);
constexpr unsigned MOST_LEFTOVERS = 1000; // of processes that were killed

// The library does not say why, so the system is asked again.
std::string explainUnwritable(const std::string& path)
{
    const std::filesystem::path folder = std::filesystem::path(path).parent_path();
    const std::string container = folder.empty() ? "." : folder.string();
    if (::access(path.c_str(), W_OK) != 0 && errno != ENOENT)
        return std::strerror(errno);
    if (::access(container.c_str(), W_OK | X_OK) != 0)
        return std::strerror(errno);
    return "cannot be written";
}

// Makes a file of a new name in the folder of `path`.
int openBeside(const std::string& path, std::string& temporary)
{
    const std::filesystem::path folder = std::filesystem::path(path).parent_path();
    int descriptor = -1;
    for (unsigned number = 0; descriptor < 0 && number < MOST_LEFTOVERS; ++number)
    {
        const std::string name =
            ".tbscripts-" + std::to_string(::getpid()) + '-' + std::to_string(number) + ".tmp";
        temporary = (folder / name).string();
        descriptor =
            ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, MODE_OF_NEW_FILES);
        if (descriptor < 0 && errno != EEXIST)
            break;
    }
    return descriptor;
}

// If the file exists already: its owner and others keep what they may do with it, as far as we may
// give files away.
void takeOverPermissions(int descriptor, const std::string& path)
{
    struct stat status
    {
    };

    if (::stat(path.c_str(), &status) != 0)
        return;
    if (::fchown(descriptor, status.st_uid, status.st_gid) != 0 &&
        ::fchown(descriptor, OWNER_AS_IT_IS, status.st_gid) != 0)
        errno = 0;
    ::fchmod(descriptor, status.st_mode & PERMISSION_BITS);
}

bool writeAll(int descriptor, std::string_view bytes)
{
    while (!bytes.empty())
    {
        const ssize_t size = ::write(descriptor, bytes.data(), bytes.size());
        if (size < 0 && errno != EINTR)
            return false;
        if (size > 0)
            bytes.remove_prefix(static_cast<std::size_t>(size));
    }
    return true;
}

} // namespace

SignalHold::SignalHold()
{
    sigset_t held;
    sigemptyset(&held);
    for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGQUIT})
        sigaddset(&held, number);
    sigprocmask(SIG_BLOCK, &held, &m_before);
}

SignalHold::~SignalHold()
{
    sigprocmask(SIG_SETMASK, &m_before, nullptr);
}

std::string writeFile(const std::string& path, std::string_view bytes)
{
    const SignalHold hold;
    std::string temporary;
    const int descriptor = openBeside(path, temporary);
    if (descriptor < 0)
        return std::strerror(errno);
    takeOverPermissions(descriptor, path);
    const bool isWritten = writeAll(descriptor, bytes);
    const int reason = errno;
    if (::close(descriptor) == 0 && isWritten && ::rename(temporary.c_str(), path.c_str()) == 0)
        return {};
    std::string trouble = std::strerror(isWritten ? errno : reason);
    ::unlink(temporary.c_str());
    return trouble;
}

std::string flushFiles(const std::string& folder)
{
    const int descriptor = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    const bool isFlushed = descriptor >= 0 && ::syncfs(descriptor) == 0;
    std::string trouble = isFlushed ? "" : std::strerror(errno);
    if (descriptor >= 0)
        ::close(descriptor);
    return trouble;
}

std::string writeTree(const std::string& path, tbExport::Node& tree)
{
    const SignalHold hold;
    return tbScripts::ContentLoader::saveTreeDeclaration(&tree, path) ? ""
                                                                      : explainUnwritable(path);
}

std::string troubleAsOutput(const std::string& path)
{
    struct stat status
    {
    };

    if (::stat(path.c_str(), &status) != 0)
        return errno == ENOENT ? "" : std::strerror(errno);
    if (S_ISDIR(status.st_mode))
        return "is a folder, not a file";
    return S_ISREG(status.st_mode) ? "" : "is not a regular file";
}

} // namespace tool

#include "port/FileReplacing.h"

#include "port/posix/Descriptor.h"
#include "port/posix/Writing.h"

#include <cstdio>
#include <string>
#include <sys/stat.h>

namespace tbScripts::port
{

namespace
{

constexpr mode_t PERMISSION_BITS = 07777;
constexpr uid_t OWNER_AS_IT_IS = static_cast<uid_t>(-1);

// A name that no other save of any process uses at the same time.
std::filesystem::path temporaryBeside(const std::filesystem::path& file)
{
    static unsigned counter = 0;
    return file.parent_path() /
           (".tbscripts-" + std::to_string(::getpid()) + "-" + std::to_string(counter++) + ".tmp");
}

// Gives the new file what the old one has, if there is one; owner and group only if that is
// allowed.
void takeOverAttributes(int descriptor, const std::filesystem::path& file)
{
    struct stat old
    {
    };

    if (::stat(file.c_str(), &old) != 0)
        return;
    if (::fchown(descriptor, old.st_uid, old.st_gid) != 0 &&
        ::fchown(descriptor, OWNER_AS_IT_IS, old.st_gid) != 0)
        errno = 0;
    ::fchmod(descriptor, old.st_mode & PERMISSION_BITS);
}

Replacement failure(REPLACING replacing)
{
    return {replacing, systemError()};
}

Replacement failureToCreate()
{
    return failure(
        errno == ENOSPC || errno == EDQUOT ? REPLACING::NO_ROOM : REPLACING::NO_NEW_FILE);
}

// On failure `errno` says why.
bool fill(Descriptor& descriptor, std::string_view bytes, FLUSH flush)
{
    if (!writeAll(descriptor.get(), bytes))
        return false;
    return (flush == FLUSH::LATER || ::fsync(descriptor.get()) == 0) && descriptor.close();
}

void flushFolderOf(const std::filesystem::path& file)
{
    const std::filesystem::path folder = file.has_parent_path() ? file.parent_path() : ".";
    const Descriptor descriptor(folder.string(), O_RDONLY | O_DIRECTORY);
    if (descriptor.isOpen())
        ::fsync(descriptor.get());
}

// Removes what could not take its place.
Replacement giveUp(const std::filesystem::path& temporary, REPLACING replacing)
{
    const Replacement result = failure(replacing);
    ::unlink(temporary.c_str());
    return result;
}

Replacement replaceBy(
    const std::filesystem::path& temporary,
    const std::filesystem::path& file,
    std::string_view bytes,
    FLUSH flush)
{
    Descriptor descriptor(temporary.string(), O_WRONLY | O_CREAT | O_EXCL);
    if (!descriptor.isOpen())
        return failureToCreate();
    takeOverAttributes(descriptor.get(), file);
    if (!fill(descriptor, bytes, flush))
        return giveUp(temporary, REPLACING::NOT_WRITTEN);
    if (std::rename(temporary.c_str(), file.c_str()) != 0)
        return giveUp(temporary, REPLACING::NOT_PLACED);
    if (flush == FLUSH::NOW)
        flushFolderOf(file);
    return {};
}

} // namespace

Replacement replaceFile(const std::filesystem::path& file, std::string_view bytes, FLUSH flush)
{
    Replacement result;
    do // a crash may have left a file of that name
        result = replaceBy(temporaryBeside(file), file, bytes, flush);
    while (result.replacing == REPLACING::NO_NEW_FILE && result.reason == std::errc::file_exists);
    return result;
}

#if defined(__linux__)
std::error_code flushFolder(const std::string& folder)
{
    const Descriptor descriptor(folder, O_RDONLY | O_DIRECTORY);
    const bool isFlushed = descriptor.isOpen() && ::syncfs(descriptor.get()) == 0;
    return isFlushed ? std::error_code() : systemError();
}
#else
std::error_code flushFolder(const std::string& folder)
{
    const Descriptor descriptor(folder, O_RDONLY | O_DIRECTORY);
    if (!descriptor.isOpen())
        return systemError();
    ::sync(); // of all file systems: others have no call for a single one
    return {};
}
#endif

} // namespace tbScripts::port

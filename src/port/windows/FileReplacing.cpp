#include "port/FileReplacing.h"

#include "port/windows/Handle.h"

#include <string>

namespace tbScripts::port
{

namespace
{

// A name that no other save of any process uses at the same time.
std::filesystem::path temporaryBeside(const std::filesystem::path& file)
{
    static unsigned counter = 0;
    const std::string process = std::to_string(::GetCurrentProcessId());
    return file.parent_path() /
           (".tbscripts-" + process + "-" + std::to_string(counter++) + ".tmp");
}

Replacement failure(REPLACING replacing)
{
    return {replacing, systemError()};
}

Replacement failureToCreate()
{
    const DWORD reason = ::GetLastError();
    const bool isFull = reason == ERROR_DISK_FULL || reason == ERROR_HANDLE_DISK_FULL;
    return failure(isFull ? REPLACING::NO_ROOM : REPLACING::NO_NEW_FILE);
}

bool fill(Handle& file, std::string_view bytes, FLUSH flush)
{
    if (!file.writeAll(bytes))
        return false;
    return (flush == FLUSH::LATER || ::FlushFileBuffers(file.get()) != 0) && file.close();
}

// `ReplaceFileW` leaves the new file the access list and attributes of the old one; there has to be
// one.
bool place(const std::filesystem::path& temporary, const std::filesystem::path& file, FLUSH flush)
{
    constexpr DWORD IGNORED = REPLACEFILE_IGNORE_MERGE_ERRORS;
    if (::ReplaceFileW(file.c_str(), temporary.c_str(), nullptr, IGNORED, nullptr, nullptr) != 0)
        return true;
    const DWORD through = flush == FLUSH::NOW ? MOVEFILE_WRITE_THROUGH : 0;
    return ::MoveFileExW(temporary.c_str(), file.c_str(), MOVEFILE_REPLACE_EXISTING | through) != 0;
}

// Removes what could not take its place.
Replacement giveUp(const std::filesystem::path& temporary, REPLACING replacing)
{
    const Replacement result = failure(replacing);
    ::DeleteFileW(temporary.c_str());
    return result;
}

Replacement replaceBy(
    const std::filesystem::path& temporary,
    const std::filesystem::path& file,
    std::string_view bytes,
    FLUSH flush)
{
    Handle handle(temporary, GENERIC_WRITE, CREATE_NEW);
    if (!handle.isOpen())
        return failureToCreate();
    if (!fill(handle, bytes, flush))
    {
        const Replacement result = failure(REPLACING::NOT_WRITTEN);
        handle.close(); // else it could not be removed
        ::DeleteFileW(temporary.c_str());
        return result;
    }
    return place(temporary, file, flush) ? Replacement() : giveUp(temporary, REPLACING::NOT_PLACED);
}

} // namespace

Replacement replaceFile(const std::filesystem::path& file, std::string_view bytes, FLUSH flush)
{
    Replacement result;
    do // a crash may have left a file of that name
        result = replaceBy(temporaryBeside(file), file, bytes, flush);
    while (result.replacing == REPLACING::NO_NEW_FILE &&
           result.reason.value() == ERROR_FILE_EXISTS);
    return result;
}

// Nobody but an administrator may flush a whole volume.
std::error_code flushFolder(const std::string& /*folder*/)
{
    return {};
}

} // namespace tbScripts::port

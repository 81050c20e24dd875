#include "port/FileAccess.h"

#include "port/windows/Handle.h"

#include <filesystem>

namespace tbScripts::port
{

namespace
{

// Read-only files and what is missing are all that can be told before: the rest is up to access
// lists.
std::error_code refusalOf(const std::string& path, DWORD refused)
{
    const DWORD attributes = ::GetFileAttributesW(std::filesystem::path(path).c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES)
        return systemError();
    return (attributes & refused) != 0 ? std::make_error_code(std::errc::permission_denied)
                                       : std::error_code();
}

} // namespace

std::error_code refusalToWrite(const std::string& path)
{
    const std::error_code refusal = refusalOf(path, FILE_ATTRIBUTE_READONLY);
    return isMissing(refusal) ? std::error_code() : refusal;
}

std::error_code refusalOfNewFiles(const std::string& folder)
{
    return refusalOf(folder, 0);
}

} // namespace tbScripts::port

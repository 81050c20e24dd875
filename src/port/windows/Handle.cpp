#include "port/windows/Handle.h"

#include <algorithm>

namespace tbScripts::port
{

namespace
{

constexpr std::size_t LARGEST_PIECE = std::size_t{1} << 20;

bool hasAttribute(HANDLE handle, DWORD attribute)
{
    BY_HANDLE_FILE_INFORMATION information;
    return ::GetFileInformationByHandle(handle, &information) != 0 &&
           (information.dwFileAttributes & attribute) != 0;
}

} // namespace

std::error_code systemError()
{
    return std::error_code(static_cast<int>(::GetLastError()), std::system_category());
}

bool isMissing(const std::error_code& reason)
{
    return reason.category() == std::system_category() &&
           (reason.value() == ERROR_FILE_NOT_FOUND || reason.value() == ERROR_PATH_NOT_FOUND);
}

bool Handle::isFolder() const
{
    return hasAttribute(m_handle, FILE_ATTRIBUTE_DIRECTORY);
}

bool Handle::isRegularFile() const
{
    return ::GetFileType(m_handle) == FILE_TYPE_DISK && !isFolder();
}

bool Handle::writeAll(std::string_view bytes) const
{
    while (!bytes.empty())
    {
        DWORD written = 0;
        const auto size = static_cast<DWORD>(std::min(bytes.size(), LARGEST_PIECE));
        if (::WriteFile(m_handle, bytes.data(), size, &written, nullptr) == 0)
            return false;
        bytes.remove_prefix(written);
    }
    return true;
}

} // namespace tbScripts::port

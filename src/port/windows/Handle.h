#pragma once

#include "port/windows/Windows.h"

#include <filesystem>
#include <string_view>
#include <system_error>
#include <utility>

namespace tbScripts::port
{

constexpr DWORD SHARED_WITH_ALL = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

/// The reason of the last system call that failed.
std::error_code systemError();

bool isMissing(const std::error_code& reason);

/// A file's handle, closed by the destructor.
class Handle
{
public:
    /// On failure: `systemError` has the reason.
    Handle(const std::filesystem::path& path, DWORD access, DWORD disposition)
        : m_handle(::CreateFileW(
              path.c_str(),
              access,
              SHARED_WITH_ALL,
              nullptr,
              disposition,
              FILE_ATTRIBUTE_NORMAL | FILE_FLAG_BACKUP_SEMANTICS, // which folders need
              nullptr))
    {
    }

    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;

    ~Handle() { close(); }

    bool isOpen() const { return m_handle != INVALID_HANDLE_VALUE; }

    HANDLE get() const { return m_handle; }

    bool isRegularFile() const;

    bool isFolder() const;

    bool close()
    {
        const HANDLE handle = std::exchange(m_handle, INVALID_HANDLE_VALUE);
        return handle == INVALID_HANDLE_VALUE || ::CloseHandle(handle) != 0;
    }

    /// Writes everything and returns whether that worked.
    bool writeAll(std::string_view bytes) const;

private:
    HANDLE m_handle;
};

} // namespace tbScripts::port

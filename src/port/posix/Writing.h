#pragma once

#include <cerrno>
#include <string_view>
#include <unistd.h>

namespace tbScripts::port
{

/// Writes everything and returns whether that worked; else `errno` says why not.
inline bool writeAll(int descriptor, std::string_view bytes)
{
    while (!bytes.empty())
    {
        const ssize_t written = ::write(descriptor, bytes.data(), bytes.size());
        if (written < 0 && errno != EINTR)
            return false;
        if (written > 0)
            bytes.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

} // namespace tbScripts::port

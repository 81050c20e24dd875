#pragma once

#include <cstdint>
#include <string>
#include <system_error>

namespace tbScripts::port
{

enum class READING : std::int32_t
{
    DONE,
    FAILED,     // the system says why
    FOLDER,     // not a file
    NOT_REGULAR // a FIFO, a device
};

/// The bytes of a file, or why there are none.
struct FileContent
{
    READING reading = READING::DONE;
    std::string bytes;
    std::error_code reason; // if it failed
};

/// Reads a whole regular file, links to one included. The file is opened once, and what was opened
/// is looked at: the path may lead elsewhere by then. A FIFO is not waited for.
FileContent readFile(const std::string& path);

} // namespace tbScripts::port

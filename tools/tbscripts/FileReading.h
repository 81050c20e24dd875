#pragma once

#include <string>

namespace tool
{

/// The bytes of a file, or why there are none.
struct FileContent
{
    std::string bytes;
    std::string trouble; // empty if the file was read
};

/// Reads a whole regular file, links to one included. What is none, a FIFO for example, is not
/// waited for.
FileContent readFile(const std::string& path);

} // namespace tool

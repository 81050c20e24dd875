#include "port/FileAccess.h"

#include "port/posix/Descriptor.h"

namespace tbScripts::port
{

std::error_code refusalToWrite(const std::string& path)
{
    return ::access(path.c_str(), W_OK) != 0 && errno != ENOENT ? systemError() : std::error_code();
}

std::error_code refusalOfNewFiles(const std::string& folder)
{
    return ::access(folder.c_str(), W_OK | X_OK) != 0 ? systemError() : std::error_code();
}

} // namespace tbScripts::port

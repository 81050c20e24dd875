#include "tbscripts/FileWriting.h"

#include "port/FileAccess.h"
#include "port/FileReplacing.h"
#include "port/SignalHold.h"

#include <tbScripts/ContentLoader.h>

#include <filesystem>
#include <system_error>

namespace tool
{

namespace
{

namespace port = tbScripts::port;

std::string textOf(const std::error_code& reason)
{
    return reason ? reason.message() : std::string();
}

// The library does not say why, so the system is asked again.
std::string explainUnwritable(const std::string& path)
{
    const std::filesystem::path folder = std::filesystem::path(path).parent_path();
    if (const std::error_code reason = port::refusalToWrite(path))
        return reason.message();
    if (const std::error_code reason =
            port::refusalOfNewFiles(folder.empty() ? "." : folder.string()))
        return reason.message();
    return "cannot be written";
}

} // namespace

std::string writeFile(const std::string& path, std::string_view bytes)
{
    const port::SignalHold hold;
    return textOf(port::replaceFile(path, bytes, port::FLUSH::LATER).reason);
}

std::string flushFiles(const std::string& folder)
{
    return textOf(port::flushFolder(folder));
}

std::string writeTree(const std::string& path, tbExport::Node& tree)
{
    const port::SignalHold hold;
    return tbScripts::ContentLoader::saveTreeDeclaration(&tree, path) ? ""
                                                                      : explainUnwritable(path);
}

std::string troubleAsOutput(const std::string& path)
{
    std::error_code error;
    switch (std::filesystem::status(path, error).type())
    {
    case std::filesystem::file_type::regular:
        return {};
    case std::filesystem::file_type::directory:
        return "is a folder, not a file";
    case std::filesystem::file_type::none:
    case std::filesystem::file_type::not_found:
        return error == std::errc::no_such_file_or_directory ? "" : error.message();
    default:
        return "is not a regular file";
    }
}

} // namespace tool

#include "loading/FileReplacement.h"

#include "port/FileReplacing.h"
#include "port/TargetFile.h"

#include <filesystem>
#include <string_view>
#include <system_error>

namespace tbScripts
{

namespace
{

constexpr int MOST_LINKS = 40; // as many as the system follows

// The file that `path` leads to through links, which need not exist.
std::filesystem::path followLinks(std::filesystem::path path)
{
    std::error_code error;
    for (int i = 0; i < MOST_LINKS && std::filesystem::is_symlink(path, error); ++i)
    {
        const std::filesystem::path target = std::filesystem::read_symlink(path, error);
        if (error)
            break;
        path = path.parent_path() / target;
    }
    return path;
}

// Returns false if this is not the way to write `file`: there can be no new file in its folder, or
// none can take its place. A full disk leaves the old file, if there is one.
bool replaceWhole(const std::filesystem::path& file, std::string_view data, bool isThere)
{
    switch (port::replaceFile(file, data, port::FLUSH::NOW).replacing)
    {
    case port::REPLACING::DONE:
    case port::REPLACING::NOT_WRITTEN:
        return true;
    case port::REPLACING::NO_ROOM:
        return isThere;
    case port::REPLACING::NO_NEW_FILE:
    case port::REPLACING::NOT_PLACED:
        return false;
    }
    return false;
}

} // namespace

bool replaceFile(const tbMemory::StringView& path, const tbMemory::StringView& data)
{
    const std::string_view name = path;
    if (name.empty() || name.find('\0') != std::string_view::npos)
        return false; // the system would end the path there and write another file
    const std::filesystem::path given(name);
    const port::TargetFile target(given);
    if (target.getKind() == port::TARGET::REFUSED)
        return false;
    const std::filesystem::path file = followLinks(given);
    if (target.getKind() == port::TARGET::MISSING)
        return replaceWhole(file, data, false);
    const bool isReplaceable = target.getKind() == port::TARGET::REGULAR && target.isAt(file);
    if (!isReplaceable || !replaceWhole(file, data, true))
        target.overwrite(data);
    return true;
}

} // namespace tbScripts

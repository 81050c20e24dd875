#include "tbscripts/ScriptPath.h"

#include <cstddef>

namespace tool
{

namespace
{

constexpr std::size_t LONGEST_PART = 255;  // limit of file systems
constexpr std::size_t LONGEST_PATH = 4095; // limit of the system

std::vector<std::string_view> split(std::string_view path)
{
    std::vector<std::string_view> parts;
    for (;;)
    {
        const std::size_t end = path.find('/');
        parts.push_back(path.substr(0, end));
        if (end == std::string_view::npos)
            return parts;
        path.remove_prefix(end + 1);
    }
}

ScriptPath refusal(const char* reason)
{
    return {{}, reason};
}

} // namespace

ScriptPath pathOfScript(std::string_view name)
{
    if (name.empty())
        return refusal("the name is empty");
    if (name.find('\0') != std::string_view::npos)
        return refusal("the name holds a NUL");
    if (name[0] == '/')
        return refusal("the name is an absolute path");
    if (name.size() > LONGEST_PATH)
        return refusal("the name is too long");

    const std::vector<std::string_view> parts = split(name);
    if (parts.back().empty() || parts.back() == ".")
        return refusal("the name is that of a folder");
    ScriptPath result;
    for (const std::string_view part : parts)
    {
        if (part == "..")
            return refusal("the name leads out of the folder");
        if (part.size() > LONGEST_PART)
            return refusal("the name is too long");
        if (part.empty() || part == ".")
            continue;
        if (!result.path.empty())
            result.path += '/';
        result.path += part;
    }
    return result;
}

std::vector<std::string_view> foldersOf(std::string_view path)
{
    std::vector<std::string_view> folders;
    for (std::size_t end = path.find('/'); end != std::string_view::npos;
         end = path.find('/', end + 1))
        folders.push_back(path.substr(0, end));
    return folders;
}

} // namespace tool

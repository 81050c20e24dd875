#include "tbResources/ResourceManager.h"

#include "RegularFile.h"

#include <filesystem>
#include <string>
#include <string_view>
#include <system_error>

template class tbCommon::SingletonClass<tbResources::ResourceManager>;

namespace tbResources
{

namespace
{

std::filesystem::path toPath(tbMemory::StringView text)
{
    return std::filesystem::path(std::string_view(text));
}

tbMemory::String currentFolder()
{
    std::error_code error;
    const std::filesystem::path folder = std::filesystem::current_path(error);
    if (error)
        return "./"; // it was removed, or may not be read: relative paths stay relative
    return tbMemory::String(folder.string()) + "/";
}

} // namespace

ResourceManager::ResourceManager()
    : m_workingPath(currentFolder())
{
}

ResourceManager::~ResourceManager() = default;

void ResourceManager::setWorkingPath(tbMemory::StringView path)
{
    m_workingPath = path;
}

const tbMemory::String& ResourceManager::getWorkingPath() const noexcept
{
    return m_workingPath;
}

tbMemory::String ResourceManager::getAbsoluteFromWorkingDir(tbMemory::StringView path) const
{
    // Texts, because joining paths of the standard library crashes for want of memory where the
    // first ends with a slash (libstdc++ 12; tests/faults/memory/LoadingFlows).
    if (m_workingPath.empty() || toPath(path).is_absolute())
        return tbMemory::String(path);
    const bool hasSlash = std::string_view(m_workingPath).back() == '/';
    return m_workingPath + (hasSlash ? "" : "/") + path;
}

tbMemory::Buffer ResourceManager::loadFileIntoMemory(tbMemory::StringView path) const
{
    // A system call would end the path at a zero byte and find another file.
    if (std::string_view(path).find('\0') != std::string_view::npos)
        return tbMemory::Buffer();

    return readRegularFile(std::string(std::string_view(path)));
}

} // namespace tbResources

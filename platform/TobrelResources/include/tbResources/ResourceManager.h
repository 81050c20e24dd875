#pragma once

#include "tbResources/Api.h"

#include <tbCommon/SingletonClass.h>
#include <tbMemory/Buffer.h>
#include <tbMemory/String.h>
#include <tbMemory/StringView.h>

namespace tbResources
{

class ResourceManager;

} // namespace tbResources

extern template class TBRESOURCES_API tbCommon::SingletonClass<tbResources::ResourceManager>;

namespace tbResources
{

/// Finds and reads the files of a program. Reached through `getInstance`.
class TBRESOURCES_API ResourceManager : public tbCommon::SingletonClass<ResourceManager>
{
public:
    // A second manager could only find other files than the first.
    ResourceManager(const ResourceManager&) = delete;
    ResourceManager& operator=(const ResourceManager&) = delete;

    /// Stores the folder that relative paths start from, as it is given.
    void setWorkingPath(tbMemory::StringView path);

    /// The folder that was set; at first the process's current one, followed by a "/".
    const tbMemory::String& getWorkingPath() const noexcept;

    /// An absolute path as it is; another joined to the working path, with one "/" between them.
    tbMemory::String getAbsoluteFromWorkingDir(tbMemory::StringView path) const;

    /// Reads a whole regular file, links to one included. The path has the meaning that the system
    /// gives it.
    ///
    /// On failure: an empty buffer, for a path that is missing, unreadable, a directory, a FIFO, a
    /// device or cut by a zero byte.
    tbMemory::Buffer loadFileIntoMemory(tbMemory::StringView path) const;

private:
    friend class tbCommon::SingletonClass<ResourceManager>; // creates and destroys the instance

    ResourceManager();
    ~ResourceManager() override;

    tbMemory::String m_workingPath;
};

} // namespace tbResources

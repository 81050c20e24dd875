#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace tbScripts::test
{

/// A new folder that nobody else uses. It goes with all that is in it.
class TemporaryFolder
{
public:
    TemporaryFolder();

    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    ~TemporaryFolder();

    /// The absolute path of what is called `name` in the folder; its own with a "/" for "".
    std::string pathOf(const std::string& name) const;

    /// Makes the file `name`, and the folders that it lies in.
    void write(const std::string& name, const std::string& bytes) const;

    /// Returns the bytes of the file `name`; "<missing>" if there is none.
    std::string read(const std::string& name) const;

    /// Returns the names of what is in the folder itself, sorted.
    std::vector<std::string> list() const;

private:
    std::filesystem::path m_path;
};

/// Whatever is done meanwhile is done with the rights of an ordinary user, also where the tests are
/// run by one who may do everything.
class OrdinaryUser
{
public:
    OrdinaryUser();

    OrdinaryUser(const OrdinaryUser&) = delete;
    OrdinaryUser& operator=(const OrdinaryUser&) = delete;

    ~OrdinaryUser();
};

} // namespace tbScripts::test

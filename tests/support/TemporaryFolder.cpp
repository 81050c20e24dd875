#include "support/TemporaryFolder.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <random>
#include <stdexcept>

#if !defined(_WIN32)
    #include <unistd.h>
#endif

namespace tbScripts::test
{

namespace
{

// Returns a new folder that nobody else uses.
std::filesystem::path makeFolder()
{
    constexpr int MOST_TRIES = 100;
    std::random_device random;
    for (int i = 0; i < MOST_TRIES; ++i)
    {
        const std::filesystem::path folder =
            std::filesystem::temp_directory_path() / ("tbscripts-" + std::to_string(random()));
        if (std::filesystem::create_directory(folder))
            return folder;
    }
    throw std::runtime_error("no temporary folder");
}

} // namespace

TemporaryFolder::TemporaryFolder()
    : m_path(makeFolder())
{
    // Ordinary users look into it too, and may write.
    std::filesystem::permissions(m_path, std::filesystem::perms::all);
}

TemporaryFolder::~TemporaryFolder()
{
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(m_path, error))
    {
        if (entry.is_directory(error) && !entry.is_symlink(error))
            std::filesystem::permissions(entry, std::filesystem::perms::owner_all, error);
    }
    std::filesystem::remove_all(m_path, error);
}

std::string TemporaryFolder::pathOf(const std::string& name) const
{
    return (m_path / name).string();
}

void TemporaryFolder::write(const std::string& name, const std::string& bytes) const
{
    const std::filesystem::path file = m_path / name;
    std::filesystem::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary) << bytes;
}

std::string TemporaryFolder::read(const std::string& name) const
{
    std::ifstream stream(m_path / name, std::ios::binary);
    if (!stream)
        return "<missing>";
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

std::vector<std::string> TemporaryFolder::list() const
{
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(m_path))
        names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

#if !defined(_WIN32)
namespace
{

constexpr uid_t NOBODY = 65534;
constexpr uid_t ROOT = 0;

} // namespace

OrdinaryUser::OrdinaryUser()
{
    if (::getuid() == ROOT && ::seteuid(NOBODY) != 0)
        throw std::runtime_error("rights cannot be given up");
}

OrdinaryUser::~OrdinaryUser()
{
    if (::getuid() == ROOT && ::seteuid(ROOT) != 0)
        std::abort(); // everything that follows would run with too few rights
}
#endif

} // namespace tbScripts::test

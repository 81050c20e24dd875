#pragma once

#include <filesystem>
#include <string>
#include <unistd.h>

namespace tbScripts::fuzz
{

/// A folder of this process alone, in memory where there is such a place: a fuzzer writes thousands
/// of files a second. Removed with this object.
class ScratchFolder
{
public:
    ScratchFolder()
        : m_path(_memory() / ("fuzz-" + std::to_string(getpid())))
    {
        std::filesystem::create_directories(m_path);
    }

    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    ~ScratchFolder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }

    std::string getPath() const { return m_path.string(); }

private:
    static std::filesystem::path _memory()
    {
        const std::filesystem::path memory = "/dev/shm";
        return std::filesystem::is_directory(memory) ? memory
                                                     : std::filesystem::temp_directory_path();
    }

    std::filesystem::path m_path;
};

} // namespace tbScripts::fuzz

#pragma once

#include <cstdint>
#include <filesystem>
#include <string_view>

namespace tbScripts::port
{

enum class TARGET : std::int32_t
{
    MISSING, // and may be created
    REFUSED, // the system does not let it be written
    REGULAR,
    OTHER // a device, a pipe
};

/// A file that is to be written, opened for that without losing its content. A FIFO without a
/// reader is refused, not waited for.
class TargetFile
{
public:
    explicit TargetFile(const std::filesystem::path& path);
    TargetFile(const TargetFile&) = delete;
    TargetFile& operator=(const TargetFile&) = delete;
    ~TargetFile();

    TARGET getKind() const { return m_kind; }

    /// Returns whether `path` leads to the file that was opened. Some links of the system only look
    /// like a path to what they open: /dev/stdout leads to "pipe:[4711]", or to the former name of
    /// a file that was deleted.
    bool isAt(const std::filesystem::path& path) const;

    /// Writes in place; failures are not reported. A pipe whose reader goes away does not end the
    /// process.
    void overwrite(std::string_view bytes) const;

private:
    TARGET m_kind = TARGET::REFUSED;
#if defined(_WIN32)
    std::filesystem::path m_path; // a file that is open cannot be replaced
#else
    int m_descriptor = -1;
#endif
};

} // namespace tbScripts::port

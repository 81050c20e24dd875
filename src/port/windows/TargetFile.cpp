#include "port/TargetFile.h"

#include "port/windows/Handle.h"

namespace tbScripts::port
{

TargetFile::TargetFile(const std::filesystem::path& path)
    : m_path(path)
{
    const Handle file(path, GENERIC_WRITE, OPEN_EXISTING);
    if (!file.isOpen())
        m_kind = isMissing(systemError()) ? TARGET::MISSING : TARGET::REFUSED;
    else if (file.isFolder())
        m_kind = TARGET::REFUSED;
    else
        m_kind = file.isRegularFile() ? TARGET::REGULAR : TARGET::OTHER;
}

TargetFile::~TargetFile() = default;

bool TargetFile::isAt(const std::filesystem::path& path) const
{
    std::error_code error;
    return std::filesystem::equivalent(m_path, path, error);
}

void TargetFile::overwrite(std::string_view bytes) const
{
    const DWORD disposition = m_kind == TARGET::REGULAR ? TRUNCATE_EXISTING : OPEN_EXISTING;
    const Handle file(m_path, GENERIC_WRITE, disposition);
    if (file.isOpen())
        file.writeAll(bytes);
}

} // namespace tbScripts::port

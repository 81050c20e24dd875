#include "support/RecordingLogger.h"

#include <utility>

namespace tbScripts::test
{

std::ostream& operator<<(std::ostream& stream, const LogEntry& entry)
{
    return stream << '[' << entry.source << "] " << entry.message;
}

void RecordingLogger::log(const tbLog::StringView& message, const tbLog::StringView& source)
{
    m_entries.push_back(
        {std::string(message.data(), message.size()), std::string(source.data(), source.size())});
}

std::vector<LogEntry> RecordingLogger::takeEntries()
{
    return std::exchange(m_entries, {});
}

} // namespace tbScripts::test

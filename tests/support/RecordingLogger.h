#pragma once

#include <tbLog/Logger.h>
#include <tbLog/StringView.h>

#include <gmock/gmock.h>

#include <ostream>
#include <string>
#include <vector>

namespace tbScripts::test
{

struct LogEntry
{
    std::string message;
    std::string source;

    bool operator==(const LogEntry& other) const
    {
        return message == other.message && source == other.source;
    }
};

std::ostream& operator<<(std::ostream& stream, const LogEntry& entry);

/// Keeps every message with its source. A test that leaves unread entries fails in its fixture:
/// silence and noise are both asserted.
class RecordingLogger : public tbLog::Logger
{
public:
    void log(const tbLog::StringView& message, const tbLog::StringView& source) override;

    /// Returns the entries so far and forgets them.
    std::vector<LogEntry> takeEntries();

private:
    std::vector<LogEntry> m_entries;
};

} // namespace tbScripts::test

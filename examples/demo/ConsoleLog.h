#pragma once

#include <tbLog/Logger.h>

namespace demo
{

/// Prints every message of the library: the tag of the component that reports, then the text.
///
/// It is the receiver of the log as long as it exists. Messages have no level; a host that wants
/// one derives it from the tag.
class ConsoleLog : public tbLog::Logger
{
public:
    ConsoleLog();
    ConsoleLog(const ConsoleLog&) = delete;
    ConsoleLog& operator=(const ConsoleLog&) = delete;

    /// Removes the receiver: the log manager does not own it.
    ~ConsoleLog() override;

    void log(const tbLog::StringView& message, const tbLog::StringView& source) override;
};

} // namespace demo

#pragma once

#include <tbLog/Logger.h>

namespace demo
{

/// Prints every message of the library: the tag of the component that reports, then the text.
///
/// Set as receiver while it lives. Messages have no level; a host that wants one derives it from
/// the tag.
class ConsoleLog : public tbLog::Logger
{
public:
    ConsoleLog();
    ConsoleLog(const ConsoleLog&) = delete;
    ConsoleLog& operator=(const ConsoleLog&) = delete;

    /// Takes itself out again: the log manager does not own its receiver.
    ~ConsoleLog() override;

    void log(const tbLog::StringView& message, const tbLog::StringView& source) override;
};

} // namespace demo

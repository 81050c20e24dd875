#pragma once

#include <tbLog/Logger.h>

#include <string>
#include <string_view>
#include <vector>

namespace tool
{

/// Receives the library's messages while it lives. At its end it reports those that nobody has
/// reported in another form.
class LibraryLog : public tbLog::Logger
{
public:
    LibraryLog();
    LibraryLog(const LibraryLog&) = delete;
    LibraryLog& operator=(const LibraryLog&) = delete;
    ~LibraryLog() override;

    void log(const tbLog::StringView& message, const tbLog::StringView& source) override;

    /// `message` is or will be reported otherwise.
    void forget(std::string_view message);

private:
    std::vector<std::string> m_messages;
};

} // namespace tool

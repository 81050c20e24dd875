#pragma once

#include <tbLog/Logger.h>

#include <string>
#include <string_view>
#include <vector>

namespace tool
{

/// Receives the library's messages as long as it exists. Its destructor reports those that the tool
/// has not reported in another form.
class LibraryLog : public tbLog::Logger
{
public:
    LibraryLog();
    LibraryLog(const LibraryLog&) = delete;
    LibraryLog& operator=(const LibraryLog&) = delete;
    ~LibraryLog() override;

    void log(const tbLog::StringView& message, const tbLog::StringView& source) override;

    /// Marks `message` as reported in another form.
    void forget(std::string_view message);

private:
    std::vector<std::string> m_messages;
};

} // namespace tool

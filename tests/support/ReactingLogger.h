#pragma once

#include "support/RecordingLogger.h"

#include <functional>

namespace tbScripts::test
{

/// Receives the log while it lives: records each entry, then does what it was made to do.
class ReactingLogger : public RecordingLogger
{
public:
    explicit ReactingLogger(std::function<void()> react);

    ReactingLogger(const ReactingLogger&) = delete;
    ReactingLogger& operator=(const ReactingLogger&) = delete;

    /// Gives the log back to the receiver before it.
    ~ReactingLogger() override;

    void log(const tbLog::StringView& message, const tbLog::StringView& source) override;

private:
    std::function<void()> m_react;
    tbLog::Logger* m_previous; // not owned
};

} // namespace tbScripts::test

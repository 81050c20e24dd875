#pragma once

#include "support/Matchers.h"
#include "support/RecordingLogger.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <vector>

namespace tbScripts::test
{

/// Records what the library logs. A test that leaves unread entries fails.
class LogFixture : public ::testing::Test
{
public:
    /// Takes the entries, which have to be these.
    void expectLogged(const std::vector<LogEntry>& entries, int line = __builtin_LINE());

    /// Takes one entry, which has to be this.
    void expectLogged(
        const std::string& message, const std::string& source, int line = __builtin_LINE());

    /// Takes the entries, which have to be that many.
    void expectLogCount(std::size_t count, int line = __builtin_LINE());

    /// Takes the entries, whatever they are.
    void forgetLog();

protected:
    LogFixture();
    ~LogFixture() override;

    void TearDown() override;

    RecordingLogger m_log;
};

} // namespace tbScripts::test

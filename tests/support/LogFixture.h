#pragma once

#include "support/RecordingLogger.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace tbScripts::test
{

/// Records what the library logs. A test that leaves unread entries fails.
class LogFixture : public ::testing::Test
{
protected:
    LogFixture();
    ~LogFixture() override;

    void TearDown() override;

    /// Takes the entries; they have to be exactly these, in this order.
    void expectLogged(const std::vector<LogEntry>& entries, int line = __builtin_LINE());

    /// Takes the entries; there has to be exactly this one.
    void expectLogged(
        const std::string& message, const std::string& source, int line = __builtin_LINE());

    RecordingLogger m_log;
};

} // namespace tbScripts::test

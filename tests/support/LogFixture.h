#pragma once

#include "support/RecordingLogger.h"

#include <gtest/gtest.h>

namespace tbScripts::test
{

/// Records what the library logs. A test that leaves unread entries fails.
class LogFixture : public ::testing::Test
{
protected:
    LogFixture();
    ~LogFixture() override;

    void TearDown() override;

    RecordingLogger m_log;
};

} // namespace tbScripts::test

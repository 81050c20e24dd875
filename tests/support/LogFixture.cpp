#include "support/LogFixture.h"

#include <tbScripts/LogManager.h>

namespace tbScripts::test
{

LogFixture::LogFixture()
{
    LogManager::getInstance()->setReceiver(&m_log);
}

LogFixture::~LogFixture()
{
    if (LogManager* const manager = LogManager::getInstanceIfExisting())
        manager->kill();
}

void LogFixture::TearDown()
{
    EXPECT_THAT(m_log.takeEntries(), ::testing::IsEmpty());
}

void LogFixture::expectLogged(const std::vector<LogEntry>& entries, int line)
{
    EXPECT_EQ(m_log.takeEntries(), entries) << "in line " << line;
}

void LogFixture::expectLogged(const std::string& message, const std::string& source, int line)
{
    expectLogged({{message, source}}, line);
}

void LogFixture::expectLogCount(std::size_t count, int line)
{
    EXPECT_EQ(m_log.takeEntries().size(), count) << "in line " << line;
}

void LogFixture::forgetLog()
{
    m_log.takeEntries();
}

} // namespace tbScripts::test

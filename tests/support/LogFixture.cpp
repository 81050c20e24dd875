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

} // namespace tbScripts::test

#include "support/ReactingLogger.h"

#include "support/LogFixture.h"

#include <tbScripts/LogManager.h>

namespace tbScripts::test
{

using ::testing::ElementsAre;

class ReactingLoggerTest : public LogFixture
{
};

TEST_F(ReactingLoggerTest, RecordsAndReactsToEachEntry)
{
    int reactions = 0;
    ReactingLogger logger([&reactions] { ++reactions; });

    LogManager::getInstance()->log("lost", "Test");

    EXPECT_EQ(reactions, 1);
    EXPECT_THAT(logger.takeEntries(), ElementsAre(LogEntry{"lost", "Test"}));
}

TEST_F(ReactingLoggerTest, GivesTheLogBackAtItsEnd)
{
    {
        const ReactingLogger logger([] {});
    }

    LogManager::getInstance()->log("lost", "Test");

    EXPECT_THAT(m_log.takeEntries(), ElementsAre(LogEntry{"lost", "Test"}));
}

} // namespace tbScripts::test

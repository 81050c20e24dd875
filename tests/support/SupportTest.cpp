// The helpers are tested too: one that cannot fail proves nothing.

#include "support/AllocationCounter.h"
#include "support/CountedObject.h"
#include "support/LogFixture.h"

#include <tbScripts/LogManager.h>

#include <gtest/gtest-spi.h>

#include <memory>

namespace tbScripts::test
{

using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST(AllocationCounterTest, CountsWhatIsAllocatedSinceItWasMade)
{
    const AllocationCounter counter;

    const auto first = std::make_unique<int>(1);
    const auto second = std::make_unique<int[]>(10);

    EXPECT_EQ(counter.count(), 2U);
}

TEST(AllocationCounterTest, CountsNothingWhereNothingIsAllocated)
{
    const AllocationCounter counter;

    EXPECT_EQ(counter.count(), 0U);
}

TEST(CountedObjectTest, TellsLivingFromMade)
{
    CountedObject::restart();
    const CountedObject first;

    {
        const CountedObject second(first);
        EXPECT_EQ(CountedObject::getLiving(), 2);
    }

    EXPECT_EQ(CountedObject::getLiving(), 1);
    EXPECT_EQ(CountedObject::getMade(), 2);
}

TEST(RecordingLoggerTest, KeepsEntriesInOrderUntilTheyAreTaken)
{
    RecordingLogger logger;
    logger.log(tbLog::StringView("one", 3), tbLog::StringView("A", 1));
    logger.log(tbLog::StringView("two", 3), tbLog::StringView("B", 1));

    EXPECT_THAT(logger.takeEntries(), ElementsAre(LogEntry{"one", "A"}, LogEntry{"two", "B"}));
    EXPECT_THAT(logger.takeEntries(), IsEmpty());
}

class LogFixtureTest : public LogFixture
{
};

TEST_F(LogFixtureTest, ExpectsTheEntriesInOrderAndTakesThem)
{
    LogManager::getInstance()->log("one", "A");
    LogManager::getInstance()->log("two", "B");

    expectLogged({{"one", "A"}, {"two", "B"}});

    expectLogged({});
}

TEST_F(LogFixtureTest, NoticesAnEntryTooMany)
{
    LogManager::getInstance()->log("one", "A");

    EXPECT_NONFATAL_FAILURE(expectLogged({}), "one");
}

TEST_F(LogFixtureTest, NoticesAnotherSource)
{
    LogManager::getInstance()->log("one", "A");

    EXPECT_NONFATAL_FAILURE(expectLogged("one", "B"), "[B] one");
}

} // namespace tbScripts::test

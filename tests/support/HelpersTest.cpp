// The helpers are tested too: one that cannot fail proves nothing.

#include "support/AllocationCounter.h"
#include "support/ChildProcess.h"
#include "support/CountedObject.h"
#include "support/EnvironmentFixture.h"
#include "support/Execution.h"
#include "support/FakeScriptObjects.h"
#include "support/Farewell.h"
#include "support/LogFixture.h"
#include "support/ReactingLogger.h"
#include "support/SmallStackThread.h"

#include <tbScripts/LogManager.h>

#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

#include <csignal>
#include <memory>
#include <pthread.h>
#include <stdexcept>
#include <unistd.h>

namespace tbScripts::test
{

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

using LogFixtureTest = LogFixture;

TEST_F(LogFixtureTest, ExpectsTheEntriesInOrderAndTakesThem)
{
    LogManager::getInstance()->log("one", "A");
    LogManager::getInstance()->log("two", "B");

    expectLogged({{"one", "A"}, {"two", "B"}});
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

TEST(ChildProcessTest, GivesItsExitCode)
{
    ChildProcess child([] { return 5; });

    EXPECT_EQ(child.wait(), 5);
}

TEST(ChildProcessTest, ChangesNothingHere)
{
    int value = 1;
    ChildProcess child([&value] { return value = 2; });

    EXPECT_EQ(child.wait(), 2);
    EXPECT_EQ(value, 1);
}

TEST(ChildProcessTest, TellsTheSignalThatEndedIt)
{
    ChildProcess child([] { return ::raise(SIGTERM); });

    EXPECT_EQ(child.wait(), -15);
}

TEST(ChildProcessTest, IsKilledWhereverItIs)
{
    ChildProcess child(
        []
        {
            for (;;)
                ::pause();
            return 0;
        });

    child.kill();

    EXPECT_EQ(child.wait(), -9);
}

TEST(ChildProcessTest, ExceptionIsAnExitCodeToo)
{
    ChildProcess child([]() -> int { throw std::runtime_error("failed"); });

    EXPECT_EQ(child.wait(), 111);
}

TEST(OutcomeTest, TellsCodeSuccessAndMessage)
{
    ExecutionResult result;
    result.message = "boom";
    result.code = 5;
    result.success = false;

    EXPECT_EQ(outcomeOf(result), Outcome(5, false, "boom"));
}

TEST(OutcomeTest, OfAnEnvironmentIsThatOfItsLastRun)
{
    Environment environment;
    environment.setEnvironmentFor(INTERPRETER_LUA);

    runScript(environment, "error('boom', 0)", "intro");

    EXPECT_EQ(
        lastOutcome(environment), Outcome(5, false, "Error while executing script 'intro' : boom"));
}

TEST(CompiledScriptTest, IsReadyToRun)
{
    CompiledScript script("return 1", "intro");

    EXPECT_EQ(script->getName(), "intro");
    EXPECT_TRUE(script->getLastCompilationResult().success);
    EXPECT_FALSE(CompiledScript("return +")->getLastCompilationResult().success);
}

// The fakes are tested too: one that counts nothing proves nothing.

using FakeScriptObjectsTest = FakeScriptObjectsFixture;

TEST_F(FakeScriptObjectsTest, ReferencesAndViewsAreCountedWhileTheyLive)
{
    const FakeView view;

    const auto reference = std::make_unique<FakeReference>();

    EXPECT_EQ(CountedObject::getLiving(), 2);
}

TEST_F(FakeScriptObjectsTest, ViewMakesAReferenceOfItsKind)
{
    FakeView view(PARAM_TYPE_SCRIPT_FUNCTION);

    const std::unique_ptr<ScriptObjectInterpreterReference> reference(view.createReference());

    ASSERT_NE(reference, nullptr);
    EXPECT_EQ(reference->getType(), PARAM_TYPE_SCRIPT_FUNCTION);
    EXPECT_EQ(view.getLastReference(), reference.get());
}

TEST_F(FakeScriptObjectsTest, ViewThatLooksAtNothingMakesNoReference)
{
    FakeView view;
    view.lookAtNothing();

    EXPECT_EQ(view.createReference(), nullptr);
}

TEST(FarewellTest, ActsOnceWhenTheLastCopyGoes)
{
    int acts = 0;
    std::shared_ptr<const void> first = makeFarewell([&acts] { ++acts; });
    std::shared_ptr<const void> second = first;

    first.reset();
    EXPECT_EQ(acts, 0);
    second.reset();

    EXPECT_EQ(acts, 1);
}

using ReactingLoggerTest = LogFixture;

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

TEST(SmallStackThreadTest, RunsTheWorkOnAStackOfTheChosenSize)
{
    std::size_t stackSize = 0;

    runOnStackOf(
        1 << 20,
        [&stackSize]
        {
            pthread_attr_t attributes;
            ASSERT_EQ(pthread_getattr_np(pthread_self(), &attributes), 0);
            EXPECT_EQ(pthread_attr_getstacksize(&attributes, &stackSize), 0);
            EXPECT_EQ(pthread_attr_destroy(&attributes), 0);
        });

    EXPECT_EQ(stackSize, std::size_t{1} << 20);
}

TEST(SmallStackThreadTest, WaitsForTheEndOfTheWork)
{
    bool isDone = false;

    runOnStackOf(1 << 20, [&isDone] { isDone = true; });

    EXPECT_TRUE(isDone);
}

} // namespace tbScripts::test

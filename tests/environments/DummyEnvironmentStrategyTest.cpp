// What an environment without interpreter does where its front has no call for it.

#include "environments/DummyEnvironmentStrategy.h"

#include "support/LogFixture.h"

#include <tbScripts/Namespace.h>
#include <tbScripts/Script.h>
#include <tbScripts/UserType.h>

#include <memory>

namespace tbScripts::test
{

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class DummyEnvironmentStrategyTest : public LogFixture
{
protected:
    DummyEnvironmentStrategy m_strategy{std::make_shared<const tbMemory::String>("limbo")};
};

TEST_F(DummyEnvironmentStrategyTest, ClearsGlobalsSilently)
{
    m_strategy.clearGlobals();

    EXPECT_THAT(m_log.takeEntries(), IsEmpty());
}

TEST_F(DummyEnvironmentStrategyTest, GivesNoUserType)
{
    EXPECT_EQ(m_strategy.createUserType("T"), nullptr);

    EXPECT_THAT(
        m_log.takeEntries(),
        ElementsAre(LogEntry{
            "Requesting a user type in environment 'limbo', which has no InterpreterType. This "
            "will have no effect, returning nullptr.",
            "Environment"}));
}

TEST_F(DummyEnvironmentStrategyTest, GivesNoNamespace)
{
    EXPECT_EQ(m_strategy.createNamespace("n"), nullptr);

    EXPECT_THAT(
        m_log.takeEntries(),
        ElementsAre(LogEntry{
            "Requesting a namespace in environment 'limbo', which has no InterpreterType. This "
            "will have no effect, returning nullptr.",
            "Environment"}));
}

class EnvironmentStrategyResultTest : public LogFixture
{
protected:
    EnvironmentStrategyResultTest()
    {
        m_strategy.execute(Script()); // fails: there is no interpreter
        m_log.takeEntries();
    }

    DummyEnvironmentStrategy m_strategy{std::make_shared<const tbMemory::String>("limbo")};
};

TEST_F(EnvironmentStrategyResultTest, ShowsTheLastOutcomeToAResultThatIsAddedLater)
{
    ExecutionResult result;

    m_strategy.addResult(result);

    EXPECT_EQ(result.code, 2);
    EXPECT_FALSE(result.success);
}

TEST_F(EnvironmentStrategyResultTest, ShowsEachOutcomeToAllResults)
{
    ExecutionResult first;
    ExecutionResult second;
    m_strategy.addResult(first);
    m_strategy.addResult(second);
    first = ExecutionResult();
    second = ExecutionResult();

    m_strategy.execute(Script());
    m_log.takeEntries();

    EXPECT_EQ(first.code, 2);
    EXPECT_EQ(second.code, 2);
}

TEST_F(EnvironmentStrategyResultTest, LeavesARemovedResultAlone)
{
    ExecutionResult result;
    m_strategy.addResult(result);
    m_strategy.removeResult(result);
    result = ExecutionResult();

    m_strategy.execute(Script());
    m_log.takeEntries();

    EXPECT_EQ(result.code, 0);
}

} // namespace tbScripts::test

// What an environment without interpreter does where its front has no call for it.

#include "environments/DummyEnvironmentStrategy.h"

#include "support/LogFixture.h"

#include <memory>

namespace tbScripts::test
{

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class DummyEnvironmentStrategyTest : public LogFixture
{
protected:
    DummyEnvironmentStrategy m_strategy{
        std::make_shared<const tbMemory::String>("limbo"), std::make_shared<ExecutionResult>()};
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

TEST(EnvironmentStrategyTest, ResetsTheResultItIsGiven)
{
    const auto result = std::make_shared<ExecutionResult>();
    result->message = "boom";
    result->code = 5;
    result->success = false;

    const DummyEnvironmentStrategy strategy(
        std::make_shared<const tbMemory::String>("limbo"), result);

    EXPECT_EQ(&strategy.getLastExecutionResult(), result.get());
    EXPECT_EQ(result->message, "");
    EXPECT_EQ(result->code, 0);
    EXPECT_TRUE(result->success);
}

} // namespace tbScripts::test

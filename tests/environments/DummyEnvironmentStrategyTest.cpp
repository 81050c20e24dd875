// What an environment without interpreter does where its front has no call for it.

#include "environments/DummyEnvironmentStrategy.h"

#include "support/LogFixture.h"

#include <tbScripts/Namespace.h>
#include <tbScripts/Script.h>
#include <tbScripts/UserType.h>

#include <memory>

namespace tbScripts::test
{

class DummyEnvironmentStrategyTest : public LogFixture
{
protected:
    DummyEnvironmentStrategy m_strategy{std::make_shared<const tbMemory::String>("limbo")};
};

TEST_F(DummyEnvironmentStrategyTest, ClearsGlobalsSilently)
{
    m_strategy.clearGlobals();
}

TEST_F(DummyEnvironmentStrategyTest, GivesNoUserTypeAndNoNamespace)
{
    EXPECT_EQ(m_strategy.createUserType("T"), nullptr);
    EXPECT_EQ(m_strategy.createNamespace("n"), nullptr);

    expectLogged(
        {{"Requesting a user type in environment 'limbo', which has no InterpreterType. This "
          "will have no effect, returning nullptr.",
          "Environment"},
         {"Requesting a namespace in environment 'limbo', which has no InterpreterType. This "
          "will have no effect, returning nullptr.",
          "Environment"}});
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

TEST_F(EnvironmentStrategyResultTest, ShowsEachOutcomeToAllResultsButARemovedOne)
{
    ExecutionResult results[3];
    for (ExecutionResult& result : results)
        m_strategy.addResult(result);
    m_strategy.removeResult(results[1]);
    for (ExecutionResult& result : results)
        result = ExecutionResult();

    m_strategy.execute(Script());
    m_log.takeEntries();

    EXPECT_EQ(results[0].code, 2);
    EXPECT_EQ(results[1].code, 0);
    EXPECT_EQ(results[2].code, 2);
}

} // namespace tbScripts::test

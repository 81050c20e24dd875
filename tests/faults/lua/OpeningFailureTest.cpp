// No memory while a state is made, for an environment or for a compilation: whatever step fails,
// the outcome is the same and nothing is left over.

#include "support/EnvironmentFixture.h"
#include "support/InterpreterCalls.h"

#include <tbScripts/Script.h>

#include <string>
#include <vector>

namespace tbScripts::test
{

class OpeningFailureTest : public LogFixture
{
protected:
    StateMemory m_memory;
};

class EnvironmentOpeningFailureTest : public OpeningFailureTest
{
protected:
    EnvironmentOpeningFailureTest() { m_environment.setName("world"); }

    // Switches with memory for `allowed` requests. Returns whether one was refused.
    bool switchWith(std::size_t allowed)
    {
        m_memory.refuseAfter(allowed);
        m_environment.setEnvironmentFor(INTERPRETER_LUA);
        m_memory.allowAll();
        return m_memory.hasRefused();
    }

    static LogEntry noMemory()
    {
        return LogEntry{
            "Not enough memory for an interpreter. This will disable the Environment.",
            "Environment"};
    }

    void TearDown() override
    {
        // Without interpreter, the end of an environment warns.
        m_environment.setEnvironmentFor(INTERPRETER_LUA);
        OpeningFailureTest::TearDown();
        m_environment = Environment();
        m_log.takeEntries();
    }

    Environment m_environment;
};

TEST_F(EnvironmentOpeningFailureTest, EveryStepMayFail)
{
    std::size_t refusals = 0;
    for (; switchWith(refusals); ++refusals)
    {
        ASSERT_THAT(m_log.takeEntries(), ElementsAre(noMemory()));
        ASSERT_EQ(m_memory.countLivingBlocks(), 0U);
    }

    EXPECT_GT(refusals, 100U); // the libraries take more than that
    EXPECT_TRUE(runScript(m_environment, "assert(string and table and math)"));
}

TEST_F(EnvironmentOpeningFailureTest, EnvironmentHasNoInterpreterThen)
{
    switchWith(0);
    m_log.takeEntries();

    EXPECT_FALSE(m_environment.isVarSet("score"));

    expectLogged(
        "Querying if a a variable is set in environment 'world', which has no "
        "InterpreterType. This will have no effect.",
        "Environment");
}

TEST_F(EnvironmentOpeningFailureTest, FormerInterpreterIsGoneAndFunctionsAndTheResultStayInPlace)
{
    m_environment.setEnvironmentFor(INTERPRETER_LUA);
    Function* const answer = m_environment.setFunc("answer");
    m_environment.setVar("score", 12);
    const ScriptObjectReference score = m_environment.getVar("score");
    runScript(m_environment, "error('lost')");
    m_log.takeEntries();
    const ExecutionResult& result = m_environment.getLastExecutionResult();

    switchWith(0);

    EXPECT_EQ(m_memory.countLivingBlocks(), 0U);
    expectLogged({noMemory()});
    EXPECT_EQ(&m_environment.getLastExecutionResult(), &result);
    EXPECT_TRUE(result.success);
    EXPECT_EQ(m_environment.getFunc("answer"), answer);
}

class CompilationFailureTest : public OpeningFailureTest
{
protected:
    CompilationFailureTest()
    {
        m_script.setName("round");
        m_script.setTargetInterpreter(INTERPRETER_LUA);
        m_script.setSources("local t = {1, 2, 'three'} return function() return t[1] + t[2] end");
    }

    // Compiles with memory for `allowed` requests. Returns whether one was refused.
    bool loadWith(std::size_t allowed)
    {
        m_memory.refuseAfter(allowed);
        m_hasSucceeded = m_script.load();
        m_memory.allowAll();
        return m_memory.hasRefused();
    }

    Script m_script;
    bool m_hasSucceeded = false;
};

TEST_F(CompilationFailureTest, EveryStepMayFail)
{
    std::size_t refusals = 0;
    for (; loadWith(refusals); ++refusals)
    {
        ASSERT_FALSE(m_hasSucceeded);
        ASSERT_EQ(m_script.getLastCompilationResult().errorCode, 4U);
        ASSERT_THAT(
            m_log.takeEntries(),
            ElementsAre(
                LogEntry{"Error while compiling script 'round' : not enough memory", "LuaScript"}));
        ASSERT_EQ(m_memory.countLivingBlocks(), 0U);
    }

    EXPECT_GT(refusals, 10U);
    EXPECT_TRUE(m_hasSucceeded);
}

TEST_F(CompilationFailureTest, FormerCompiledFormIsGone)
{
    Environment environment;
    environment.setEnvironmentFor(INTERPRETER_LUA);
    ASSERT_TRUE(m_script.load());
    loadWith(0);
    m_log.takeEntries();

    EXPECT_FALSE(environment.execute(m_script));

    EXPECT_EQ(environment.getLastExecutionResult().code, 4);
    m_log.takeEntries();
}

TEST_F(CompilationFailureTest, PrivateStateIsClosedAfterSuccessAndASyntaxError)
{
    EXPECT_TRUE(m_script.load());
    EXPECT_EQ(m_memory.countLivingBlocks(), 0U);
    m_script.setSources("return return");

    EXPECT_FALSE(m_script.load());

    EXPECT_EQ(m_memory.countLivingBlocks(), 0U);
    EXPECT_EQ(m_log.takeEntries().size(), 1U);
}

} // namespace tbScripts::test

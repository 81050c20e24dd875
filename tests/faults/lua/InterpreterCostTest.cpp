// What host calls cost, counted in calls of the interpreter instead of time.

#include "support/EnvironmentStateFixture.h"
#include "support/GlobalOperations.h"
#include "support/InterpreterCalls.h"
#include "support/RowName.h"
#include "support/Sanitizers.h"

namespace tbScripts::test
{

class InterpreterCostTest : public EnvironmentStateFixture
{
protected:
    // Makes dead objects whose finalisers raise.
    void makeRaisingObjects(int count)
    {
        environment().setVar("count", count);
        run("collectgarbage('stop') local function fail() error('finaliser failed', 0) end "
            "for i = 1, count do getmetatable(newproxy(true)).__gc = fail end");
    }
};

TEST_F(InterpreterCostTest, RaisingFinalisersCostNoFurtherFullCollections)
{
    makeRaisingObjects(repetitions(20000));
    const InterpreterCalls calls;

    environment().requestGarbageCollection();

    const std::vector<LogEntry> entries = m_log.takeEntries();
    EXPECT_THAT(entries, SizeIs(repetitions(20000)));
    EXPECT_THAT(entries, Each(LogEntry{"finaliser failed", "LuaEnvironment"}));
    EXPECT_EQ(calls.countFullCollections(), 2U);
}

TEST_F(InterpreterCostTest, RaisingFinalisersCostTheEndOfAnEnvironmentNoMoreEither)
{
    makeRaisingObjects(repetitions(20000));
    run("collectgarbage('stop')");
    const InterpreterCalls calls;

    destroyEnvironment();

    EXPECT_EQ(m_log.takeEntries().size(), static_cast<std::size_t>(repetitions(20000)));
    EXPECT_EQ(calls.countFullCollections(), 4U); // two for the globals, two for the bindings
}

#ifndef TBSCRIPTS_PROTECTED_BOUNDARY

using UnprotectedAccessTest = OnValues<EnvironmentStateFixture, GlobalOperation>;

VALUES(UnprotectedAccessTest, ::testing::ValuesIn(allGlobalOperations()));

TEST_P(UnprotectedAccessTest, MakesNoProtectedCall)
{
    const InterpreterCalls calls;

    GetParam().perform(environment(), "score");

    EXPECT_EQ(calls.countProtectedCalls(), 0U);
}

TEST_P(UnprotectedAccessTest, MakesOneWhileTheHostHandlesAnException)
{
    std::size_t protectedCalls = 0;
    try
    {
        throw 7;
    }
    catch (int)
    {
        const InterpreterCalls calls;
        GetParam().perform(environment(), "score");
        protectedCalls = calls.countProtectedCalls();
    }

    EXPECT_GE(protectedCalls, 1U);
}

#endif

TEST_F(InterpreterCostTest, ScriptFunctionCallMakesOneProtectedCall)
{
    run("function give() return 1 end");
    const ScriptObjectReference give = environment().getScriptFunction("give");
    Parameters outputs;
    const InterpreterCalls calls;

    environment().callScriptFunction(give, {}, outputs);

#ifdef TBSCRIPTS_PROTECTED_BOUNDARY
    EXPECT_EQ(calls.countProtectedCalls(), 2U);
#else
    EXPECT_EQ(calls.countProtectedCalls(), 1U);
#endif
}

} // namespace tbScripts::test

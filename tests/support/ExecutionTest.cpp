#include "support/Execution.h"

#include "support/EnvironmentFixture.h"

namespace tbScripts::test
{

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

} // namespace tbScripts::test

// Each context has to be what its name says, or the tests that go through all of them prove less
// than they seem to.

#include "support/CallContextFixture.h"

#include <exception>

namespace tbScripts::test
{

class CallContextFixtureTest : public CallContextFixture,
                               public ::testing::WithParamInterface<CALL_CONTEXT>
{
};

INSTANTIATE_TEST_SUITE_P(
    Contexts,
    CallContextFixtureTest,
    ::testing::ValuesIn(allCallContexts()),
    ::testing::PrintToStringParamName());

TEST_P(CallContextFixtureTest, ActsOnce)
{
    int acts = 0;

    performIn(GetParam(), [&acts] { ++acts; });

    EXPECT_EQ(acts, 1);
}

TEST_P(CallContextFixtureTest, HandlesAnExceptionInCatchBlocksOnly)
{
    bool isHandling = false;

    performIn(GetParam(), [&] { isHandling = std::current_exception() != nullptr; });

    EXPECT_EQ(
        isHandling,
        GetParam() == CALL_CONTEXT::CATCH_BLOCK ||
            GetParam() == CALL_CONTEXT::HOST_FUNCTIONS_CATCH);
}

TEST_P(CallContextFixtureTest, LetsAnExceptionPassDuringUnwindingOnly)
{
    // Not zero if other tests ran before: what the interpreter swallows stays in this count.
    const int before = std::uncaught_exceptions();
    int during = 0;

    performIn(GetParam(), [&] { during = std::uncaught_exceptions(); });

    EXPECT_EQ(during, before + (GetParam() == CALL_CONTEXT::UNWINDING ? 1 : 0));
}

TEST_P(CallContextFixtureTest, RunsACoroutineInThatContextOnly)
{
    run("function isMain() return coroutine.running() == nil end");
    const ScriptObjectReference isMain = environment().getScriptFunction("isMain");
    std::vector<FunctionParameter> outputs{FunctionParameter(false)};

    performIn(
        GetParam(),
        [&]
        {
            Parameters outputView(outputs);
            environment().callScriptFunction(isMain, {}, outputView);
        });

    EXPECT_EQ(outputs[0].getBool(), GetParam() != CALL_CONTEXT::COROUTINE);
}

} // namespace tbScripts::test

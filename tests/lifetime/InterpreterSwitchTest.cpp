// An environment that is given another interpreter: what was declared stays registered, inert, and
// is installed in the new one when it is declared again (see EnvironmentDeclarationsTest too).

#include "support/Sanitizers.h"
#include "support/Steps.h"

#include <memory>
#include <string>
#include <vector>

namespace tbScripts::test
{

using InterpreterSwitchTest = EnvironmentFixture;

namespace
{

// Declares the host function `switch`, which tries to switch.
Step switching(INTERPRETER interpreter = INTERPRETER_LUA)
{
    return [=](EnvironmentFixture& test)
    {
        test.declareAction(
            "switch", [&test, interpreter] { test.environment().setEnvironmentFor(interpreter); });
    };
}

Step refused()
{
    return logs(
        "Environment 'world' is running a script. Its type can't be changed from inside.",
        "Environment");
}

const Facts<InterpreterSwitchTest> FACTS(
    "InterpreterSwitchTest",
    {
        {"SwitchFromInsideAHostFunctionIsRefused",
         {switching(),
          run("known = 42 switch() assert(known == 42)"),
          refused(),
          is("known", "42")}},
        {"SwitchToNoneFromInsideAHostFunctionIsRefused",
         {switching(INTERPRETER_UNKNOWN),
          run("known = 42 switch() assert(known == 42)"),
          refused()}},
        {"SwitchFromInsideACoroutineIsRefused",
         {switching(),
          run("coroutine.wrap(function() switch() done = true end)() assert(done)"),
          refused()}},
        {"SwitchFromAMetamethodOfTheGlobalsIsRefused",
         {switching(),
          run("setmetatable(_G, {__index = function() switch() return 7 end})"),
          [](auto& test) { EXPECT_EQ(test.environment().getVar("score", 0), 7); },
          refused()}},
        {"SwitchFromAFinaliserOfARequestedCollectionIsRefused",
         {switching(),
          run("known = 42 getmetatable(newproxy(true)).__gc = function() switch() end"),
          collect(),
          refused(),
          is("known", "42")}},
        {"SwitchFromAFinaliserOfAClosingStateIsRefused",
         {switching(),
          run("kept = newproxy(true) getmetatable(kept).__gc = switch"),
          restart(),
          refused(),
          is("kept", "nil")}},
    });

} // namespace

TEST_F(InterpreterSwitchTest, FunctionCanBeInstalledAfterEverySwitch)
{
    Function* const function = declare("answer", {}, returning(42));
    for (int i = 0; i < 3; ++i)
    {
        restart();
        EXPECT_EQ(declare("answer", {}, returning(42)), function);
        is("answer()", "42");
    }
    expectLogCount(3);
}

TEST_F(InterpreterSwitchTest, TwoSwitchesWithLivingFunctionsAndReferences)
{
    const auto witness = std::make_shared<int>();
    std::vector<ScriptObjectReference> references;
    for (const char* const name : {"first", "second", "third"})
    {
        declare(name, {}, doing([witness] {}));
        run("list = {}");
        references.push_back(environment().getVar("list"));
        references.push_back(environment().getScriptFunction(name));
        restart();
    }
    destroyEnvironment();
    EXPECT_EQ(witness.use_count(), 1); // all functions are destroyed with the environment
    EXPECT_EQ(references.size(), 6U);  // they go last, and touch nothing
}

TEST_F(InterpreterSwitchTest, AnotherEnvironmentMaySwitchMeanwhile)
{
    Environment other;
    other.setEnvironmentFor(INTERPRETER_LUA);
    other.setVar("known", 1);
    declareAction("switchOther", [&other] { other.setEnvironmentFor(INTERPRETER_LUA); });

    run("switchOther()");

    EXPECT_FALSE(other.isVarSet("known"));
}

TEST_F(InterpreterSwitchTest, CoroutinesThatWereSuspendedGoWithTheirState)
{
    int finalised = 0;
    declareAction("count", [&finalised] { ++finalised; });
    run("local function held() local object = newproxy(true)"
        "  getmetatable(object).__gc = count coroutine.yield(object) end "
        "kept = {} for i = 1, 10 do kept[i] = coroutine.create(held)"
        "  coroutine.resume(kept[i]) end");

    restart();

    EXPECT_EQ(finalised, 10);
}

TEST_F(InterpreterSwitchTest, LastResultOfTheLatestInterpreterShowsThroughTheOldReference)
{
    const ExecutionResult& result = environment().getLastExecutionResult();
    environment().setEnvironmentFor(INTERPRETER_UNKNOWN);
    runScript(environment(), "return 1");
    EXPECT_EQ(result.code, 2);
    restart(); // without interpreter, the end of an environment warns
    forgetLog();
}

TEST_F(InterpreterSwitchTest, ManyEnvironmentsComeAndGo)
{
    for (int i = 0; i < repetitions(10000); ++i)
    {
        Environment passing;
        passing.setEnvironmentFor(INTERPRETER_LUA);
        passing.setFunc("answer")->setFunction(returning(42));
        passing.setVar("count", i);
        ASSERT_EQ(passing.getVar("count", -1), i);
    }
}

TEST_F(InterpreterSwitchTest, OneEnvironmentIsSwitchedManyTimes)
{
    for (int i = 0; i < repetitions(2000); ++i)
    {
        restart();
        environment().setVar("count", i);
        ASSERT_EQ(environment().getVar("count", -1), i);
    }
}

} // namespace tbScripts::test

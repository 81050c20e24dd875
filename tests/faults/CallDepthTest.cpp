// Hosts and scripts that call each other nest. A bounded depth works; without bound an error comes
// well before the C stack ends.

#include "support/EnvironmentFixture.h"
#include "support/Sanitizers.h"
#include "support/SmallStackThread.h"

#include <algorithm>
#include <cstddef>
#include <string>

namespace tbScripts::test
{

class CallDepthTest : public EnvironmentFixture
{
protected:
    // Declares `again`, by which the script function `enter` calls itself through the host. Both
    // count what they do.
    void makeEndlessRecursion()
    {
        run("entered = 0 function enter() entered = entered + 1 again() end");
        m_enter = environment().getScriptFunction("enter");
        declare( // an action in a function would need more of the stack
            "again",
            {},
            [this](const Parameters&)
            {
                _enter();
                return FunctionParameter::VOID;
            });
    }

    bool enter() { return _enter(); }

    static LogEntry overflow() { return LogEntry{"C stack overflow", "LuaEnvironment"}; }

    void TearDown() override
    {
        m_enter = ScriptObjectReference();
        EnvironmentFixture::TearDown();
    }

    int m_failures = 0;

private:
    bool _enter()
    {
        Parameters outputs;
        const bool hasSucceeded = environment().callScriptFunction(m_enter, {}, outputs);
        if (!hasSucceeded)
        {
            ++m_failures;
            m_codeOfFailure = environment().getLastExecutionResult().code;
        }
        return hasSucceeded;
    }

    ScriptObjectReference m_enter;

protected:
    int m_codeOfFailure = 0;
};

TEST_F(CallDepthTest, FiftyLevelsThroughAHostFunctionWork)
{
    declare(
        "descend",
        {PARAM_TYPE_INT},
        [this](const Parameters& parameters)
        {
            const int level = parameters[0].getInt();
            if (level == 0)
                return FunctionParameter(0);
            std::vector<FunctionParameter> outputs{FunctionParameter(0)};
            call("sum", {FunctionParameter(level)}, outputs);
            return FunctionParameter(outputs[0].getInt());
        });
    run("function sum(level) return level + descend(level - 1) end");
    std::vector<FunctionParameter> outputs{FunctionParameter(0)};

    call("sum", {FunctionParameter(50)}, outputs);

    EXPECT_EQ(outputs[0].getInt(), 1275);
}

TEST_F(CallDepthTest, EndlessRecursionEndsAtTwoHundredCallsEachTime)
{
    makeEndlessRecursion();

    EXPECT_TRUE(enter()); // the host function ignores the failure, so its callers go on
    EXPECT_EQ(environment().getVar("entered", 0), 200);
    EXPECT_EQ(m_failures, 1);
    EXPECT_EQ(m_codeOfFailure, 5);
    run("entered = 0");
    enter();

    EXPECT_EQ(environment().getVar("entered", 0), 200);
    expectLogged({overflow(), overflow()});
}

TEST_F(CallDepthTest, FailureThatIsPassedOnFailsEveryLevel)
{
    run("entered = 0 function enter() entered = entered + 1 again() end");
    const ScriptObjectReference enter = environment().getScriptFunction("enter");
    declareAction(
        "again",
        [&]
        {
            Parameters outputs;
            if (!environment().callScriptFunction(enter, {}, outputs))
                throw std::string("too deep");
        });
    Parameters outputs;

    EXPECT_FALSE(environment().callScriptFunction(enter, {}, outputs));

    EXPECT_EQ(environment().getVar("entered", 0), 200);
    EXPECT_EQ(environment().getLastExecutionResult().message, "too deep");
    EXPECT_EQ(m_log.takeEntries().size(), 401U); // the overflow, then both sides of each level
}

TEST_F(CallDepthTest, EndlessExecutionEndsTooAlsoThroughCoroutines)
{
    for (const char* sources : {"again()", "coroutine.wrap(again)()"})
    {
        int executed = 0;
        environment().setEnvironmentFor(INTERPRETER_LUA);
        declareAction(
            "again",
            [&]
            {
                ++executed;
                runScript(environment(), sources, "round");
            });
        m_log.takeEntries(); // that it is declared again

        run("again()");

        EXPECT_EQ(executed, 200) << sources;
        expectLogged("Error while executing script 'round' : C stack overflow", "LuaEnvironment");
    }
}

TEST_F(CallDepthTest, EndlessReadingOfGlobalsEndsToo)
{
    int asked = 0;
    declare(
        "index",
        {},
        [&](const Parameters&)
        {
            ++asked;
            return FunctionParameter(environment().getVar("score", -1));
        });
    run("setmetatable(_G, {__index = index})");

    const int score = environment().getVar("score", -7);

    EXPECT_EQ(score, -1);
    EXPECT_EQ(asked, 200);
    expectLogged({overflow()});
}

TEST_F(CallDepthTest, FinalisersThatAskForCollectionsNestNoDeeper)
{
    int depth = 0;
    int deepest = 0;
    int finalised = 0;
    declareAction(
        "collect",
        [&]
        {
            ++finalised;
            deepest = std::max(deepest, ++depth);
            environment().requestGarbageCollection();
            --depth;
        });
    run("collectgarbage('stop')"
        "for i = 1, 1000 do getmetatable(newproxy(true)).__gc = function() collect() end end");

    environment().requestGarbageCollection();

    EXPECT_EQ(finalised, 1000);
    EXPECT_EQ(deepest, 200);
    const std::vector<LogEntry> entries = m_log.takeEntries();
    EXPECT_THAT(entries, SizeIs(801)); // the 200th and all after it are refused
    EXPECT_THAT(entries, Each(overflow()));
}

TEST_F(CallDepthTest, TwoEnvironmentsCountForThemselves)
{
    Environment other;
    other.setEnvironmentFor(INTERPRETER_LUA);
    runScript(other, "function bounce() return 1 end");
    const ScriptObjectReference bounce = other.getScriptFunction("bounce");
    int answered = 0;
    declareAction(
        "again",
        [&]
        {
            Parameters outputs;
            answered += other.callScriptFunction(bounce, {}, outputs) ? 1 : 0;
            runScript(environment(), "again()", "round");
        });

    run("again()");

    EXPECT_EQ(answered, 200);
    EXPECT_EQ(m_log.takeEntries().size(), 1U);
}

TEST_F(CallDepthTest, EndlessRecursionEndsOnAStackOfHalfAMebibyte)
{
    bool hasSucceeded = false;
    makeEndlessRecursion();

    // A checked build has frames several times as large.
    const std::size_t stackSize = std::size_t{IS_SANITIZED ? 8192 : 512} << 10;
    runOnStackOf(stackSize, [&] { hasSucceeded = enter(); });

    EXPECT_TRUE(hasSucceeded);
    EXPECT_EQ(environment().getVar("entered", 0), 200);
    expectLogged({overflow()});
}

} // namespace tbScripts::test

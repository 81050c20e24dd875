// Coroutines that are gone, that are running, or that are resumed for a very long time.

#include "support/EnvironmentFixture.h"
#include "support/RowName.h"
#include "support/Sanitizers.h"

#include <string>
#include <vector>

namespace tbScripts::test
{

namespace
{

struct ResumedRow
{
    const char* row;
    const char* sources; // define the global `thread`, or have `resume` called from inside of it
    const char* message;
};

} // namespace

class CoroutineScenarioTest : public EnvironmentFixture
{
protected:
    CoroutineScenarioTest()
    {
        run("function resume() local _, text = coroutine.resume(thread) return text end");
        declareAction("resumeByHost", [this] { resume(); });
    }

    // Has the host resume `thread`, by the only way there is: a script function.
    void resume()
    {
        std::vector<FunctionParameter> outputs{FunctionParameter("")};
        call("resume", {}, outputs);
        m_text = std::string(std::string_view(outputs[0].getString()));
    }

    std::string m_text;
};

using WrongCoroutineTest = OnRows<CoroutineScenarioTest, ResumedRow>;

ROWS(
    WrongCoroutineTest,
    {"Finished",
     "thread = coroutine.create(function() end) coroutine.resume(thread) resumeByHost()",
     "cannot resume dead coroutine"},
    {"Failed",
     "thread = coroutine.create(error) coroutine.resume(thread) resumeByHost()",
     "cannot resume dead coroutine"},
    {"Running",
     "thread = coroutine.create(function() resumeByHost() end) coroutine.resume(thread)",
     "cannot resume running coroutine"},
    {"Resuming",
     "thread = coroutine.create(function() coroutine.wrap(resumeByHost)() end) "
     "coroutine.resume(thread)",
     "cannot resume running coroutine"});

TEST_P(WrongCoroutineTest, CannotBeResumedByTheHost)
{
    run(GetParam().sources);

    EXPECT_EQ(m_text, GetParam().message);
}

TEST_F(CoroutineScenarioTest, WhatACoroutineGaveOutlivesItAndTwentyThousandOthers)
{
    FunctionParameter function;
    FunctionParameter list;
    declare(
        "give",
        {PARAM_TYPE_SCRIPT_FUNCTION, PARAM_TYPE_SCRIPT_OBJECT},
        [&](const Parameters& parameters)
        {
            function = parameters[0];
            list = parameters[1];
            return FunctionParameter::VOID;
        });
    run("coroutine.wrap(function() local n = 7 give(function(t) return n + t[1] end, {5}) end)()");
    environment().requestGarbageCollection();
    run("for i = 1, 20000 do coroutine.wrap(function() local t = {i} return t end)() end");
    std::vector<FunctionParameter> outputs{FunctionParameter(0)};
    Parameters outputView(outputs);

    const std::vector<FunctionParameter> inputs{list};
    environment().callScriptFunction(function.getScriptObject(), inputs, outputView);

    EXPECT_EQ(outputs[0].getInt(), 12);
}

TEST_F(CoroutineScenarioTest, CoroutineResumedAMillionTimesTakesNoMore)
{
    constexpr int TIMES = repetitions(1000000);
    run("local step = coroutine.wrap(function() "
        "    local n = 0  while true do n = n + 1  coroutine.yield(n) end end) "
        "function next_value() return step() end "
        "function memory() collectgarbage() return collectgarbage('count') end");
    const ScriptObjectReference next = environment().getScriptFunction("next_value");
    std::vector<FunctionParameter> memory{FunctionParameter(0.0)};
    call("memory", {}, memory);
    const double before = memory[0].getDouble();
    std::vector<FunctionParameter> outputs{FunctionParameter(0)};
    Parameters outputView(outputs);

    for (int i = 0; i < TIMES; ++i)
        environment().callScriptFunction(next, {}, outputView);

    call("memory", {}, memory);
    EXPECT_EQ(outputs[0].getInt(), TIMES);
    EXPECT_LE(memory[0].getDouble(), before + 64);
}

} // namespace tbScripts::test

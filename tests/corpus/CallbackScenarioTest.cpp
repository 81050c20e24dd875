// Functions that outlive what they were made for, end while they run, or were never any.

#include "support/EnvironmentFixture.h"
#include "support/Execution.h"
#include "support/RowName.h"
#include "support/Sanitizers.h"
#include "support/SmallStackThread.h"

#include <array>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace tbScripts::test
{

namespace
{

struct UncallableRow
{
    const char* row;
    const char* sources; // leave the value in global `value`
    const char* message;
};

} // namespace

using UncallableReferenceTest = OnRows<EnvironmentFixture, UncallableRow>;

ROWS(
    UncallableReferenceTest,
    {"Nothing", "", "attempt to call a nil value"},
    {"Number", "value = 12", "attempt to call a number value"},
    {"Text", "value = 'print'", "attempt to call a string value"},
    {"TruthValue", "value = false", "attempt to call a boolean value"},
    {"Table", "value = {}", "attempt to call a table value"},
    {"File", "value = io.stdout", "attempt to call a userdata value"});

TEST_P(UncallableReferenceTest, FailsTheCallAndLeavesTheOutputs)
{
    run(GetParam().sources);
    std::vector<FunctionParameter> outputs{FunctionParameter("as it was")};
    Parameters outputView(outputs);

    const bool isDone =
        environment().callScriptFunction(environment().getVar("value"), {}, outputView);

    EXPECT_FALSE(isDone);
    EXPECT_EQ(lastOutcome(environment()), Outcome(5, false, GetParam().message));
    EXPECT_EQ(outputs[0].getString(), "as it was");
    expectLogged(GetParam().message, "LuaEnvironment");
}

class CallbackScenarioTest : public EnvironmentFixture
{
protected:
    // Declares `listen(callback)`, which keeps the callback, and `fire()`, which calls all of them.
    void declareEvent()
    {
        declare(
            "listen",
            {PARAM_TYPE_SCRIPT_FUNCTION},
            [this](const Parameters& parameters)
            {
                m_listeners.push_back(parameters[0].getScriptObject());
                return FunctionParameter::VOID;
            });
        declareAction("fire", [this] { fire(); });
    }

    // Calls those that listen now, whatever they do to the list.
    void fire()
    {
        const std::vector<ScriptObjectReference> listeners = m_listeners;
        for (const ScriptObjectReference& listener : listeners)
        {
            Parameters outputs;
            environment().callScriptFunction(listener, {}, outputs);
        }
    }

    // Declares `forget()`, which drops all listeners and collects.
    void declareForget()
    {
        declareAction(
            "forget",
            [this]
            {
                m_listeners.clear();
                environment().requestGarbageCollection();
            });
    }

    void TearDown() override
    {
        m_listeners.clear();
        EnvironmentFixture::TearDown();
    }

    std::string text(const char* name)
    {
        return std::string(std::string_view(environment().getVar(name, "none")));
    }

    std::vector<ScriptObjectReference> m_listeners;
};

TEST_F(CallbackScenarioTest, ListenerThatCancelsItselfFinishesAndIsFreedAfterwards)
{
    declareEvent();
    declareForget();
    run("weak = setmetatable({}, {__mode = 'v'}) "
        "do "
        "    local function listener() "
        "        forget()  local t = {}  for i = 1, 1000 do t[i] = {i} end "
        "        log = 'finished with ' .. #t "
        "    end "
        "    weak[1] = listener  listen(listener) "
        "end");

    environment().getFunc("listen")->reset(); // it keeps the arguments of its last call
    fire();
    environment().requestGarbageCollection();

    EXPECT_EQ(text("log"), "finished with 1000");
    run("isFreed = weak[1] == nil");
    EXPECT_TRUE(environment().getVar("isFreed", false));
}

TEST_F(CallbackScenarioTest, ListenersMayAddListenersAndFireAgain)
{
    declareEvent();
    run("log = ''  depth = 0 "
        "listen(function() log = log .. 'a'  listen(function() log = log .. 'c' end) end) "
        "listen(function() "
        "    log = log .. 'b'  depth = depth + 1  if depth == 1 then fire() end "
        "end)");

    fire();

    // The event inside meets the listener that was added before it.
    EXPECT_EQ(text("log"), "ababc");
    EXPECT_EQ(m_listeners.size(), 4U);
}

TEST_F(CallbackScenarioTest, EventThatFiresAfterTheEnvironmentCallsNobody)
{
    declareEvent();
    run("listen(function() end)");
    destroyEnvironment();
    Environment other;
    other.setEnvironmentFor(INTERPRETER_LUA);
    Parameters outputs;

    const bool isDone = other.callScriptFunction(m_listeners[0], {}, outputs);

    EXPECT_FALSE(isDone);
    expectLogged("attempt to call a nil value", "LuaEnvironment");
}

TEST_F(CallbackScenarioTest, ReferenceThatWasMovedFromCanStillBeCalled)
{
    run("function answer() return 42 end");
    ScriptObjectReference answer = environment().getScriptFunction("answer");
    const ScriptObjectReference moved(std::move(answer));
    std::vector<FunctionParameter> outputs{FunctionParameter(0)};
    Parameters outputView(outputs);

    environment().callScriptFunction(answer, {}, outputView);

    EXPECT_EQ(outputs[0].getInt(), 42);
}

TEST_F(CallbackScenarioTest, ThreeHundredCapturedValuesAreAllThere)
{
    std::array<int, 300> captured{};
    for (std::size_t i = 0; i < captured.size(); ++i)
        captured[i] = static_cast<int>(i);
    declare(
        "sum",
        {},
        [captured](const Parameters&)
        {
            int sum = 0;
            for (const int value : captured)
                sum += value;
            return FunctionParameter(sum);
        });

    run("result = sum()");

    EXPECT_EQ(environment().getVar("result", 0), 44850);
}

TEST_F(CallbackScenarioTest, ResultsOfManyCallsDieInAnyOrder)
{
    run("count = 0 function make() count = count + 1 return {count}, count end "
        "function first(t) return t[1] end");
    std::vector<std::vector<FunctionParameter>> results;
    for (int i = 0; i < 10; ++i)
    {
        results.push_back(
            {FunctionParameter::ofType(PARAM_TYPE_SCRIPT_OBJECT), FunctionParameter(0)});
        call("make", {}, results.back());
    }

    std::swap(results[0], results[9]);
    results[5] = std::move(results[6]);
    results.erase(results.begin() + 1, results.begin() + 5);
    environment().requestGarbageCollection();

    std::vector<FunctionParameter> outputs{FunctionParameter(0)};
    call("first", {results[1][0]}, outputs);
    EXPECT_EQ(outputs[0].getInt(), 7);
    call("first", {results[0][0]}, outputs);
    EXPECT_EQ(outputs[0].getInt(), 10);
}

TEST_F(CallbackScenarioTest, CallbacksWithoutEndStopBeforeASmallStackEnds)
{
    if (IS_SANITIZED)
        GTEST_SKIP() << "the frames of this build are larger than that";
    declareEvent();
    run("depth = 0  listen(function() depth = depth + 1  fire() end)");

    runOnStackOf(std::size_t{256} << 10, [this] { fire(); });

    EXPECT_GT(environment().getVar("depth", 0), 20);
    EXPECT_LE(environment().getVar("depth", 0), 200);
    expectLogged("C stack overflow", "LuaEnvironment");
}

TEST_F(CallbackScenarioTest, OneReferenceTakenAThousandTimesIsOneValue)
{
    run("list = {}");
    std::vector<ScriptObjectReference> references;
    for (int i = 0; i < 1000; ++i)
        references.push_back(environment().getVar("list"));
    declare(
        "same",
        {PARAM_TYPE_SCRIPT_OBJECT},
        [&](const Parameters&) { return FunctionParameter(references.back()); });

    references.erase(references.begin(), references.begin() + 999);
    environment().requestGarbageCollection();

    run("assert(same(list) == list)");
}

} // namespace tbScripts::test

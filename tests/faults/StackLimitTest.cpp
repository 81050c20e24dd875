// The interpreter's stack ends at about 65,000 values. Calls with many values either work or fail
// as scripts do; nothing is written beyond the end.

#include "support/EnvironmentFixture.h"
#include "support/RowName.h"

#include <string>
#include <vector>

namespace tbScripts::test
{

class StackLimitTest : public EnvironmentFixture
{
protected:
    StackLimitTest() { run("function count(...) return select('#', ...), (select(-1, ...)) end"); }

    // Calls `count` with the numbers up to `inputCount`.
    bool callWith(int inputCount)
    {
        std::vector<FunctionParameter> inputs;
        for (int i = 1; i <= inputCount; ++i)
            inputs.emplace_back(i);
        Parameters outputView(m_outputs);
        return environment().callScriptFunction(
            environment().getScriptFunction("count"), inputs, outputView);
    }

    std::vector<FunctionParameter> m_outputs{FunctionParameter(0), FunctionParameter(0)};
};

using ManyInputsTest = OnValues<StackLimitTest, int>;

INSTANTIATE_TEST_SUITE_P(
    Counts, ManyInputsTest, ::testing::Values(1, 19, 20, 21, 300, 8000, 10000, 20000));

TEST_P(ManyInputsTest, AllArriveInTheirOrder)
{
    EXPECT_TRUE(callWith(GetParam()));

    EXPECT_EQ(m_outputs[0].getInt(), GetParam());
    EXPECT_EQ(m_outputs[1].getInt(), GetParam());
}

TEST_F(StackLimitTest, InputsBeyondTheStackFailTheCallLeaveTheOutputsAndTheNextCallWorks)
{
    run("calls = 0 local inner = count function count(...) calls = calls + 1 return inner(...) "
        "end");
    m_outputs[0] = FunctionParameter(12);

    EXPECT_FALSE(callWith(70000));

    EXPECT_EQ(environment().getLastExecutionResult().code, 5);
    expectLogged("stack overflow", "LuaEnvironment");
    EXPECT_EQ(m_outputs[0].getInt(), 12);
    EXPECT_EQ(environment().getVar("calls", -1), 0);
    EXPECT_TRUE(callWith(10000));
    EXPECT_EQ(m_outputs[0].getInt(), 10000);
}

TEST_F(StackLimitTest, InputsBeyondTheStackFailInsideAHostFunctionAndACoroutineToo)
{
    int failures = 0;
    declareAction("overflow", [&] { failures += callWith(70000) ? 0 : 1; });

    run("overflow() after = true");
    expectLogged("stack overflow", "LuaEnvironment");
    run("state = coroutine.resume(coroutine.create(overflow))");
    expectLogged("stack overflow", "LuaEnvironment");

    EXPECT_EQ(failures, 2);
    EXPECT_TRUE(environment().getVar("after", false));
    EXPECT_TRUE(environment().getVar("state", false));
}

TEST_F(StackLimitTest, HostFunctionMayBeCalledWithMoreArgumentsThanItDeclares)
{
    int received = 0;
    declare(
        "take",
        {PARAM_TYPE_INT},
        [&received](const Parameters& parameters)
        {
            received = parameters[0].getInt() + static_cast<int>(parameters.size());
            return FunctionParameter::VOID;
        });

    run("local numbers = {} for i = 1, 7000 do numbers[i] = i end take(unpack(numbers))");

    EXPECT_EQ(received, 2);
}

TEST_F(StackLimitTest, HostFunctionAtTheEndOfTheStackIsSafe)
{
    declare(
        "touch",
        {PARAM_TYPE_INT, PARAM_TYPE_STRING},
        [this](const Parameters& parameters)
        {
            environment().setVar("touched", parameters[0].getInt());
            return FunctionParameter("text");
        });

    run("function recurse(level) touch(level, 'x') return 1 + recurse(level + 1) end "
        "works = pcall(recurse, 1)");

    m_log.takeEntries();
    EXPECT_FALSE(environment().getVar("works", true));
    EXPECT_GT(environment().getVar("touched", 0), 1000);
}

} // namespace tbScripts::test

// Whatever a host call meets, the interpreter's stack and its registry are afterwards as before.
// A stray value would only show after thousands of calls, so there are thousands.

#include "support/EnvironmentStateFixture.h"
#include "support/Execution.h"
#include "support/GlobalOperations.h"
#include "support/RowName.h"
#include "support/Sanitizers.h"

#include <functional>
#include <string>
#include <vector>

namespace tbScripts::test
{

namespace
{

constexpr int MANY = repetitions(1000000);
constexpr int FEWER = repetitions(100000);

constexpr const char* MAKE_GLOBALS_STRICT =
    "local function fail() error('strict', 0) end"
    " setmetatable(_G, {__index = fail, __newindex = fail})";

} // namespace

class StackHeightAccessTest : public EnvironmentStateFixture,
                              public ::testing::WithParamInterface<GlobalOperation>
{
protected:
    // Performs the operation on a global of that name.
    void perform(const char* global) { GetParam().perform(environment(), global); }

    void performOften()
    {
        for (int i = 0; i < 1000; ++i)
        {
            perform("score");
            ASSERT_EQ(stackHeight(), 0);
        }
    }
};

VALUES(StackHeightAccessTest, ::testing::ValuesIn(allGlobalOperations()));

TEST_P(StackHeightAccessTest, IsConstantOverAccesses)
{
    performOften();

    m_log.takeEntries(); // what is declared again
}

TEST_P(StackHeightAccessTest, IsConstantOverAccessesThatRaise)
{
    run(MAKE_GLOBALS_STRICT);
    const int slots = countRegistrySlots();

    performOften();

    EXPECT_EQ(countRegistrySlots(), slots);
    EXPECT_GE(m_log.takeEntries().size(), 1000U);
}

TEST_P(StackHeightAccessTest, IsThatOfTheHostFunctionInside)
{
    int before = 0;
    int after = -1;
    declareAction(
        "act",
        [&]
        {
            before = stackHeight();
            perform("score");
            after = stackHeight();
        });
    run(MAKE_GLOBALS_STRICT);

    run("local t = {1, 2, 3} act(1, 2, 3) assert(t[3] == 3)");

    EXPECT_EQ(after, before);
    EXPECT_EQ(m_log.takeEntries().size(), 1U);
}

class StackHeightTest : public EnvironmentStateFixture
{
protected:
    // Acts that often, which has to leave the stack empty. Entries are dropped from time to time,
    // since a million would take all memory.
    void repeat(int times, const std::function<void()>& act)
    {
        for (int i = 0; i < times; ++i)
        {
            act();
            if (i % 1000 == 0)
                m_log.takeEntries();
        }
        EXPECT_EQ(stackHeight(), 0);
        m_log.takeEntries();
    }

    bool callFunction(const ScriptObjectReference& function)
    {
        return environment().callScriptFunction(function, {}, m_outputs);
    }

    Parameters m_outputs;
};

TEST_F(StackHeightTest, IsConstantOverAMillionFailingReadings)
{
    run(MAKE_GLOBALS_STRICT);

    repeat(MANY, [this] { environment().getVar("score", 1); });
}

TEST_F(StackHeightTest, IsConstantOverAMillionFailingCalls)
{
    run("function fail() error('lost', 0) end");
    const ScriptObjectReference fail = environment().getScriptFunction("fail");
    int failures = 0;

    repeat(MANY, [&] { failures += callFunction(fail) ? 0 : 1; });

    EXPECT_EQ(failures, MANY);
}

TEST_F(StackHeightTest, IsConstantOverCallsOfWhatIsNoFunction)
{
    run("list = {}");
    const ScriptObjectReference list = environment().getVar("list");

    repeat(
        FEWER,
        [&]
        {
            callFunction(list);
            callFunction(ScriptObjectReference());
        });
}

TEST_F(StackHeightTest, IsConstantOverAMillionCallsWhoseResultsAreIgnored)
{
    run("function give() return 1, 2, 3 end");
    const ScriptObjectReference give = environment().getScriptFunction("give");

    repeat(MANY, [&] { callFunction(give); });
}

TEST_F(StackHeightTest, IsConstantOverAMillionRunsWhoseResultsAreDropped)
{
    CompiledScript script("return 1, 2, 3");

    repeat(MANY, [&] { environment().execute(script); });
}

TEST_F(StackHeightTest, IsConstantOverRunsThatFail)
{
    CompiledScript script("local a, b, c = 1, 2, 3 error({})");

    repeat(FEWER, [&] { environment().execute(script); });
}

TEST_F(StackHeightTest, IsConstantOverResultsOfAnotherKindAndCollections)
{
    run("function give() return {}, 2 end");
    const ScriptObjectReference give = environment().getScriptFunction("give");
    std::vector<FunctionParameter> outputs{FunctionParameter(0)};
    Parameters outputView(outputs);

    repeat(
        100,
        [&]
        {
            environment().callScriptFunction(give, outputs, outputView);
            collect();
        });
}

TEST_F(StackHeightTest, IsConstantOverQuestionsForWhatIsNotThere)
{
    repeat(
        MANY,
        [this]
        {
            environment().getScriptFunction("missing");
            environment().isVarSet("missing");
        });
}

TEST_F(StackHeightTest, RegistryDoesNotGrowOverAMillionReferences)
{
    run("list = {}");
    const int slots = countRegistrySlots();

    for (int i = 0; i < MANY; ++i)
        environment().getVar("list");

    EXPECT_EQ(countRegistrySlots(), slots);
}

TEST_F(StackHeightTest, RegistryHoldsOneSlotPerReferenceWhateverItsValue)
{
    run("flag, list = false, {}");
    const int slots = countRegistrySlots();

    std::vector<ScriptObjectReference> references;
    for (int i = 0; i < 1000; ++i)
    {
        references.push_back(environment().getVar("flag"));
        references.push_back(environment().getVar("list"));
        references.push_back(environment().getVar("missing"));
    }

    EXPECT_EQ(countRegistrySlots(), slots + 2000);
    references.clear();
    EXPECT_EQ(countRegistrySlots(), slots);
}

TEST_F(StackHeightTest, RegistryDoesNotGrowOverFunctionsThatCannotBeDeclared)
{
    run(MAKE_GLOBALS_STRICT);
    const int slots = countRegistrySlots();

    for (int i = 0; i < 1000; ++i)
        environment().setFunc("late" + std::to_string(i));

    EXPECT_EQ(countRegistrySlots(), slots);
    m_log.takeEntries();
}

TEST_F(StackHeightTest, MemoryStaysFlatOverErrorsThatNobodyReads)
{
    run("function fail() error('lost' .. math.random()) end");
    const ScriptObjectReference fail = environment().getScriptFunction("fail");
    environment().requestGarbageCollection();
    const int before = lua_gc(state(), LUA_GCCOUNT, 0);

    repeat(FEWER, [&] { callFunction(fail); });

    environment().requestGarbageCollection();
    EXPECT_LE(lua_gc(state(), LUA_GCCOUNT, 0), before + 64);
}

} // namespace tbScripts::test

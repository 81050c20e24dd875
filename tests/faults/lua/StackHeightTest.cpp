// Whatever a host call meets, the interpreter's stack and its registry are afterwards as before.
// A stray value would only show after thousands of calls, so there are thousands.

#include "support/EnvironmentStateFixture.h"
#include "support/GlobalOperations.h"
#include "support/Sanitizers.h"

#include <tbScripts/Script.h>

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
};

INSTANTIATE_TEST_SUITE_P(
    Accesses,
    StackHeightAccessTest,
    ::testing::ValuesIn(allGlobalOperations()),
    ::testing::PrintToStringParamName());

TEST_P(StackHeightAccessTest, IsConstantOverAccesses)
{
    for (int i = 0; i < 1000; ++i)
    {
        perform("score");
        ASSERT_EQ(stackHeight(), 0);
    }

    m_log.takeEntries(); // what is declared again
}

TEST_P(StackHeightAccessTest, IsConstantOverAccessesThatRaise)
{
    run(MAKE_GLOBALS_STRICT);
    const int slots = countRegistrySlots();

    for (int i = 0; i < 1000; ++i)
    {
        perform("score");
        ASSERT_EQ(stackHeight(), 0);
    }

    EXPECT_EQ(countRegistrySlots(), slots);
    EXPECT_GE(m_log.takeEntries().size(), 1000U);
}

TEST_P(StackHeightAccessTest, IsThatOfTheHostFunctionInside)
{
    int before = 0;
    int after = -1;
    declare(
        "act",
        {},
        [&](const Parameters&)
        {
            before = stackHeight();
            perform("score");
            after = stackHeight();
            return FunctionParameter::VOID;
        });
    run(MAKE_GLOBALS_STRICT);

    run("local t = {1, 2, 3} act(1, 2, 3) assert(t[3] == 3)");

    EXPECT_EQ(after, before);
    EXPECT_EQ(m_log.takeEntries().size(), 1U);
}

class StackHeightTest : public EnvironmentStateFixture
{
protected:
    // From time to time, since a million entries would take all memory.
    void dropEntries(int round)
    {
        if (round % 1000 == 0)
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

    for (int i = 0; i < MANY; ++i)
    {
        environment().getVar("score", 1);
        dropEntries(i);
    }

    EXPECT_EQ(stackHeight(), 0);
    m_log.takeEntries();
}

TEST_F(StackHeightTest, IsConstantOverAMillionFailingCalls)
{
    run("function fail() error('lost', 0) end");
    const ScriptObjectReference fail = environment().getScriptFunction("fail");

    int failures = 0;
    for (int i = 0; i < MANY; ++i)
    {
        failures += callFunction(fail) ? 0 : 1;
        dropEntries(i);
    }

    EXPECT_EQ(failures, MANY);
    EXPECT_EQ(stackHeight(), 0);
    m_log.takeEntries();
}

TEST_F(StackHeightTest, IsConstantOverCallsOfWhatIsNoFunction)
{
    run("list = {}");
    const ScriptObjectReference list = environment().getVar("list");

    for (int i = 0; i < FEWER; ++i)
    {
        callFunction(list);
        callFunction(ScriptObjectReference());
        dropEntries(i);
    }

    EXPECT_EQ(stackHeight(), 0);
    m_log.takeEntries();
}

TEST_F(StackHeightTest, IsConstantOverAMillionCallsWhoseResultsAreIgnored)
{
    run("function give() return 1, 2, 3 end");
    const ScriptObjectReference give = environment().getScriptFunction("give");

    for (int i = 0; i < MANY; ++i)
        callFunction(give);

    EXPECT_EQ(stackHeight(), 0);
}

TEST_F(StackHeightTest, IsConstantOverAMillionRunsWhoseResultsAreDropped)
{
    Script script;
    script.setTargetInterpreter(INTERPRETER_LUA);
    script.setSources("return 1, 2, 3");
    script.load();

    for (int i = 0; i < MANY; ++i)
        environment().execute(script);

    EXPECT_EQ(stackHeight(), 0);
}

TEST_F(StackHeightTest, IsConstantOverRunsThatFail)
{
    Script script;
    script.setTargetInterpreter(INTERPRETER_LUA);
    script.setSources("local a, b, c = 1, 2, 3 error({})");
    script.load();

    for (int i = 0; i < FEWER; ++i)
    {
        environment().execute(script);
        dropEntries(i);
    }

    EXPECT_EQ(stackHeight(), 0);
    m_log.takeEntries();
}

TEST_F(StackHeightTest, IsConstantOverQuestionsForWhatIsNotThere)
{
    for (int i = 0; i < MANY; ++i)
    {
        environment().getScriptFunction("missing");
        environment().isVarSet("missing");
    }

    EXPECT_EQ(stackHeight(), 0);
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

    for (int i = 0; i < FEWER; ++i)
    {
        callFunction(fail);
        dropEntries(i);
    }

    environment().requestGarbageCollection();
    EXPECT_LE(lua_gc(state(), LUA_GCCOUNT, 0), before + 64);
    m_log.takeEntries();
}

} // namespace tbScripts::test

// A script may give the global table metamethods that raise. Every access of the host then fails;
// none of them may end the host, wherever it is called from.

#include "support/CallContextFixture.h"
#include "support/GlobalOperations.h"

#include <string>
#include <tuple>

namespace tbScripts::test
{

namespace
{

constexpr const char* MAKE_GLOBALS_STRICT =
    "setmetatable(_G, {"
    "__index = function(_, name) error('no global ' .. name, 0) end,"
    "__newindex = function(_, name) error('no new global ' .. name, 0) end})";

using Row = std::tuple<GlobalOperation, CALL_CONTEXT>;

std::string rowName(const ::testing::TestParamInfo<Row>& row)
{
    return ::testing::PrintToString(std::get<0>(row.param)) + "In" +
           ::testing::PrintToString(std::get<1>(row.param));
}

} // namespace

class StrictGlobalsTest : public CallContextFixture, public ::testing::WithParamInterface<Row>
{
protected:
    const GlobalOperation& operation() const { return std::get<0>(GetParam()); }

    CALL_CONTEXT context() const { return std::get<1>(GetParam()); }
};

INSTANTIATE_TEST_SUITE_P(
    Accesses,
    StrictGlobalsTest,
    ::testing::Combine(
        ::testing::ValuesIn(allGlobalOperations()), ::testing::ValuesIn(allCallContexts())),
    rowName);

TEST_P(StrictGlobalsTest, AccessIsAnsweredNeutrallyAndLogged)
{
    const std::string message = operation().isWriting ? "no new global score" : "no global score";
    run(MAKE_GLOBALS_STRICT);

    std::string answer;
    performIn(context(), [&] { answer = operation().perform(environment(), "score"); });

    EXPECT_EQ(answer, operation().neutralAnswer);
    EXPECT_THAT(m_log.takeEntries(), ::testing::ElementsAre(LogEntry{message, "LuaEnvironment"}));
}

TEST_P(StrictGlobalsTest, NextAccessIsOneLikeAnyOther)
{
    run("known = 42");
    run(MAKE_GLOBALS_STRICT);
    performIn(context(), [&] { operation().perform(environment(), "score"); });
    m_log.takeEntries();

    int known = 0;
    performIn(context(), [&] { known = environment().getVar("known", 0); });

    EXPECT_EQ(known, 42);
}

class StrictGlobalsContextTest : public CallContextFixture,
                                 public ::testing::WithParamInterface<CALL_CONTEXT>
{
};

INSTANTIATE_TEST_SUITE_P(
    Contexts,
    StrictGlobalsContextTest,
    ::testing::ValuesIn(allCallContexts()),
    ::testing::PrintToStringParamName());

TEST_P(StrictGlobalsContextTest, EndOfAnEnvironmentLogsWhatItsFunctionsCannotRemove)
{
    declare("shown", {}, [](const Parameters&) { return FunctionParameter::VOID; });
    // A name that is still there could be removed without a question.
    run("rawset(_G, 'shown', nil)");
    run(MAKE_GLOBALS_STRICT);

    performIn(GetParam(), [this] { destroyEnvironment(); });

    EXPECT_THAT(
        m_log.takeEntries(),
        ::testing::ElementsAre(LogEntry{"no new global shown", "LuaEnvironment"}));
}

TEST_P(StrictGlobalsContextTest, FunctionThatCannotBeDeclaredCountsAsDeclared)
{
    run(MAKE_GLOBALS_STRICT);

    performIn(GetParam(), [this] { environment().setFunc("late"); });

    EXPECT_TRUE(environment().isFuncSet("late"));
    EXPECT_EQ(environment().getFunc("late"), nullptr);
    EXPECT_THAT(
        m_log.takeEntries(),
        ::testing::ElementsAre(LogEntry{"no new global late", "LuaEnvironment"}));
}

TEST_P(StrictGlobalsContextTest, ExecutionFailsWithTheTextThatWasRaised)
{
    run(MAKE_GLOBALS_STRICT);

    bool hasSucceeded = true;
    performIn(
        GetParam(), [&] { hasSucceeded = runScript(environment(), "return score", "round"); });

    EXPECT_FALSE(hasSucceeded);
    EXPECT_THAT(
        m_log.takeEntries(),
        ::testing::ElementsAre(
            LogEntry{"Error while executing script 'round' : no global score", "LuaEnvironment"}));
}

TEST_P(StrictGlobalsContextTest, ScriptFunctionCallFailsWithTheTextThatWasRaised)
{
    run("function readScore() return score end");
    const ScriptObjectReference readScore = environment().getScriptFunction("readScore");
    run(MAKE_GLOBALS_STRICT);

    bool hasSucceeded = true;
    performIn(
        GetParam(),
        [&]
        {
            Parameters outputs;
            hasSucceeded = environment().callScriptFunction(readScore, {}, outputs);
        });

    EXPECT_FALSE(hasSucceeded);
    EXPECT_THAT(
        m_log.takeEntries(), ::testing::ElementsAre(LogEntry{"no global score", "LuaEnvironment"}));
}

} // namespace tbScripts::test

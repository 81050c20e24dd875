// An environment by itself: its name, its interpreter and the result that it shows.

#include "support/EnvironmentFixture.h"
#include "support/Execution.h"

namespace tbScripts::test
{

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class EnvironmentTest : public EnvironmentFixture
{
};

class NewEnvironmentTest : public LogFixture
{
protected:
    void TearDown() override
    {
        LogFixture::TearDown();
        m_environment.reset();
        m_log.takeEntries(); // without interpreter the teardown warns
    }

    std::unique_ptr<Environment> m_environment = std::make_unique<Environment>();
};

TEST_F(NewEnvironmentTest, IsMadeSilently)
{
    EXPECT_THAT(m_log.takeEntries(), IsEmpty());
}

TEST_F(NewEnvironmentTest, HasTheEmptyName)
{
    EXPECT_EQ(m_environment->getName(), "");
    EXPECT_FALSE(m_environment->getName().isNull());
}

TEST_F(NewEnvironmentTest, ShowsASuccess)
{
    EXPECT_EQ(lastOutcome(*m_environment), Outcome(0, true, ""));
}

TEST_F(NewEnvironmentTest, HasNoFunctions)
{
    EXPECT_FALSE(m_environment->isFuncSet(""));
    EXPECT_EQ(m_environment->getFunc("print"), nullptr);
}

TEST_F(EnvironmentTest, NameIsReplaced)
{
    environment().setName("arena");

    EXPECT_EQ(environment().getName(), "arena");
}

TEST_F(EnvironmentTest, NameMayBeLong)
{
    environment().setName(std::string(1000, 'n'));

    EXPECT_EQ(environment().getName(), std::string(1000, 'n'));
}

TEST_F(EnvironmentTest, NameKeepsAllItsBytes)
{
    environment().setName(tbMemory::StringView("a\0b", 3));

    EXPECT_EQ(environment().getName(), tbMemory::StringView("a\0b", 3));
}

TEST_F(EnvironmentTest, NameEndsWithItsView)
{
    environment().setName(tbMemory::StringView("arenas", 5));

    EXPECT_EQ(environment().getName(), "arena");
}

TEST_F(EnvironmentTest, NullNameIsTheEmptyName)
{
    environment().setName(tbMemory::StringView());

    EXPECT_EQ(environment().getName(), "");
    EXPECT_FALSE(environment().getName().isNull());
}

TEST_F(EnvironmentTest, LuaIsChosenSilently)
{
    environment().setEnvironmentFor(INTERPRETER_LUA);

    EXPECT_THAT(m_log.takeEntries(), IsEmpty());
    EXPECT_TRUE(environment().isVarSet("print"));
}

TEST_F(EnvironmentTest, LuaChosenAgainForgetsAllGlobals)
{
    environment().setVar("lives", 3);

    environment().setEnvironmentFor(INTERPRETER_LUA);

    EXPECT_EQ(environment().getVar("lives", -1), -1);
}

TEST_F(EnvironmentTest, LuaChosenAgainBringsBackTheLibraries)
{
    run("print, string = nil, nil");

    environment().setEnvironmentFor(INTERPRETER_LUA);

    run("assert(type(print) == 'function' and type(string) == 'table')");
}

TEST_F(EnvironmentTest, ChoosingNoInterpreterDisables)
{
    environment().setVar("lives", 3);
    environment().setEnvironmentFor(INTERPRETER_UNKNOWN);
    m_log.takeEntries();

    const int lives = environment().getVar("lives", -1);

    EXPECT_EQ(lives, -1);
    EXPECT_THAT(
        m_log.takeEntries(),
        ElementsAre(LogEntry{
            "Requesting a variable in environment 'world', which has no InterpreterType. This will "
            "have no effect.",
            "Environment"}));
    environment().setEnvironmentFor(INTERPRETER_LUA);
}

TEST_F(EnvironmentTest, SwitchingToNoneAndBackForgetsAllGlobals)
{
    environment().setVar("lives", 3);

    environment().setEnvironmentFor(INTERPRETER_UNKNOWN);
    environment().setEnvironmentFor(INTERPRETER_LUA);

    m_log.takeEntries();
    EXPECT_FALSE(environment().isVarSet("lives"));
    EXPECT_TRUE(environment().isVarSet("print"));
}

TEST_F(EnvironmentTest, ChoosingLuaAHundredTimesLeavesAWorkingEnvironment)
{
    for (int i = 0; i < 100; ++i)
        environment().setEnvironmentFor(INTERPRETER_LUA);

    run("answer = 42");
    EXPECT_EQ(environment().getVar("answer", 0), 42);
}

TEST_F(EnvironmentTest, ResultIsResetByASwitch)
{
    runExpectingError("error('boom')");

    environment().setEnvironmentFor(INTERPRETER_LUA);

    EXPECT_EQ(lastOutcome(environment()), Outcome(0, true, ""));
}

TEST_F(EnvironmentTest, ResultIsResetByASwitchToNone)
{
    runExpectingError("error('boom')");

    environment().setEnvironmentFor(INTERPRETER_UNKNOWN);

    EXPECT_EQ(lastOutcome(environment()), Outcome(0, true, ""));
    environment().setEnvironmentFor(INTERPRETER_LUA);
    m_log.takeEntries();
}

TEST_F(EnvironmentTest, ResultReferenceOutlivesASwitch)
{
    const ExecutionResult& result = environment().getLastExecutionResult();
    runExpectingError("error('boom')");

    environment().setEnvironmentFor(INTERPRETER_LUA);

    EXPECT_EQ(outcomeOf(result), Outcome(0, true, ""));
}

TEST_F(EnvironmentTest, ResultReferenceShowsRunsAfterASwitch)
{
    const ExecutionResult& result = environment().getLastExecutionResult();
    environment().setEnvironmentFor(INTERPRETER_LUA);

    runExpectingError("error('boom', 0)");

    EXPECT_EQ(outcomeOf(result), Outcome(5, false, "Error while executing script 'test' : boom"));
}

// Every value but that of Lua is unknown, none included.
class UnknownInterpreterTest : public EnvironmentFixture,
                               public ::testing::WithParamInterface<std::uint32_t>
{
};

TEST_P(UnknownInterpreterTest, IsLoggedAndDisables)
{
    environment().setEnvironmentFor(static_cast<INTERPRETER>(GetParam()));

    EXPECT_THAT(
        m_log.takeEntries(),
        ElementsAre(LogEntry{
            "Environment type requested unknown. This will disable the Environment.",
            "Environment"}));
    EXPECT_FALSE(environment().isVarSet("print"));
    environment().setEnvironmentFor(INTERPRETER_LUA);
    m_log.takeEntries();
}

INSTANTIATE_TEST_SUITE_P(
    Values,
    UnknownInterpreterTest,
    ::testing::Values(0U, 2U, 255U, 0xFFFFFFFFU),
    [](const ::testing::TestParamInfo<std::uint32_t>& row)
    { return "Value" + std::to_string(row.param); });

// Changing the interpreter while it runs would end what is running.
class EnvironmentSwitchFromInsideTest : public EnvironmentFixture,
                                        public ::testing::WithParamInterface<INTERPRETER>
{
protected:
    void declareSwitch()
    {
        declare(
            "switch",
            {},
            [this](const Parameters&)
            {
                environment().setEnvironmentFor(GetParam());
                return FunctionParameter::VOID;
            });
    }

    static LogEntry refusal()
    {
        return {
            "Environment 'world' is running a script. Its type can't be changed from inside.",
            "Environment"};
    }
};

TEST_P(EnvironmentSwitchFromInsideTest, IsRefusedDuringARun)
{
    declareSwitch();

    run("lives = 3  switch()  after = true");

    EXPECT_THAT(m_log.takeEntries(), ElementsAre(refusal()));
    EXPECT_EQ(environment().getVar("lives", -1), 3);
    EXPECT_TRUE(environment().getVar("after", false));
}

TEST_P(EnvironmentSwitchFromInsideTest, IsRefusedDuringAScriptCall)
{
    declareSwitch();
    run("lives = 3  function callSwitch() switch() end");
    std::vector<FunctionParameter> outputs;

    call("callSwitch", {}, outputs);

    EXPECT_THAT(m_log.takeEntries(), ElementsAre(refusal()));
    EXPECT_EQ(environment().getVar("lives", -1), 3);
}

TEST_P(EnvironmentSwitchFromInsideTest, IsRefusedToAFinaliserOfACollection)
{
    declareSwitch();
    run("getmetatable(newproxy(true)).__gc = function() switch() end");

    environment().requestGarbageCollection();

    EXPECT_THAT(m_log.takeEntries(), ElementsAre(refusal()));
    EXPECT_TRUE(environment().isVarSet("switch"));
}

TEST_P(EnvironmentSwitchFromInsideTest, IsRefusedToAFinaliserOfTheSwitchItself)
{
    declareSwitch();
    run("local switch = switch  getmetatable(newproxy(true)).__gc = function() switch() end");

    environment().setEnvironmentFor(INTERPRETER_LUA);

    EXPECT_THAT(m_log.takeEntries(), ElementsAre(refusal()));
    EXPECT_TRUE(environment().isVarSet("print"));
}

INSTANTIATE_TEST_SUITE_P(
    Interpreters,
    EnvironmentSwitchFromInsideTest,
    ::testing::Values(INTERPRETER_LUA, INTERPRETER_UNKNOWN),
    [](const ::testing::TestParamInfo<INTERPRETER>& row)
    { return row.param == INTERPRETER_LUA ? "ToLua" : "ToNone"; });

TEST_F(EnvironmentTest, AnotherEnvironmentMayBeSwitchedFromInside)
{
    Environment other;
    declare(
        "switchOther",
        {},
        [&other](const Parameters&)
        {
            other.setEnvironmentFor(INTERPRETER_LUA);
            return FunctionParameter::VOID;
        });

    run("switchOther()");

    EXPECT_TRUE(other.isVarSet("print"));
}

} // namespace tbScripts::test

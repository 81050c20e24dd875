// An environment by itself: its name, its interpreter and the result that it shows.

#include "support/EnvironmentFixture.h"
#include "support/Execution.h"
#include "support/RowName.h"

namespace tbScripts::test
{

using EnvironmentTest = EnvironmentFixture;

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

TEST_F(NewEnvironmentTest, IsCreatedSilentlyWithTheEmptyNameASuccessAndNoFunctions)
{
    EXPECT_THAT(m_log.takeEntries(), IsEmpty());
    EXPECT_EQ(m_environment->getName(), "");
    EXPECT_FALSE(m_environment->getName().isNull());
    EXPECT_EQ(lastOutcome(*m_environment), Outcome(0, true, ""));
    EXPECT_FALSE(m_environment->isFuncSet(""));
    EXPECT_EQ(m_environment->getFunc("print"), nullptr);
}

TEST_F(EnvironmentTest, NameIsReplacedByAllBytesOfTheView)
{
    const std::string names[] = {"arena", std::string(1000, 'n'), std::string("a\0b", 3)};
    for (const std::string& name : names)
    {
        environment().setName(tbMemory::StringView((name + "s").data(), name.size()));

        EXPECT_EQ(environment().getName(), name);
    }
}

TEST_F(EnvironmentTest, NullNameIsTheEmptyName)
{
    environment().setName(tbMemory::StringView());

    EXPECT_EQ(environment().getName(), "");
    EXPECT_FALSE(environment().getName().isNull());
}

TEST_F(EnvironmentTest, LuaChosenAgainSilentlyForgetsAllGlobalsAndBringsBackTheLibraries)
{
    run("lives, print, string = 3, nil, nil");

    environment().setEnvironmentFor(INTERPRETER_LUA);

    EXPECT_THAT(m_log.takeEntries(), IsEmpty());
    EXPECT_EQ(environment().getVar("lives", -1), -1);
    EXPECT_TRUE(environment().isVarSet("print"));
    run("assert(type(print) == 'function' and type(string) == 'table')");
}

TEST_F(EnvironmentTest, ChoosingNoInterpreterDisablesAndForgetsAllGlobals)
{
    environment().setVar("lives", 3);
    environment().setEnvironmentFor(INTERPRETER_UNKNOWN);
    m_log.takeEntries();

    EXPECT_EQ(environment().getVar("lives", -1), -1);

    expectLogged(
        "Requesting a variable in environment 'world', which has no InterpreterType. This will "
        "have no effect.",
        "Environment");
    environment().setEnvironmentFor(INTERPRETER_LUA);
    m_log.takeEntries();
    EXPECT_FALSE(environment().isVarSet("lives"));
    EXPECT_TRUE(environment().isVarSet("print"));
}

TEST_F(EnvironmentTest, ResultIsResetByASwitch)
{
    for (const INTERPRETER interpreter : {INTERPRETER_UNKNOWN, INTERPRETER_LUA})
    {
        environment().setEnvironmentFor(INTERPRETER_LUA);
        runExpectingError("error('boom')");

        environment().setEnvironmentFor(interpreter);

        EXPECT_EQ(lastOutcome(environment()), Outcome(0, true, "")) << interpreter;
    }
    m_log.takeEntries(); // of the teardown without interpreter
}

TEST_F(EnvironmentTest, ResultReferenceOutlivesASwitchAndShowsRunsAfterIt)
{
    const ExecutionResult& result = environment().getLastExecutionResult();
    runExpectingError("error('boom')");
    environment().setEnvironmentFor(INTERPRETER_LUA);
    EXPECT_EQ(outcomeOf(result), Outcome(0, true, ""));

    runExpectingError("error('boom', 0)");

    EXPECT_EQ(outcomeOf(result), Outcome(5, false, "Error while executing script 'test' : boom"));
}

// Every value but that of Lua is unknown, none included.
using UnknownInterpreterTest = OnValues<EnvironmentFixture, std::uint32_t>;

TEST_P(UnknownInterpreterTest, IsLoggedAndDisables)
{
    environment().setEnvironmentFor(static_cast<INTERPRETER>(GetParam()));

    expectLogged(
        "Environment type requested unknown. This will disable the Environment.", "Environment");
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
        declareAction("switch", [this] { environment().setEnvironmentFor(GetParam()); });
    }

    static LogEntry refusal()
    {
        return {
            "Environment 'world' is running a script. Its type can't be changed from inside.",
            "Environment"};
    }
};

TEST_P(EnvironmentSwitchFromInsideTest, IsRefusedDuringARunAndAScriptCall)
{
    declareSwitch();

    run("lives = 3  switch()  after = true  function callSwitch() switch() end");
    expectLogged({refusal()});
    std::vector<FunctionParameter> outputs;
    call("callSwitch", {}, outputs);
    expectLogged({refusal()});

    EXPECT_EQ(environment().getVar("lives", -1), 3);
    EXPECT_TRUE(environment().getVar("after", false));
}

TEST_P(EnvironmentSwitchFromInsideTest, IsRefusedToAFinaliserOfACollectionAndOfTheSwitchItself)
{
    declareSwitch();
    run("getmetatable(newproxy(true)).__gc = function() switch() end");
    environment().requestGarbageCollection();
    expectLogged({refusal()});
    EXPECT_TRUE(environment().isVarSet("switch"));
    run("local switch = switch  getmetatable(newproxy(true)).__gc = function() switch() end");

    environment().setEnvironmentFor(INTERPRETER_LUA);

    expectLogged({refusal()});
    EXPECT_TRUE(environment().isVarSet("print"));
}

INSTANTIATE_TEST_SUITE_P(
    Interpreters,
    EnvironmentSwitchFromInsideTest,
    ::testing::Values(INTERPRETER_LUA, INTERPRETER_UNKNOWN),
    [](const ::testing::TestParamInfo<INTERPRETER>& row)
    { return row.param == INTERPRETER_LUA ? "ToLua" : "ToNone"; });

// Collections that the host asks for.
using EnvironmentCollectionTest = EnvironmentFixture;

TEST_F(EnvironmentCollectionTest, CollectsWhatNothingRefersToAndRunsFinalisers)
{
    run("weak = setmetatable({{}}, {__mode = 'v'}) "
        "getmetatable(newproxy(true)).__gc = function() finalised = true end");

    environment().requestGarbageCollection();

    run("assert(weak[1] == nil and finalised)");
    EXPECT_THAT(m_log.takeEntries(), IsEmpty());
}

// What a finaliser of the first collection leaves behind goes in the second, and no further.
TEST_F(EnvironmentCollectionTest, RunsTwice)
{
    run("collectgarbage() "
        "local globals, newproxy, getmetatable = _G, newproxy, getmetatable "
        "globals.generations = 0 "
        "local function chain() "
        "    getmetatable(newproxy(true)).__gc = function() "
        "        globals.generations = (globals.generations or 0) + 1 "
        "        chain() "
        "    end "
        "end "
        "chain()");

    environment().requestGarbageCollection();

    EXPECT_EQ(environment().getVar("generations", 0), 2);
}

TEST_F(EnvironmentCollectionTest, LeavesTheLastResult)
{
    runExpectingError("error('boom', 0)");

    environment().requestGarbageCollection();

    EXPECT_EQ(
        lastOutcome(environment()),
        Outcome(5, false, "Error while executing script 'test' : boom"));
}

TEST_F(EnvironmentCollectionTest, MayBeAskedForByAHostFunction)
{
    declareAction("collect", [this] { environment().requestGarbageCollection(); });

    run("getmetatable(newproxy(true)).__gc = function() finalised = true end  collect()");

    EXPECT_TRUE(environment().getVar("finalised", false));
}

} // namespace tbScripts::test

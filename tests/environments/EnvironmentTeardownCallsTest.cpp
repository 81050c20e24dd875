// What the host may still do while an environment ends, and ends that come from inside.

#include "support/Execution.h"
#include "support/TeardownFixture.h"

namespace tbScripts::test
{

using ::testing::ElementsAre;

class EnvironmentTeardownCallsTest : public TeardownFixture
{
};

// The end of a callable is host code, which may call the environment that goes.
TEST_F(EnvironmentTeardownCallsTest, DeclaringGivesNullMeanwhile)
{
    Environment& going = environment();
    Function* declared = nullptr;
    declareWithEnd(
        "f",
        [&]
        {
            declared = going.setFunc("late");
            m_trace.add('F');
        });

    destroyEnvironment();

    EXPECT_EQ(m_trace.text(), "F");
    EXPECT_EQ(declared, nullptr);
}

TEST_F(EnvironmentTeardownCallsTest, DeclaringIsSilentMeanwhileWithoutInterpreterToo)
{
    Environment& going = environment();
    declareWithEnd("f", [&] { m_trace.add(going.setFunc("late") ? 'x' : 'n'); });
    environment().setEnvironmentFor(INTERPRETER_UNKNOWN);
    m_log.takeEntries();

    destroyEnvironment();

    EXPECT_EQ(m_trace.text(), "n");
    EXPECT_EQ(m_log.takeEntries().size(), 1U); // of the collection
}

TEST_F(EnvironmentTeardownCallsTest, FunctionsAreNotFoundMeanwhile)
{
    Environment& going = environment();
    bool isFound = true;
    declareWithEnd("f", [&] { isFound = going.isFuncSet("f") || going.getFunc("f"); });

    destroyEnvironment();

    EXPECT_FALSE(isFound);
}

TEST_F(EnvironmentTeardownCallsTest, ReadingGivesTheDefaultMeanwhile)
{
    environment().setVar("v", 1);
    Environment& going = environment();
    int seen = 0;
    declareWithEnd("f", [&] { seen = going.isVarSet("v") ? -2 : going.getVar("v", -1); });

    destroyEnvironment();

    EXPECT_EQ(seen, -1);
}

TEST_F(EnvironmentTeardownCallsTest, SettingDoesNothingMeanwhile)
{
    Environment& going = environment();
    declareWithEnd(
        "f",
        [&]
        {
            going.setVar("late", true);
            m_trace.add('F');
        });
    run("local note = note  setmetatable(_G, {__newindex = function() note(('s'):byte()) end})");

    destroyEnvironment();

    EXPECT_EQ(m_trace.text(), "F");
}

TEST_F(EnvironmentTeardownCallsTest, RunsAndCallsAreRefusedMeanwhile)
{
    run("function callNote() note(('x'):byte()) end");
    CompiledScript script("note(('x'):byte())");
    Environment& going = environment();
    const ScriptObjectReference function = going.getScriptFunction("callNote");
    bool isDone = true;
    declareWithEnd(
        "f",
        [&]
        {
            Parameters outputs;
            isDone =
                going.execute(script) || going.callScriptFunction(function, Parameters(), outputs);
        });

    destroyEnvironment();

    EXPECT_FALSE(isDone);
    EXPECT_EQ(m_trace.text(), "");
}

TEST_F(EnvironmentTeardownCallsTest, SwitchingDoesNothingMeanwhile)
{
    run("kept = onEnd('G')");
    Environment& going = environment();
    bool isSet = true;
    declareWithEnd(
        "f",
        [&]
        {
            going.setEnvironmentFor(INTERPRETER_LUA);
            isSet = going.isVarSet("print");
        });
    declareWithEnd("g", [this] { m_trace.add('F'); });

    destroyEnvironment();

    EXPECT_EQ(m_trace.text(), "FG");
    EXPECT_FALSE(isSet);
}

TEST_F(EnvironmentTeardownCallsTest, AssigningDoesNothingMeanwhile)
{
    run("kept = onEnd('G')");
    Environment other;
    other.setEnvironmentFor(INTERPRETER_LUA);
    Environment& going = environment();
    declareWithEnd("f", [&] { going = other; });
    declareWithEnd("g", [this] { m_trace.add('F'); });

    destroyEnvironment();

    EXPECT_EQ(m_trace.text(), "FG");
    EXPECT_TRUE(other.isVarSet("print"));
}

TEST_F(EnvironmentTeardownCallsTest, CopyMadeMeanwhileHasNoInterpreter)
{
    Environment& going = environment();
    std::unique_ptr<Environment> copy;
    declareWithEnd("f", [&] { copy = std::make_unique<Environment>(going); });

    destroyEnvironment();

    EXPECT_FALSE(copy->isVarSet("print"));
    EXPECT_EQ(copy->setFunc("f"), nullptr);
    EXPECT_THAT(
        m_log.takeEntries(),
        ElementsAre(
            LogEntry{
                "Querying if a a variable is set in environment 'world', which has no "
                "InterpreterType. This will have no effect.",
                "Environment"},
            LogEntry{
                "Requesting a function in environment 'world', which has no InterpreterType. This "
                "will have no effect, returning nullptr.",
                "Environment"}));
    copy.reset();
    m_log.takeEntries(); // its own teardown
}

// A script that ends its own world goes on to its end in it.
TEST_F(EnvironmentTeardownCallsTest, EndInsideARunWaitsForItsReturn)
{
    declareWithEnd("f", [this] { m_trace.add('F'); });
    declareQuit();
    CompiledScript script("kept = onEnd('G')  quit()  note(('c'):byte())");

    const bool isDone = environment().execute(script);

    EXPECT_TRUE(isDone);
    EXPECT_EQ(m_trace.text(), "cFG");
}

TEST_F(EnvironmentTeardownCallsTest, EndInsideAScriptCallWaitsForItsReturn)
{
    declareWithEnd("f", [this] { m_trace.add('F'); });
    declareQuit();
    run("function callQuit() quit()  note(('c'):byte())  return 42 end");
    std::vector<FunctionParameter> outputs{FunctionParameter(0)};
    Parameters outputView(outputs);

    environment().callScriptFunction(
        environment().getScriptFunction("callQuit"), Parameters(), outputView);

    EXPECT_EQ(outputs[0].getInt(), 42);
    EXPECT_EQ(m_trace.text(), "cF");
}

// Functions stay, so the finalisers of an interpreter that closes can still call the host.
TEST_F(EnvironmentTeardownCallsTest, HostIsRefusedWhileASwitchClosesTheInterpreter)
{
    environment().setVar("v", 1);
    int seen = 0;
    bool isDone = true;
    Function* declared = nullptr;
    CompiledScript script("return 1");
    declare(
        "look",
        {},
        [&](const Parameters&)
        {
            seen = environment().isVarSet("v") ? -2 : environment().getVar("v", -1);
            isDone = environment().execute(script);
            declared = environment().setFunc("late");
            m_trace.add('H');
            return FunctionParameter::VOID;
        });
    run("kept = onEnd('G', look)");

    environment().setEnvironmentFor(INTERPRETER_LUA);

    EXPECT_EQ(m_trace.text(), "GH");
    EXPECT_EQ(seen, -1);
    EXPECT_FALSE(isDone);
    EXPECT_EQ(declared, nullptr);
}

TEST_F(EnvironmentTeardownCallsTest, EndWhileASwitchClosesTheInterpreterWaitsForThat)
{
    declareWithEnd("f", [this] { m_trace.add('F'); });
    declareQuit([this] { m_trace.add('q'); });
    run("kept = onEnd('G', quit)  other = onEnd('G')");

    environment().setEnvironmentFor(INTERPRETER_LUA);

    EXPECT_EQ(m_trace.text(), "GGqF");
}

} // namespace tbScripts::test

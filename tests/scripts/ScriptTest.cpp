// Scripts: their names, sources and interpreters. How they compile is tested beside this.

#include "support/RowName.h"
#include "support/ScriptFixture.h"

#include <tbExport/Exportable.h>

#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace tbScripts::test
{

namespace
{

const LogEntry SCRIPT_WAS_DISABLED = {
    "Script type requested unknown. This will disable the Script.", "Script"};

} // namespace

using ScriptTest = ScriptFixture;

TEST_F(ScriptTest, NewOneHasNoNameSourcesOrInterpreterAndReportsSuccess)
{
    const Script script;
    const CompilationResult fresh;

    EXPECT_EQ(script.getName(), "");
    EXPECT_EQ(script.getSources(), "");
    EXPECT_EQ(script.getTargetInterpreter(), 0U);
    for (const CompilationResult* result : {&script.getLastCompilationResult(), &fresh})
    {
        EXPECT_TRUE(result->success);
        EXPECT_EQ(result->errorCode, 0U);
        EXPECT_EQ(result->message, "");
    }
}

TEST_F(ScriptTest, IsExportable)
{
    EXPECT_TRUE((std::is_base_of_v<tbExport::Exportable, Script>));
    EXPECT_TRUE(std::has_virtual_destructor_v<Script>);
}

TEST_F(ScriptTest, LoadWithoutInterpreterFailsWithoutALogEntryEachTime)
{
    Script script;

    for (int i = 0; i < 2; ++i)
    {
        EXPECT_FALSE(script.load());
        script.unload();

        EXPECT_FALSE(script.getLastCompilationResult().success);
        EXPECT_EQ(script.getLastCompilationResult().errorCode, 2U);
        EXPECT_EQ(
            script.getLastCompilationResult().message,
            "Can't load if the InterpreterType has not been set.");
    }
}

TEST_F(ScriptTest, KeepsAllBytesOfItsName)
{
    const std::vector<char> unterminated = {'a', '\0', 'b'};

    m_script.setName(tbMemory::StringView(unterminated.data(), unterminated.size()));

    EXPECT_EQ(m_script.getName(), tbMemory::StringView("a\0b", 3));
}

TEST_F(ScriptTest, NullNameIsTheEmptyName)
{
    m_script.setName(tbMemory::StringView());

    EXPECT_EQ(m_script.getName(), "");
    EXPECT_FALSE(m_script.getName().isNull());
}

TEST_F(ScriptTest, NameMayBeAPartOfTheOldName)
{
    m_script.setName("scripts/a name that does not fit into the object itself");

    m_script.setName(tbMemory::StringView(m_script.getName().data() + 8, 6));

    EXPECT_EQ(m_script.getName(), "a name");
}

TEST_F(ScriptTest, KeepsAllBytesOfItsSources)
{
    const std::vector<char> unterminated = {'x', '=', '1', '\0', '\xff'};

    m_script.setSources(tbMemory::StringView(unterminated.data(), unterminated.size()));

    EXPECT_EQ(m_script.getSources(), tbMemory::StringView("x=1\0\xff", 5));
}

TEST_F(ScriptTest, SettingSourcesCompilesNothingAndKeepsTheCompiledForm)
{
    m_script.setSources("x = = 1");
    EXPECT_TRUE(m_script.getLastCompilationResult().success);
    EXPECT_FALSE(hasBytecode(m_script));
    load("x = 1");

    m_script.setSources("x = 2");

    EXPECT_EQ(run(m_script), 1);
}

TEST_F(ScriptTest, SettingLuaIsStoredWithoutALogEntry)
{
    Script script;

    script.setTargetInterpreter(INTERPRETER_LUA);

    EXPECT_EQ(script.getTargetInterpreter(), 1U);
    EXPECT_TRUE(script.getLastCompilationResult().success);
}

TEST_F(ScriptTest, SettingLuaAgainDropsTheCompiledFormAndResetsTheResult)
{
    load("x = 1");
    m_script.setTargetInterpreter(INTERPRETER_LUA);
    EXPECT_FALSE(hasBytecode(m_script));
    EXPECT_EQ(m_script.getSources(), "x = 1");
    loadExpectingError("x = = 1");

    m_script.setTargetInterpreter(INTERPRETER_LUA);

    EXPECT_TRUE(m_script.getLastCompilationResult().success);
    EXPECT_EQ(m_script.getLastCompilationResult().errorCode, 0U);
    EXPECT_EQ(m_script.getLastCompilationResult().message, "");
}

TEST_F(ScriptTest, SettingNoInterpreterOnANewOneIsLogged)
{
    Script script;

    script.setTargetInterpreter(INTERPRETER_UNKNOWN);

    expectLogged({SCRIPT_WAS_DISABLED});
    EXPECT_EQ(script.getTargetInterpreter(), 0U);
}

TEST_F(ScriptTest, DisabledOneCanBeEnabledAgain)
{
    m_script.setTargetInterpreter(INTERPRETER_UNKNOWN);
    m_log.takeEntries();

    m_script.setTargetInterpreter(INTERPRETER_LUA);

    EXPECT_TRUE(load("x = 3"));
    EXPECT_EQ(run(m_script), 3);
}

class ScriptUnknownInterpreterTest : public ScriptFixture,
                                     public ::testing::WithParamInterface<unsigned>
{
protected:
    void disable()
    {
        m_script.setTargetInterpreter(static_cast<INTERPRETER>(GetParam()));
        expectLogged({SCRIPT_WAS_DISABLED});
    }
};

VALUES(ScriptUnknownInterpreterTest, ::testing::Values(0U, 2U, 255U, 4294967295U));

TEST_P(ScriptUnknownInterpreterTest, KeepsTheStoredInterpreterAndDropsTheCompiledForm)
{
    load("x = 1");

    disable();

    EXPECT_EQ(m_script.getTargetInterpreter(), 1U);
    EXPECT_FALSE(hasBytecode(m_script));
}

TEST_P(ScriptUnknownInterpreterTest, ResetsTheResultAndMakesLoadFail)
{
    loadExpectingError("x = = 1");

    disable();

    EXPECT_TRUE(m_script.getLastCompilationResult().success);
    EXPECT_EQ(m_script.getLastCompilationResult().message, "");
    EXPECT_FALSE(load("x = 1"));
    EXPECT_EQ(m_script.getLastCompilationResult().errorCode, 2U);
    EXPECT_EQ(
        m_script.getLastCompilationResult().message,
        "Can't load if the InterpreterType has not been set.");
}

// What loading and unloading leave behind: result, log and compiled form.
class ScriptCompilationTest : public ScriptFixture
{
protected:
    // Runs the script, which has to fail, and returns the message.
    std::string runExpectingError()
    {
        Environment environment;
        environment.setEnvironmentFor(INTERPRETER_LUA);
        EXPECT_FALSE(environment.execute(m_script));
        m_log.takeEntries();
        return std::string(std::string_view(environment.getLastExecutionResult().message));
    }
};

TEST_F(ScriptCompilationTest, RightSourcesGiveASuccessWithoutMessageAndRunNothingYet)
{
    EXPECT_TRUE(load("error('this must not run')"));
    EXPECT_TRUE(load("x = 20 + 1"));

    EXPECT_TRUE(m_script.getLastCompilationResult().success);
    EXPECT_EQ(m_script.getLastCompilationResult().errorCode, 0U);
    EXPECT_EQ(m_script.getLastCompilationResult().message, "");
    EXPECT_EQ(run(m_script), 21);
}

TEST_F(ScriptCompilationTest, WrongSourcesGiveCodeThreeAMessageAndNoCompiledFormUntilASuccess)
{
    load("x = 1");

    EXPECT_EQ(
        loadExpectingError("x = = 1"),
        "Error while compiling script 'x' : [string \"x = = 1\"]:1: unexpected symbol near '='");
    EXPECT_EQ(m_script.getLastCompilationResult().errorCode, 3U);
    EXPECT_FALSE(hasBytecode(m_script));
    EXPECT_TRUE(load("x = 1"));

    EXPECT_TRUE(m_script.getLastCompilationResult().success);
    EXPECT_EQ(m_script.getLastCompilationResult().errorCode, 0U);
    EXPECT_EQ(m_script.getLastCompilationResult().message, "");
}

TEST_F(ScriptCompilationTest, MessageBeginsWithTheFirstLineOfTheSourcesShortenedIfLong)
{
    EXPECT_EQ(
        loadExpectingError("local first\nlocal second\nx = = 1"),
        "Error while compiling script 'x' : [string \"local first...\"]:3: unexpected symbol near "
        "'='");
    EXPECT_EQ(
        loadExpectingError("local thisIsAVeryLongNameOfAVariableThatGoesOnAndOn = = 1"),
        "Error while compiling script 'x' : [string \"local "
        "thisIsAVeryLongNameOfAVariableThatGoesO...\"]:1: unexpected symbol near '='");
}

TEST_F(ScriptCompilationTest, MessageHasAllBytesOfTheNameAtThatTime)
{
    for (const std::string& name : {std::string(), std::string("a\0b", 3), std::string("later")})
    {
        m_script.setName(name);

        EXPECT_EQ(
            loadExpectingError("x = = 1"),
            "Error while compiling script '" + name +
                "' : [string \"x = = 1\"]:1: unexpected symbol near '='");
    }
}

TEST_F(ScriptCompilationTest, LoadingAgainReplacesTheCompiledForm)
{
    load("x = 1");

    load("x = 2");

    EXPECT_EQ(run(m_script), 2);
}

TEST_F(ScriptCompilationTest, UnloadDropsTheCompiledFormAndKeepsTheResult)
{
    const std::string message = loadExpectingError("x = = 1");
    m_script.unload();
    EXPECT_FALSE(m_script.getLastCompilationResult().success);
    EXPECT_EQ(m_script.getLastCompilationResult().errorCode, 3U);
    EXPECT_EQ(m_script.getLastCompilationResult().message, message);
    load("x = 4");

    m_script.unload();
    m_script.unload();

    EXPECT_FALSE(hasBytecode(m_script));
    EXPECT_TRUE(m_script.getLastCompilationResult().success);
    EXPECT_EQ(m_script.getLastCompilationResult().errorCode, 0U);
    EXPECT_TRUE(m_script.load());
    EXPECT_EQ(run(m_script), 4);
}

TEST_F(ScriptCompilationTest, SourcesEndAtTheirFirstZero)
{
    EXPECT_TRUE(load(tbMemory::StringView("x = 5\0x = = 6", 13)));
    EXPECT_EQ(run(m_script), 5);
    EXPECT_EQ(m_script.getSources(), tbMemory::StringView("x = 5\0x = = 6", 13));
    EXPECT_TRUE(load(tbMemory::StringView("\0x = = 6", 8)));
    EXPECT_EQ(run(m_script), -1);
    EXPECT_EQ(
        loadExpectingError(tbMemory::StringView("x = \0 1", 7)),
        "Error while compiling script 'x' : [string \"x = \"]:1: unexpected symbol near '<eof>'");
}

TEST_F(ScriptCompilationTest, CompiledFormKnowsLinesAndNames)
{
    load("local answer = nil\n\nanswer.text = 1");

    EXPECT_EQ(
        runExpectingError(),
        "Error while executing script 'x' : [string \"local answer = nil...\"]:3: attempt to index "
        "local 'answer' (a nil value)");
}

TEST_F(ScriptCompilationTest, CompiledFormRunsInManyEnvironmentsAndOutlivesTheSources)
{
    load("x = (x or 5) + 1");
    EXPECT_EQ(run(m_script), 6);

    m_script.setSources("");

    EXPECT_EQ(run(m_script), 6);
}

TEST_F(ScriptCompilationTest, LongSourcesAreCompiledWhole)
{
    std::string sources;
    for (int line = 0; line < 20'000; ++line)
        sources += "-- a line of remarks that nobody reads, over and over again\n";

    EXPECT_TRUE(load(sources + "x = 7"));

    EXPECT_EQ(run(m_script), 7);
}

} // namespace tbScripts::test

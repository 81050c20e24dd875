// What loading and unloading leave behind: result, log and compiled form.

#include "support/ScriptFixture.h"

#include <string>
#include <string_view>

namespace tbScripts::test
{

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

TEST_F(ScriptCompilationTest, RightSourcesGiveASuccessWithoutMessage)
{
    EXPECT_TRUE(load("x = 1"));

    EXPECT_TRUE(m_script.getLastCompilationResult().success);
    EXPECT_EQ(m_script.getLastCompilationResult().errorCode, 0U);
    EXPECT_EQ(m_script.getLastCompilationResult().message, "");
}

TEST_F(ScriptCompilationTest, RightSourcesCanBeRun)
{
    load("x = 20 + 1");

    EXPECT_EQ(run(m_script), 21);
}

TEST_F(ScriptCompilationTest, CompilingRunsNothing)
{
    EXPECT_TRUE(load("error('this must not run')"));
}

TEST_F(ScriptCompilationTest, WrongSourcesGiveCodeThreeAndAMessageWithTheName)
{
    EXPECT_EQ(
        loadExpectingError("x = = 1"),
        "Error while compiling script 'x' : [string \"x = = 1\"]:1: unexpected symbol near '='");

    EXPECT_EQ(m_script.getLastCompilationResult().errorCode, 3U);
}

TEST_F(ScriptCompilationTest, MessageBeginsWithTheFirstLineOfTheSources)
{
    EXPECT_EQ(
        loadExpectingError("local first\nlocal second\nx = = 1"),
        "Error while compiling script 'x' : [string \"local first...\"]:3: unexpected symbol near "
        "'='");
}

TEST_F(ScriptCompilationTest, MessageShortensALongFirstLine)
{
    EXPECT_EQ(
        loadExpectingError("local thisIsAVeryLongNameOfAVariableThatGoesOnAndOn = = 1"),
        "Error while compiling script 'x' : [string \"local "
        "thisIsAVeryLongNameOfAVariableThatGoesO...\"]:1: unexpected symbol near '='");
}

TEST_F(ScriptCompilationTest, MessageOfAScriptWithoutNameHasEmptyQuotes)
{
    m_script.setName("");

    EXPECT_EQ(
        loadExpectingError("x = = 1"),
        "Error while compiling script '' : [string \"x = = 1\"]:1: unexpected symbol near '='");
}

TEST_F(ScriptCompilationTest, MessageHasAllBytesOfTheName)
{
    m_script.setName(tbMemory::StringView("a\0b", 3));

    EXPECT_EQ(
        loadExpectingError("x = = 1"),
        std::string("Error while compiling script 'a\0b' : ", 37) +
            "[string \"x = = 1\"]:1: unexpected symbol near '='");
}

TEST_F(ScriptCompilationTest, MessageHasTheNameOfTheMoment)
{
    m_script.setName("later");

    EXPECT_EQ(
        loadExpectingError("x = = 1"),
        "Error while compiling script 'later' : [string \"x = = 1\"]:1: unexpected symbol near "
        "'='");
}

TEST_F(ScriptCompilationTest, WrongSourcesLeaveNoCompiledForm)
{
    loadExpectingError("x = = 1");

    EXPECT_FALSE(hasBytecode(m_script));
}

TEST_F(ScriptCompilationTest, WrongSourcesDropWhatWasCompiledBefore)
{
    load("x = 1");

    loadExpectingError("x = = 1");

    EXPECT_FALSE(hasBytecode(m_script));
}

TEST_F(ScriptCompilationTest, SuccessAfterAFailureResetsTheResult)
{
    loadExpectingError("x = = 1");

    EXPECT_TRUE(load("x = 1"));

    EXPECT_TRUE(m_script.getLastCompilationResult().success);
    EXPECT_EQ(m_script.getLastCompilationResult().errorCode, 0U);
    EXPECT_EQ(m_script.getLastCompilationResult().message, "");
}

TEST_F(ScriptCompilationTest, LoadingAgainReplacesTheCompiledForm)
{
    load("x = 1");

    load("x = 2");

    EXPECT_EQ(run(m_script), 2);
}

TEST_F(ScriptCompilationTest, UnloadDropsTheCompiledForm)
{
    load("x = 1");

    m_script.unload();

    EXPECT_FALSE(hasBytecode(m_script));
}

TEST_F(ScriptCompilationTest, UnloadKeepsTheResultOfASuccess)
{
    load("x = 1");

    m_script.unload();

    EXPECT_TRUE(m_script.getLastCompilationResult().success);
    EXPECT_EQ(m_script.getLastCompilationResult().errorCode, 0U);
}

TEST_F(ScriptCompilationTest, UnloadKeepsTheResultOfAFailure)
{
    const std::string message = loadExpectingError("x = = 1");

    m_script.unload();

    EXPECT_FALSE(m_script.getLastCompilationResult().success);
    EXPECT_EQ(m_script.getLastCompilationResult().errorCode, 3U);
    EXPECT_EQ(m_script.getLastCompilationResult().message, message);
}

TEST_F(ScriptCompilationTest, UnloadedScriptCanBeLoadedAgain)
{
    load("x = 4");
    m_script.unload();
    m_script.unload();

    EXPECT_TRUE(m_script.load());

    EXPECT_EQ(run(m_script), 4);
}

TEST_F(ScriptCompilationTest, SourcesEndAtTheirFirstZero)
{
    EXPECT_TRUE(load(tbMemory::StringView("x = 5\0x = = 6", 13)));

    EXPECT_EQ(run(m_script), 5);
    EXPECT_EQ(m_script.getSources(), tbMemory::StringView("x = 5\0x = = 6", 13));
}

TEST_F(ScriptCompilationTest, SourcesThatBeginWithAZeroAreEmpty)
{
    EXPECT_TRUE(load(tbMemory::StringView("\0x = = 6", 8)));

    EXPECT_EQ(run(m_script), -1);
}

TEST_F(ScriptCompilationTest, StatementCutOffByAZeroIsASyntaxError)
{
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

TEST_F(ScriptCompilationTest, OneScriptRunsInManyEnvironments)
{
    load("x = (x or 0) + 1");

    EXPECT_EQ(run(m_script), 1);
    EXPECT_EQ(run(m_script), 1);
}

TEST_F(ScriptCompilationTest, CompiledFormOutlivesTheSources)
{
    load("x = 6");

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

// Sources of odd form: which ones compile, and what those that do not are told.

#include "support/RowName.h"
#include "support/ScriptFixture.h"

#include <string>
#include <string_view>

namespace tbScripts::test
{

namespace
{

struct OddSources
{
    std::string row;
    std::string text;
    int left; // what a run leaves in the global "x", -1 for nothing
};

struct WrongSources
{
    std::string row;
    std::string text;
    std::string reason;
};

} // namespace

using ScriptSourcesTest = OnRows<ScriptFixture, OddSources>;

ROWS(
    ScriptSourcesTest,
    {"Empty", "", -1},
    {"Blanks", " \t\n\r\n ", -1},
    {"OnlyAComment", "-- nothing", -1},
    {"OnlyALongComment", "--[[ nothing\nat all ]]", -1},
    {"OnlyAByteOrderMark", "\xef\xbb\xbf", -1},
    {"ByteOrderMark", "\xef\xbb\xbfx = 1", 1},
    {"OnlyAnInterpreterLine", "#!/usr/bin/lua", -1},
    {"InterpreterLine", "#!/usr/bin/lua\nx = 1", 1},
    {"ByteOrderMarkAndInterpreterLine", "\xef\xbb\xbf#!/usr/bin/lua\nx = 1", 1},
    {"NoFinalNewline", "x = 1", 1},
    {"FinalNewline", "x = 1\n", 1},
    {"NewlinesOfTwoCharacters", "x = 1\r\nx = 2\r\n", 2},
    {"CommentAtTheEnd", "x = 1 -- done", 1},
    {"BytesThatAreNoUnicode", "x = #'\xff\xfe\x80'", 3},
    {"ReturnedValue", "x = 1 return x", 1});

TEST_P(ScriptSourcesTest, CompileAndRunAndAreKeptAsTheyWereSet)
{
    EXPECT_TRUE(load(GetParam().text));

    EXPECT_TRUE(hasBytecode(m_script));
    EXPECT_EQ(run(m_script), GetParam().left);
    EXPECT_EQ(m_script.getSources(), GetParam().text);
}

using ScriptWrongSourcesTest = OnRows<ScriptFixture, WrongSources>;

ROWS(
    ScriptWrongSourcesTest,
    {"DeepNesting",
     "x = " + std::string(100'000, '('),
     "[string \"x = " + std::string(41, '(') + "...\"]:1: chunk has too many syntax levels"},
    {"OnlyTheFirstByte", "\x1b", "attempt to load chunk with wrong mode"},
    {"Header", "\x1bLJ\x02", "attempt to load chunk with wrong mode"},
    {"OfTheReferenceVirtualMachine", "\x1bLua\x51", "attempt to load chunk with wrong mode"},
    {"BehindAByteOrderMark", "\xef\xbb\xbf\x1bLJ\x02", "cannot load malformed bytecode"},
    {"BehindAnInterpreterLine", "#!/bin/lua\n\x1bLJ\x02", "cannot load malformed bytecode"},
    {"UnfinishedText", "x = 'abc", "[string \"x = 'abc\"]:1: unfinished string near '<eof>'"},
    {"UnfinishedLongText",
     "x = [[abc\n",
     "[string \"x = [[abc...\"]:2: unfinished long string near '<eof>'"},
    {"UnfinishedBlock", "if x then", "[string \"if x then\"]:1: 'end' expected near '<eof>'"},
    {"UndefinedLabel", "goto away", "[string \"goto away\"]:1: undefined label 'away'"});

TEST_P(ScriptWrongSourcesTest, AreASyntaxError)
{
    EXPECT_EQ(
        loadExpectingError(GetParam().text),
        "Error while compiling script 'x' : " + GetParam().reason);

    EXPECT_EQ(m_script.getLastCompilationResult().errorCode, 3U);
    EXPECT_FALSE(hasBytecode(m_script));
}

using ScriptBytecodeSourcesTest = ScriptFixture;

TEST_F(ScriptBytecodeSourcesTest, CompiledCodeThatAScriptDumpedIsRefused)
{
    Environment environment;
    environment.setEnvironmentFor(INTERPRETER_LUA);
    load("x = string.dump(loadstring('y = 1'))");
    ASSERT_TRUE(environment.execute(m_script));

    EXPECT_EQ(
        loadExpectingError(environment.getVar("x", "")),
        "Error while compiling script 'x' : attempt to load chunk with wrong mode");

    EXPECT_EQ(m_script.getLastCompilationResult().errorCode, 3U);
}

} // namespace tbScripts::test

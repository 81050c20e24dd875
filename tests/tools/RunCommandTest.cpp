#include "support/RowName.h"
#include "tools/ToolFixture.h"

#include <sys/stat.h>

namespace tool::test
{

namespace
{

using RunCommandTest = ToolFixture;

// A document with one script. Both texts as JSON writes them.
std::string declaration(const std::string& name, const std::string& sources)
{
    return R"({"name":")" + name + R"(","type":"lua","sources":")" + sources + R"("})";
}

TEST_F(RunCommandTest, RunsScriptsInTheOrderGivenInOneEnvironment)
{
    write("a.lua", "x = (x or 0) + 1 print('a', x)");
    write("b.lua", "x = (x or 0) * 10 print('b', x)");

    const Outcome outcome = run({"run", "b.lua", "a.lua", "b.lua"});

    EXPECT_EQ(outcome, success("b\t0\na\t1\nb\t10\n"));
}

TEST_F(RunCommandTest, RunsEveryKindOfDocument)
{
    write("one.json", declaration("one", "print(1)"));
    write("array.json", '[' + declaration("two", "print(2)") + ']');
    write("list.tbscripts", "{\"scripts\":[" + declaration("three", "print(3)") + "]}");

    const Outcome outcome = run({"run", "one.json", "array.json", "list.tbscripts"});

    EXPECT_EQ(outcome, success("1\n2\n3\n"));
}

TEST_F(RunCommandTest, ScriptsOfOneNameInTwoDocumentsBothRun)
{
    write("a.json", declaration("same", "print('first')"));
    write("b.json", declaration("same", "print('second')"));

    const Outcome outcome = run({"run", "a.json", "b.json"});

    EXPECT_EQ(outcome, success("first\nsecond\n"));
}

TEST_F(RunCommandTest, GivesScriptsWhatFollowsTwoDashes)
{
    write("a.lua", "for i = 1, #arg do io.write('<', arg[i], '>') end");

    const Outcome outcome = run(
        {"run",
         "a.lua",
         "--",
         "x",
         "",
         "--",
         "-o",
         "two words",
         "\"\\\n",
         "\xff\x01"
         "1"});

    EXPECT_EQ(
        outcome,
        success("<x><><--><-o><two words><\"\\\n><\xff\x01"
                "1>"));
}

TEST_F(RunCommandTest, GivesAnEmptyArgumentTableWithoutTwoDashes)
{
    write("a.lua", "print(#arg, arg[1])");

    const Outcome outcome = run({"run", "a.lua"});

    EXPECT_EQ(outcome, success("0\tnil\n"));
}

TEST_F(RunCommandTest, NamesTheRunningScriptInTheArgumentTable)
{
    write("d/a.lua", "print(arg[0], arg[1]) arg = nil");
    write("b.json", declaration("declared", "print(arg[0], arg[1])"));

    const Outcome outcome = run({"run", "d/a.lua", "b.json", "--", "x"});

    EXPECT_EQ(outcome, success("d/a.lua\tx\ndeclared\tx\n"));
}

TEST_F(RunCommandTest, GivesScriptsSeventyThousandArguments)
{
    write("a.lua", "print(#arg, arg[1], arg[10000], arg[10001], arg[70000])");
    std::vector<std::string> arguments = {"run", "a.lua", "--"};
    for (int i = 1; i <= 70000; ++i)
        arguments.push_back(std::to_string(i));

    const Outcome outcome = run(arguments);

    EXPECT_EQ(outcome, success("70000\t1\t10000\t10001\t70000\n"));
}

TEST_F(RunCommandTest, RunsNothingIfOneScriptIsBroken)
{
    write("a.lua", "print('ran')");
    write("b.lua", "\nx = = 1");
    write("c.lua", "x = ");

    const Outcome outcome = run({"run", "a.lua", "b.lua", "c.lua"});

    EXPECT_EQ(
        outcome,
        failure("b.lua:2: unexpected symbol near '='\n"
                "c.lua:1: unexpected symbol near '<eof>'\n"));
}

TEST_F(RunCommandTest, StopsAtTheFirstError)
{
    write("a.lua", "print('a') error('boom')");
    write("b.lua", "print('b')");

    const Outcome outcome = run({"run", "a.lua", "b.lua"});

    EXPECT_EQ(outcome, failure("a.lua:1: boom\n", "a\n"));
}

TEST_F(RunCommandTest, PassesOnTheStatusThatAScriptExitsWith)
{
    write("a.lua", "io.write('bye') os.exit(7)");

    const Outcome outcome = run({"run", "a.lua"});

    EXPECT_EQ(outcome, (Outcome{7, 0, "bye", ""}));
}

TEST_F(RunCommandTest, NamesTheScriptWhoseFunctionRaised)
{
    write("lib.lua", "-- lib\n\nfunction check() error('wrong') end");
    write("main.lua", "-- main\ncheck()");

    const Outcome outcome = run({"run", "lib.lua", "main.lua"});

    EXPECT_EQ(outcome, failure("lib.lua:3: wrong\n"));
}

TEST_F(RunCommandTest, AdmitsThatScriptsWhichBeginAlikeCannotBeToldApart)
{
    write("lib.lua", "-- same\n\nfunction check() error('wrong') end");
    write("main.lua", "-- same\ncheck()");

    const Outcome outcome = run({"run", "lib.lua", "main.lua"});

    EXPECT_EQ(outcome, failure("main.lua:3: wrong (or lib.lua:3, which begins alike)\n"));
}

TEST_F(RunCommandTest, LeavesThePlaceInAModuleAsTheInterpreterSaysIt)
{
    write("module.lua", "\nerror('not today')");
    write("main.lua", "require('module')");

    const Outcome outcome = run({"run", "main.lua"});

    EXPECT_EQ(outcome, failure("main.lua: ./module.lua:2: not today\n"));
}

TEST_F(RunCommandTest, EndsQuietlyIfItsReaderGoesEarly)
{
    write("a.lua", "for i = 1, 100000 do print(i) end");

    const Outcome outcome = runInShell("\"$TOOL\" run a.lua | head -1");

    EXPECT_EQ(outcome, success("1\n"));
}

TEST_F(RunCommandTest, EndsQuietlyIfSignalsOfClosedPipesAreIgnored)
{
    write("a.lua", "for i = 1, 100000 do print(i) end");

    const Outcome outcome = runInShell("(trap '' PIPE; \"$TOOL\" run a.lua) | head -1");

    EXPECT_EQ(outcome, success("1\n"));
}

TEST_F(RunCommandTest, ReportsAnOutputThatIsFull)
{
    write("a.lua", "print('lost')");

    const Outcome outcome = runInShell("\"$TOOL\" run a.lua >/dev/full");

    EXPECT_EQ(outcome, trouble("tbscripts: standard output: No space left on device\n"));
}

TEST_F(RunCommandTest, DoesNotWaitForAFifo)
{
    ::mkfifo(pathOf("a.lua").c_str(), 0600);

    const Outcome outcome = run({"run", "a.lua"});

    EXPECT_EQ(outcome, trouble("tbscripts: a.lua: is not a regular file\n"));
}

TEST_F(RunCommandTest, RefusesFilesThatCannotBeRead)
{
    write("d/a.lua", "");

    const Outcome outcome = run({"run", "d", "missing.lua", "d/a.lua/b", "/dev/zero"});

    EXPECT_EQ(
        outcome,
        trouble("tbscripts: d: is a folder, not a file\n"
                "tbscripts: missing.lua: No such file or directory\n"
                "tbscripts: d/a.lua/b: Not a directory\n"
                "tbscripts: /dev/zero: is not a regular file\n"));
}

struct ErrorRow
{
    const char* row;
    std::string sources;
    const char* errors;
};

void PrintTo(const ErrorRow& row, std::ostream* stream)
{
    *stream << row.row;
}

class RunErrorTest : public ToolFixture, public ::testing::WithParamInterface<ErrorRow>
{
};

TEST_P(RunErrorTest, NamesFileLineAndMessage)
{
    write("a.lua", GetParam().sources);

    const Outcome outcome = run({"run", "a.lua"});

    EXPECT_EQ(outcome, failure(GetParam().errors));
}

INSTANTIATE_TEST_SUITE_P(
    Sources,
    RunErrorTest,
    ::testing::Values(
        ErrorRow{"Plain", "\n\nerror('boom')", "a.lua:3: boom\n"},
        ErrorRow{"HashLine", "#!/usr/bin/env tbscripts run\nerror('boom')", "a.lua:2: boom\n"},
        ErrorRow{"OnlyAHashLine", "# nothing\nerror('boom')", "a.lua:2: boom\n"},
        ErrorRow{"ByteOrderMark", "\xef\xbb\xbf\nerror('boom')", "a.lua:2: boom\n"},
        ErrorRow{"ByteOrderMarkAndHashLine", "\xef\xbb\xbf#!x\nerror('boom')", "a.lua:2: boom\n"},
        ErrorRow{"CarriageReturns", "local x\r\n\r\nerror('boom')\r\n", "a.lua:3: boom\n"},
        ErrorRow{"MisleadingFirstLine", "x = [[\"]:7: ]]\nerror('boom')", "a.lua:2: boom\n"},
        ErrorRow{"NoPlace", "error('boom', 0)", "a.lua: boom\n"},
        ErrorRow{"NoText", "error({})", "a.lua: (error object is a table value)\n"},
        ErrorRow{
            "ForeignChunk",
            "assert(loadstring('error(\"inner\")', '=part'))()",
            "a.lua: part:1: inner\n"},
        ErrorRow{
            "SeveralLines",
            "error('one\\ntwo\\n\\tthree')",
            "a.lua:1: one\n    two\n    \tthree\n"},
        ErrorRow{"ControlCharacters", "error('\\27[2J\\255')", "a.lua:1: \\x1b[2J\\xff\n"},
        ErrorRow{"Bytecode", "\x1bLJ\x02", "a.lua: attempt to load chunk with wrong mode\n"}),
    tbScripts::test::RowName());

TEST_F(RunCommandTest, ShowsTheScriptOfADocument)
{
    write("a.json", declaration("sp\\u001bawn", "\\nerror('boom')"));

    const Outcome outcome = run({"run", "a.json"});

    EXPECT_EQ(outcome, failure("a.json(sp\\x1bawn):2: boom\n"));
}

TEST_F(RunCommandTest, RunsAnEmptyFile)
{
    write("a.lua", "");

    const Outcome outcome = run({"run", "a.lua"});

    EXPECT_EQ(outcome, success(""));
}

} // namespace

} // namespace tool::test

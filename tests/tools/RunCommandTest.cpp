#include "support/RowName.h"
#include "tools/ToolSteps.h"

namespace tool::test
{

namespace
{

using tbScripts::test::OnRows;

using RunCommandTest = ToolFixture;

// A document with one script. Both texts as JSON writes them.
std::string declaration(const std::string& name, const std::string& sources)
{
    return R"({"name":")" + name + R"(","type":"lua","sources":")" + sources + R"("})";
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

struct ErrorRow
{
    const char* row;
    std::string sources;
    const char* errors;
};

using RunErrorTest = OnRows<ToolFixture, ErrorRow>;

TEST_P(RunErrorTest, NamesFileLineAndMessage)
{
    write("a.lua", GetParam().sources);

    const Outcome outcome = run({"run", "a.lua"});

    EXPECT_EQ(outcome, failure(GetParam().errors));
}

ROWS(
    RunErrorTest,
    {"Plain", "\n\nerror('boom')", "a.lua:3: boom\n"},
    {"HashLine", "#!/usr/bin/env tbscripts run\nerror('boom')", "a.lua:2: boom\n"},
    {"OnlyAHashLine", "# nothing\nerror('boom')", "a.lua:2: boom\n"},
    {"ByteOrderMark", "\xef\xbb\xbf\nerror('boom')", "a.lua:2: boom\n"},
    {"ByteOrderMarkAndHashLine", "\xef\xbb\xbf#!x\nerror('boom')", "a.lua:2: boom\n"},
    {"CarriageReturns", "local x\r\n\r\nerror('boom')\r\n", "a.lua:3: boom\n"},
    {"MisleadingFirstLine", "x = [[\"]:7: ]]\nerror('boom')", "a.lua:2: boom\n"},
    {"NoPlace", "error('boom', 0)", "a.lua: boom\n"},
    {"NoText", "error({})", "a.lua: (error object is a table value)\n"},
    {"ForeignChunk", "assert(loadstring('error(\"inner\")', '=part'))()", "a.lua: part:1: inner\n"},
    {"SeveralLines", "error('one\\ntwo\\n\\tthree')", "a.lua:1: one\n    two\n    \tthree\n"},
    {"ControlCharacters", "error('\\27[2J\\255')", "a.lua:1: \\x1b[2J\\xff\n"},
    {"Bytecode", "\x1bLJ\x02", "a.lua: attempt to load chunk with wrong mode\n"});

const Facts<RunCommandTest> FACTS(
    "RunCommandTest",
    {
        {"RunsScriptsInTheOrderGivenInOneEnvironment",
         {file("a.lua", "x = (x or 0) + 1 print('a', x)"),
          file("b.lua", "x = (x or 0) * 10 print('b', x)"),
          gives({"run", "b.lua", "a.lua", "b.lua"}, success("b\t0\na\t1\nb\t10\n"))}},
        {"RunsEveryKindOfDocument",
         {file("one.json", declaration("one", "print(1)")),
          file("array.json", '[' + declaration("two", "print(2)") + ']'),
          file("list.tbscripts", "{\"scripts\":[" + declaration("three", "print(3)") + "]}"),
          gives({"run", "one.json", "array.json", "list.tbscripts"}, success("1\n2\n3\n"))}},
        {"ScriptsOfOneNameInTwoDocumentsBothRun",
         {file("a.json", declaration("same", "print('first')")),
          file("b.json", declaration("same", "print('second')")),
          gives({"run", "a.json", "b.json"}, success("first\nsecond\n"))}},
        {"GivesScriptsWhatFollowsTwoDashes",
         {file("a.lua", "for i = 1, #arg do io.write('<', arg[i], '>') end"),
          gives(
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
               "1"},
              success("<x><><--><-o><two words><\"\\\n><\xff\x01"
                      "1>"))}},
        {"GivesAnEmptyArgumentTableWithoutTwoDashes",
         {file("a.lua", "print(#arg, arg[1])"), gives({"run", "a.lua"}, success("0\tnil\n"))}},
        {"NamesTheRunningScriptInTheArgumentTable",
         {file("d/a.lua", "print(arg[0], arg[1]) arg = nil"),
          file("b.json", declaration("declared", "print(arg[0], arg[1])")),
          gives({"run", "d/a.lua", "b.json", "--", "x"}, success("d/a.lua\tx\ndeclared\tx\n"))}},
        {"RunsNothingIfOneScriptIsBroken",
         {file("a.lua", "print('ran')"),
          file("b.lua", "\nx = = 1"),
          file("c.lua", "x = "),
          gives(
              {"run", "a.lua", "b.lua", "c.lua"},
              failure("b.lua:2: unexpected symbol near '='\n"
                      "c.lua:1: unexpected symbol near '<eof>'\n"))}},
        {"StopsAtTheFirstError",
         {file("a.lua", "print('a') error('boom')"),
          file("b.lua", "print('b')"),
          gives({"run", "a.lua", "b.lua"}, failure("a.lua:1: boom\n", "a\n"))}},
        {"PassesOnTheStatusThatAScriptExitsWith",
         {file("a.lua", "io.write('bye') os.exit(7)"),
          gives({"run", "a.lua"}, (Outcome{7, 0, "bye", ""}))}},
        {"NamesTheScriptWhoseFunctionRaised",
         {file("lib.lua", "-- lib\n\nfunction check() error('wrong') end"),
          file("main.lua", "-- main\ncheck()"),
          gives({"run", "lib.lua", "main.lua"}, failure("lib.lua:3: wrong\n"))}},
        {"AdmitsThatScriptsWhichBeginAlikeCannotBeToldApart",
         {file("lib.lua", "-- same\n\nfunction check() error('wrong') end"),
          file("main.lua", "-- same\ncheck()"),
          gives(
              {"run", "lib.lua", "main.lua"},
              failure("main.lua:3: wrong (or lib.lua:3, which begins alike)\n"))}},
        {"LeavesThePlaceInAModuleAsTheInterpreterSaysIt",
         {file("module.lua", "\nerror('not today')"),
          file("main.lua", "require('module')"),
          gives({"run", "main.lua"}, failure("main.lua: ./module.lua:2: not today\n"))}},
        {"EndsQuietlyIfItsReaderGoesEarly",
         {file("a.lua", "for i = 1, 100000 do print(i) end"),
          shellGives("\"$TOOL\" run a.lua | head -1", success("1\n"))}},
        {"EndsQuietlyIfSignalsOfClosedPipesAreIgnored",
         {file("a.lua", "for i = 1, 100000 do print(i) end"),
          shellGives("(trap '' PIPE; \"$TOOL\" run a.lua) | head -1", success("1\n"))}},
        {"ReportsAnOutputThatIsFull",
         {file("a.lua", "print('lost')"),
          shellGives(
              "\"$TOOL\" run a.lua >/dev/full",
              trouble("tbscripts: standard output: No space left on device\n"))}},
        {"DoesNotWaitForAFifo",
         {fifo("a.lua"),
          gives({"run", "a.lua"}, trouble("tbscripts: a.lua: is not a regular file\n"))}},
        {"RefusesFilesThatCannotBeRead",
         {file("d/a.lua", ""),
          gives(
              {"run", "d", "missing.lua", "d/a.lua/b", "/dev/zero"},
              trouble("tbscripts: d: is a folder, not a file\n"
                      "tbscripts: missing.lua: No such file or directory\n"
                      "tbscripts: d/a.lua/b: Not a directory\n"
                      "tbscripts: /dev/zero: is not a regular file\n"))}},
        {"ShowsTheScriptOfADocument",
         {file("a.json", declaration("sp\\u001bawn", "\\nerror('boom')")),
          gives({"run", "a.json"}, failure("a.json(sp\\x1bawn):2: boom\n"))}},
        {"RunsAnEmptyFile", {file("a.lua", ""), gives({"run", "a.lua"}, success(""))}},
    });

} // namespace

} // namespace tool::test

#include "tools/ToolSteps.h"

namespace tool::test
{

namespace
{

using ::testing::HasSubstr;

using CheckCommandTest = ToolFixture;

TEST_F(CheckCommandTest, WalksFoldersInTheOrderOfTheBytesOfPaths)
{
    for (const char* name : {"s/b.lua", "s/a/z.lua", "s/B.lua", "s/a.lua", "s/a/deep/y.lua"})
        write(name, "=");

    const Outcome outcome = run({"check", "s/"});

    EXPECT_EQ(
        outcome,
        failure(
            "s/B.lua:1: unexpected symbol near '='\n"
            "s/a.lua:1: unexpected symbol near '='\n"
            "s/a/deep/y.lua:1: unexpected symbol near '='\n"
            "s/a/z.lua:1: unexpected symbol near '='\n"
            "s/b.lua:1: unexpected symbol near '='\n",
            "5 scripts checked, 5 failed\n"));
}

TEST_F(CheckCommandTest, ReportsWhereADocumentIsNoJson)
{
    write("s/a.json", "{\"name\":\n  nonsense}");

    const Outcome outcome = run({"check", "s"});

    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(outcome.output, "0 scripts checked, 1 problem with files\n");
    EXPECT_THAT(outcome.errors, ::testing::StartsWith("s/a.json:2: "));
}

class ManyFilesTest : public ToolFixture
{
protected:
    ManyFilesTest()
    {
        for (int i = 0; i < 2000; ++i)
            write("s/" + std::to_string(i % 10) + '/' + std::to_string(i) + ".lua", "x = 1");
        write("s/5/broken.lua", "=");
    }
};

TEST_F(ManyFilesTest, ShowAProgressLineOnATerminalThatIsGoneInTheEnd)
{
    const std::string shown = runOnTerminal({"check", "s"});

    EXPECT_THAT(shown, HasSubstr("\rchecking file 50 of 2001\r"));
    EXPECT_THAT(shown, HasSubstr("\r                          \rs/5/broken.lua:1: "));
    EXPECT_THAT(
        shown, ::testing::EndsWith("\rchecking file 2000 of 2001\r                          \r"));
}

TEST_F(CheckCommandTest, ShowsNoProgressLineForFewFiles)
{
    for (int i = 0; i < 100; ++i)
        write("s/" + std::to_string(i) + ".lua", "");

    const std::string shown = runOnTerminal({"check", "s"});

    EXPECT_EQ(shown, "");
}

const Facts<CheckCommandTest> FACTS(
    "CheckCommandTest",
    {
        {"CountsWhatCompiles",
         {file("a.lua", "x = 1"),
          file("b.json", R"([{"name":"p","type":"lua","sources":""},{"name":"q","type":"lua"}])"),
          gives({"check", "a.lua", "b.json"}, success("3 scripts checked\n"))}},
        {"RunsNothing",
         {file("a.lua", "print('ran')"), gives({"check", "a.lua"}, success("1 script checked\n"))}},
        {"ReportsEachBrokenScriptAmongGoodOnes",
         {file("s/a.lua", "x = 1"),
          file("s/b.lua", "x = 1\nx = = 2"),
          file("s/c.lua", ""),
          file("s/d.lua", "for"),
          gives(
              {"check", "s"},
              failure(
                  "s/b.lua:2: unexpected symbol near '='\n"
                  "s/d.lua:1: '<name>' expected near '<eof>'\n",
                  "4 scripts checked, 2 failed\n"))}},
        {"IsNotMisledByFirstLines",
         {file("s/a.lua", "x = [[\"]:7:]]\n\nx = = 2"),
          file("s/b.lua", "--...\"]:7: no\n\nx = = 2"),
          file("s/c.lua", "@s/a.lua:7: no"),
          file("s/d.lua", "=s/a.lua:7: no"),
          gives(
              {"check", "s"},
              failure(
                  "s/a.lua:3: unexpected symbol near '='\n"
                  "s/b.lua:3: unexpected symbol near '='\n"
                  "s/c.lua:1: unexpected symbol near '@'\n"
                  "s/d.lua:1: unexpected symbol near '='\n",
                  "4 scripts checked, 4 failed\n"))}},
        {"LooksOnlyAtScriptsAndDocumentsInFolders",
         {file("s/a.lua", ""),
          file("s/notes.txt", "="),
          file("s/lua", "="),
          file("s/a.lua.bak", "="),
          gives({"check", "s"}, success("1 script checked\n"))}},
        {"TakesAFileOfAnyNameForAScript",
         {file("start", "#!/usr/bin/env x\nx = = 1"),
          gives(
              {"check", "start"},
              failure("start:2: unexpected symbol near '='\n", "1 script checked, 1 failed\n"))}},
        {"NamesDocumentAndScript",
         {file("a.tbscripts", R"({"scripts":[{"name":"p","type":"lua","sources":"\n\n="}]})"),
          gives(
              {"check", "a.tbscripts"},
              failure(
                  "a.tbscripts(p):3: unexpected symbol near '='\n",
                  "1 script checked, 1 failed\n"))}},
        {"PassesOverOtherJsonInFolders",
         {file("s/settings.json", R"({"name":"settings","speed":3})"),
          file("s/numbers.json", "[1,2]"),
          file("s/nothing.json", "null"),
          gives({"check", "s"}, success("0 scripts checked\n"))}},
        {"ReportsOtherJsonThatIsNamed",
         {file("numbers.json", "[1]"),
          file("nothing.json", "null"),
          file("text.tbscripts", R"({"scripts":"none"})"),
          gives(
              {"check", "numbers.json", "nothing.json", "text.tbscripts"},
              trouble(
                  "tbscripts: numbers.json: element 1: Script Declaration entry not an object.\n"
                  "tbscripts: nothing.json: is neither a script declaration nor a list of them\n"
                  "tbscripts: text.tbscripts: the member \"scripts\" is not an array\n",
                  "0 scripts checked, 3 problems with files\n"))}},
        {"ReportsADeclarationWithoutNameAndGoesOn",
         {file("a.json", R"([{"sources":""},{"name":"p","type":"lua","sources":"="}])"),
          gives(
              {"check", "a.json"},
              trouble(
                  "tbscripts: a.json: element 1: Script Declaration entry incomplete. "
                  "There is no name field.\n"
                  "a.json(p):1: unexpected symbol near '='\n",
                  "1 script checked, 1 failed, 1 problem with files\n"))}},
        {"DoesNotTakeTheTypeOverFromAnotherDocument",
         {file("a.json", R"({"name":"p","type":"lua","sources":""})"),
          file("b.json", R"({"name":"p","sources":""})"),
          file("c.json", R"({"name":"p","type":"Lua","sources":""})"),
          gives(
              {"check", "a.json", "b.json", "c.json"},
              failure(
                  "b.json(p): the type is not \"lua\"\nc.json(p): the type is not \"lua\"\n",
                  "3 scripts checked, 2 failed\n"))}},
        {"EmptyFolderHoldsNoScripts",
         {folder("s"), gives({"check", "s"}, success("0 scripts checked\n"))}},
        {"ReportsWhatCannotBeReadInAFolder",
         {file("s/good.lua", ""),
          fifo("s/fifo.lua"),
          fifo("s/fifo.json"),
          link("nowhere", "s/link.lua"),
          gives(
              {"check", "s"},
              trouble(
                  "tbscripts: s/fifo.json: is not a regular file\n"
                  "tbscripts: s/fifo.lua: is not a regular file\n"
                  "tbscripts: s/link.lua: No such file or directory\n",
                  "1 script checked, 3 problems with files\n"))}},
        {"FollowsLinksToFilesButNotToFolders",
         {file("elsewhere/a.lua", "="),
          folder("s"),
          link("../elsewhere/a.lua", "s/file.lua"),
          link("..", "s/circle.lua"),
          gives(
              {"check", "s"},
              failure(
                  "s/file.lua:1: unexpected symbol near '='\n", "1 script checked, 1 failed\n"))}},
        {"KeepsOneFailureOnOneLine",
         {file("a.lua", "x = 1 [[\x1b\n]] y"),
          gives(
              {"check", "a.lua"},
              failure(
                  "a.lua:2: unexpected symbol near '[[\\x1b\\n]]'\n",
                  "1 script checked, 1 failed\n"))}},
    });

const Facts<ManyFilesTest> FACTS_OF_MANY_FILES(
    "ManyFilesTest",
    {
        {"AreCheckedWithoutAProgressLineInAPipe",
         {shellGives(
             "\"$TOOL\" check s 2>&1 | cat",
             success("s/5/broken.lua:1: unexpected symbol near '='\n2001 scripts checked, 1 "
                     "failed\n"))}},
    });

} // namespace

} // namespace tool::test

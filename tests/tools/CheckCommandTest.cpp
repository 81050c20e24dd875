#include "tools/ToolFixture.h"

#include <filesystem>
#include <sys/stat.h>

namespace tool::test
{

namespace
{

using ::testing::HasSubstr;
using ::testing::Not;

using CheckCommandTest = ToolFixture;

TEST_F(CheckCommandTest, CountsWhatCompiles)
{
    write("a.lua", "x = 1");
    write("b.json", R"([{"name":"p","type":"lua","sources":""},{"name":"q","type":"lua"}])");

    const Outcome outcome = run({"check", "a.lua", "b.json"});

    EXPECT_EQ(outcome, success("3 scripts checked\n"));
}

TEST_F(CheckCommandTest, RunsNothing)
{
    write("a.lua", "print('ran')");

    const Outcome outcome = run({"check", "a.lua"});

    EXPECT_EQ(outcome, success("1 script checked\n"));
}

TEST_F(CheckCommandTest, ReportsEachBrokenScriptAmongGoodOnes)
{
    write("s/a.lua", "x = 1");
    write("s/b.lua", "x = 1\nx = = 2");
    write("s/c.lua", "");
    write("s/d.lua", "for");

    const Outcome outcome = run({"check", "s"});

    EXPECT_EQ(
        outcome,
        failure(
            "s/b.lua:2: unexpected symbol near '='\n"
            "s/d.lua:1: '<name>' expected near '<eof>'\n",
            "4 scripts checked, 2 failed\n"));
}

TEST_F(CheckCommandTest, IsNotMisledByFirstLines)
{
    write("s/a.lua", "x = [[\"]:7:]]\n\nx = = 2");
    write("s/b.lua", "--...\"]:7: no\n\nx = = 2");
    write("s/c.lua", "@s/a.lua:7: no");
    write("s/d.lua", "=s/a.lua:7: no");

    const Outcome outcome = run({"check", "s"});

    EXPECT_EQ(
        outcome,
        failure(
            "s/a.lua:3: unexpected symbol near '='\n"
            "s/b.lua:3: unexpected symbol near '='\n"
            "s/c.lua:1: unexpected symbol near '@'\n"
            "s/d.lua:1: unexpected symbol near '='\n",
            "4 scripts checked, 4 failed\n"));
}

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

TEST_F(CheckCommandTest, LooksOnlyAtScriptsAndDocumentsInFolders)
{
    write("s/a.lua", "");
    write("s/notes.txt", "=");
    write("s/lua", "=");
    write("s/a.lua.bak", "=");

    const Outcome outcome = run({"check", "s"});

    EXPECT_EQ(outcome, success("1 script checked\n"));
}

TEST_F(CheckCommandTest, TakesAFileOfAnyNameForAScript)
{
    write("start", "#!/usr/bin/env x\nx = = 1");

    const Outcome outcome = run({"check", "start"});

    EXPECT_EQ(
        outcome, failure("start:2: unexpected symbol near '='\n", "1 script checked, 1 failed\n"));
}

TEST_F(CheckCommandTest, NamesDocumentAndScript)
{
    write("a.tbscripts", R"({"scripts":[{"name":"p","type":"lua","sources":"\n\n="}]})");

    const Outcome outcome = run({"check", "a.tbscripts"});

    EXPECT_EQ(
        outcome,
        failure("a.tbscripts(p):3: unexpected symbol near '='\n", "1 script checked, 1 failed\n"));
}

TEST_F(CheckCommandTest, PassesOverOtherJsonInFolders)
{
    write("s/settings.json", R"({"name":"settings","speed":3})");
    write("s/numbers.json", "[1,2]");
    write("s/nothing.json", "null");

    const Outcome outcome = run({"check", "s"});

    EXPECT_EQ(outcome, success("0 scripts checked\n"));
}

TEST_F(CheckCommandTest, ReportsOtherJsonThatIsNamed)
{
    write("numbers.json", "[1]");
    write("nothing.json", "null");
    write("text.tbscripts", R"({"scripts":"none"})");

    const Outcome outcome = run({"check", "numbers.json", "nothing.json", "text.tbscripts"});

    EXPECT_EQ(
        outcome,
        trouble(
            "tbscripts: numbers.json: element 1: Script Declaration entry not an object.\n"
            "tbscripts: nothing.json: is neither a script declaration nor a list of them\n"
            "tbscripts: text.tbscripts: the member \"scripts\" is not an array\n",
            "0 scripts checked, 3 problems with files\n"));
}

TEST_F(CheckCommandTest, ReportsWhereADocumentIsNoJson)
{
    write("s/a.json", "{\"name\":\n  nonsense}");

    const Outcome outcome = run({"check", "s"});

    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(outcome.output, "0 scripts checked, 1 problem with files\n");
    EXPECT_THAT(outcome.errors, ::testing::StartsWith("s/a.json:2: "));
}

TEST_F(CheckCommandTest, ReportsADeclarationWithoutNameAndGoesOn)
{
    write("a.json", R"([{"sources":""},{"name":"p","type":"lua","sources":"="}])");

    const Outcome outcome = run({"check", "a.json"});

    EXPECT_EQ(
        outcome,
        trouble(
            "tbscripts: a.json: element 1: Script Declaration entry incomplete. "
            "There is no name field.\n"
            "a.json(p):1: unexpected symbol near '='\n",
            "1 script checked, 1 failed, 1 problem with files\n"));
}

TEST_F(CheckCommandTest, DoesNotTakeTheTypeOverFromAnotherDocument)
{
    write("a.json", R"({"name":"p","type":"lua","sources":""})");
    write("b.json", R"({"name":"p","sources":""})");
    write("c.json", R"({"name":"p","type":"Lua","sources":""})");

    const Outcome outcome = run({"check", "a.json", "b.json", "c.json"});

    EXPECT_EQ(
        outcome,
        failure(
            "b.json(p): the type is not \"lua\"\nc.json(p): the type is not \"lua\"\n",
            "3 scripts checked, 2 failed\n"));
}

TEST_F(CheckCommandTest, EmptyFolderHoldsNoScripts)
{
    std::filesystem::create_directory(pathOf("s"));

    const Outcome outcome = run({"check", "s"});

    EXPECT_EQ(outcome, success("0 scripts checked\n"));
}

TEST_F(CheckCommandTest, ReportsWhatCannotBeReadInAFolder)
{
    write("s/good.lua", "");
    ::mkfifo(pathOf("s/fifo.lua").c_str(), 0600);
    ::mkfifo(pathOf("s/fifo.json").c_str(), 0600);
    std::filesystem::create_symlink("nowhere", pathOf("s/link.lua"));

    const Outcome outcome = run({"check", "s"});

    EXPECT_EQ(
        outcome,
        trouble(
            "tbscripts: s/fifo.json: is not a regular file\n"
            "tbscripts: s/fifo.lua: is not a regular file\n"
            "tbscripts: s/link.lua: No such file or directory\n",
            "1 script checked, 3 problems with files\n"));
}

TEST_F(CheckCommandTest, FollowsLinksToFilesButNotToFolders)
{
    write("elsewhere/a.lua", "=");
    std::filesystem::create_directory(pathOf("s"));
    std::filesystem::create_symlink("../elsewhere/a.lua", pathOf("s/file.lua"));
    std::filesystem::create_directory_symlink("..", pathOf("s/circle.lua"));

    const Outcome outcome = run({"check", "s"});

    EXPECT_EQ(
        outcome,
        failure("s/file.lua:1: unexpected symbol near '='\n", "1 script checked, 1 failed\n"));
}

TEST_F(CheckCommandTest, KeepsOneFailureOnOneLine)
{
    write("a.lua", "x = 1 [[\x1b\n]] y");

    const Outcome outcome = run({"check", "a.lua"});

    EXPECT_EQ(
        outcome,
        failure(
            "a.lua:2: unexpected symbol near '[[\\x1b\\n]]'\n", "1 script checked, 1 failed\n"));
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

TEST_F(ManyFilesTest, AreCheckedWithoutAProgressLineInAPipe)
{
    const Outcome outcome = runInShell("\"$TOOL\" check s 2>&1 | cat");

    EXPECT_EQ(
        outcome,
        success("s/5/broken.lua:1: unexpected symbol near '='\n2001 scripts checked, 1 failed\n"));
}

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

} // namespace

} // namespace tool::test

#include "tools/ToolFixture.h"

#include <tbMemory/String.h>
#include <tbScripts/ProjectLoader.h>
#include <tbScripts/Script.h>
#include <tbScripts/ScriptManager.h>

#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

namespace tool::test
{

namespace
{

using ::testing::ElementsAre;

using PackCommandTest = ToolFixture;

// Every byte there is, and the ends of lines of every system.
std::string everyByte()
{
    std::string bytes = "\r\n\n\r";
    for (int byte = 0; byte < 256; ++byte)
        bytes += static_cast<char>(byte);
    return bytes + "\xef\xbb\xbf\xed\xa0\x80";
}

TEST_F(PackCommandTest, WritesAProjectsScriptListSortedByName)
{
    write("s/b.lua", "x = 1\n");
    write("s/a/c.lua", "");
    write("s/a.lua", "not lua at all");
    write("s/other.txt", "");

    const Outcome outcome = run({"pack", "s", "-o", "out.tbscripts"});

    EXPECT_EQ(outcome, success("out.tbscripts: 3 scripts packed\n"));
    EXPECT_EQ(read("out.tbscripts"), R"({
  "scripts": [
    {
      "name": "a.lua",
      "type": "lua",
      "sources": "not lua at all"
    },
    {
      "name": "a/c.lua",
      "type": "lua",
      "sources": ""
    },
    {
      "name": "b.lua",
      "type": "lua",
      "sources": "x = 1\n"
    }
  ]
}
)");
}

TEST_F(PackCommandTest, ListLoadsAsAProject)
{
    write("s/a.lua", "x = 1");
    write("s/d/b.lua", everyByte());
    run({"pack", "s/", "--output", "out.tbscripts"});

    const auto loaded =
        tbScripts::ProjectLoader::load({tbMemory::String(pathOf("out.tbscripts")), nullptr});

    ASSERT_EQ(loaded.scripts.size(), 2U);
    EXPECT_EQ(loaded.scripts[0]->getName(), "a.lua");
    EXPECT_TRUE(loaded.scripts[0]->getLastCompilationResult().success);
    EXPECT_EQ(loaded.scripts[1]->getName(), "d/b.lua");
    EXPECT_EQ(loaded.scripts[1]->getSources(), everyByte());
    tbScripts::ScriptManager::getInstanceRef().kill();
}

TEST_F(PackCommandTest, UnpackGivesEveryByteBack)
{
    write("s/all.lua", everyByte());
    write("s/d/empty.lua", "");
    write("s/d/\xff odd\n.lua", std::string(200000, '\0'));

    const Outcome packed = run({"pack", "s", "-o", "list.tbscripts"});
    const Outcome unpacked = run({"unpack", "list.tbscripts", "-o", "t"});

    EXPECT_EQ(packed, success("list.tbscripts: 3 scripts packed\n"));
    EXPECT_EQ(unpacked, success("t: 3 scripts unpacked\n"));
    EXPECT_EQ(read("t/all.lua"), everyByte());
    EXPECT_TRUE(exists("t/d/empty.lua"));
    EXPECT_EQ(read("t/d/empty.lua"), "");
    EXPECT_EQ(read("t/d/\xff odd\n.lua"), std::string(200000, '\0'));
}

TEST_F(PackCommandTest, PacksTwoThousandFilesAndUnpacksThem)
{
    for (int i = 0; i < 2000; ++i)
        write("s/" + std::to_string(i % 7) + '/' + std::to_string(i) + ".lua", std::to_string(i));

    run({"pack", "s", "-o", "list.tbscripts"});
    run({"unpack", "list.tbscripts", "-o", "t"});
    const Outcome compared = runInShell("diff -r s t");

    EXPECT_EQ(compared, success(""));
}

TEST_F(PackCommandTest, TakesAbsolutePaths)
{
    write("s/a.lua", "x = 1");

    run({"pack", pathOf("s"), "-o", pathOf("out.tbscripts")});

    EXPECT_EQ(
        run({"list", pathOf("out.tbscripts")}),
        success("NAME   TYPE  BYTES  COMPILED\na.lua  lua       5  yes\n"));
}

TEST_F(PackCommandTest, EmptyFolderGivesAnEmptyList)
{
    std::filesystem::create_directory(pathOf("s"));

    const Outcome outcome = run({"pack", "s", "-o", "out.tbscripts"});

    EXPECT_EQ(outcome, success("out.tbscripts: 0 scripts packed\n"));
    EXPECT_EQ(run({"list", "out.tbscripts"}), success("NAME  TYPE  BYTES  COMPILED\n"));
}

TEST_F(PackCommandTest, ReplacesAListAndLeavesNothingBesideIt)
{
    write("s/a.lua", "");
    write("out.tbscripts", "old");

    const Outcome outcome = run({"pack", "s", "-o", "out.tbscripts"});

    EXPECT_EQ(outcome, success("out.tbscripts: 1 script packed\n"));
    EXPECT_THAT(everything(), ElementsAre("out.tbscripts", "s", "s/a.lua"));
}

TEST_F(PackCommandTest, WritesNothingIfOneFileCannotBeRead)
{
    write("s/a.lua", "");
    ::mkfifo(pathOf("s/b.lua").c_str(), 0600);
    std::filesystem::create_symlink("nowhere", pathOf("s/c.lua"));
    write("out.tbscripts", "old");

    const Outcome outcome = run({"pack", "s", "-o", "out.tbscripts"});

    EXPECT_EQ(
        outcome,
        trouble("tbscripts: s/b.lua: is not a regular file\n"
                "tbscripts: s/c.lua: No such file or directory\n"));
    EXPECT_EQ(read("out.tbscripts"), "old");
}

TEST_F(PackCommandTest, RefusesWhatIsNoFolder)
{
    write("a.lua", "");

    const Outcome file = run({"pack", "a.lua", "-o", "out.tbscripts"});
    const Outcome missing = run({"pack", "missing", "-o", "out.tbscripts"});

    EXPECT_EQ(file, trouble("tbscripts: a.lua: is not a folder\n"));
    EXPECT_EQ(missing, trouble("tbscripts: missing: No such file or directory\n"));
    EXPECT_FALSE(exists("out.tbscripts"));
}

TEST_F(PackCommandTest, RefusesAnOutputThatWouldBeTakenForAScript)
{
    write("s/a.lua", "x = 1");

    const Outcome outcome = run({"pack", "s", "-o", "s/a.lua"});

    EXPECT_EQ(outcome, trouble("tbscripts: s/a.lua: the name of a list ends with .tbscripts\n"));
    EXPECT_EQ(read("s/a.lua"), "x = 1");
}

TEST_F(PackCommandTest, RefusesAnOutputThatCannotBeReadBack)
{
    write("s/a.lua", "");
    ::mkfifo(pathOf("fifo.tbscripts").c_str(), 0600);
    std::filesystem::create_directory(pathOf("folder.tbscripts"));

    const Outcome fifo = run({"pack", "s", "-o", "fifo.tbscripts"});
    const Outcome folder = run({"pack", "s", "-o", "folder.tbscripts"});

    EXPECT_EQ(fifo, trouble("tbscripts: fifo.tbscripts: is not a regular file\n"));
    EXPECT_EQ(folder, trouble("tbscripts: folder.tbscripts: is a folder, not a file\n"));
}

TEST_F(PackCommandTest, ReportsAFolderThatIsMissingForTheOutput)
{
    write("s/a.lua", "");

    const Outcome outcome = run({"pack", "s", "-o", "missing/out.tbscripts"});

    EXPECT_EQ(outcome, trouble("tbscripts: missing/out.tbscripts: No such file or directory\n"));
}

TEST_F(PackCommandTest, ReportsAFolderThatTakesNoFiles)
{
    if (::geteuid() == 0)
        GTEST_SKIP() << "no folder is closed to root";
    write("s/a.lua", "");
    ::mkdir(pathOf("closed").c_str(), 0500);

    const Outcome outcome = run({"pack", "s", "-o", "closed/out.tbscripts"});

    EXPECT_EQ(outcome, trouble("tbscripts: closed/out.tbscripts: Permission denied\n"));
}

TEST_F(PackCommandTest, ReportsAFileThatIsClosedToTheReader)
{
    if (::geteuid() == 0)
        GTEST_SKIP() << "no file is closed to root";
    write("s/a.lua", "");
    ::chmod(pathOf("s/a.lua").c_str(), 0);

    const Outcome outcome = run({"pack", "s", "-o", "out.tbscripts"});

    EXPECT_EQ(outcome, trouble("tbscripts: s/a.lua: Permission denied\n"));
}

TEST_F(PackCommandTest, NoticesAListThatTheDiskDidNotTake)
{
    write("s/a.lua", std::string(100000, 'x'));
    write("out.tbscripts", "old");

    // The shell's limit counts blocks of 512 bytes.
    const Outcome outcome =
        runInShell("trap '' XFSZ; ulimit -f 8; \"$TOOL\" pack s -o out.tbscripts");

    EXPECT_EQ(
        outcome,
        trouble("tbscripts: out.tbscripts: was written, but does not read back the same\n"));
    EXPECT_EQ(read("out.tbscripts"), "old");
}

} // namespace

} // namespace tool::test

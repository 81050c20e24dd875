#include "tools/ToolSteps.h"

#include <tbMemory/String.h>
#include <tbScripts/ProjectLoader.h>
#include <tbScripts/Script.h>
#include <tbScripts/ScriptManager.h>

#include <sys/stat.h>
#include <unistd.h>

namespace tool::test
{

namespace
{

using PackCommandTest = ToolFixture;

// Every byte there is, and the ends of lines of every system.
std::string everyByte()
{
    std::string bytes = "\r\n\n\r";
    for (int byte = 0; byte < 256; ++byte)
        bytes += static_cast<char>(byte);
    return bytes + "\xef\xbb\xbf\xed\xa0\x80";
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

const Facts<PackCommandTest> FACTS(
    "PackCommandTest",
    {
        {"WritesAProjectsScriptListSortedByName",
         {file("s/b.lua", "x = 1\n"),
          file("s/a/c.lua", ""),
          file("s/a.lua", "not lua at all"),
          file("s/other.txt", ""),
          gives({"pack", "s", "-o", "out.tbscripts"}, success("out.tbscripts: 3 scripts packed\n")),
          holds("out.tbscripts", R"({
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
)")}},
        {"EmptyFolderGivesAnEmptyList",
         {folder("s"),
          gives({"pack", "s", "-o", "out.tbscripts"}, success("out.tbscripts: 0 scripts packed\n")),
          gives({"list", "out.tbscripts"}, success("NAME  TYPE  BYTES  COMPILED\n"))}},
        {"ReplacesAListAndLeavesNothingBesideIt",
         {file("s/a.lua", ""),
          file("out.tbscripts", "old"),
          gives({"pack", "s", "-o", "out.tbscripts"}, success("out.tbscripts: 1 script packed\n")),
          holdsOnly({"out.tbscripts", "s", "s/a.lua"})}},
        {"WritesNothingIfOneFileCannotBeRead",
         {file("s/a.lua", ""),
          fifo("s/b.lua"),
          link("nowhere", "s/c.lua"),
          file("out.tbscripts", "old"),
          gives(
              {"pack", "s", "-o", "out.tbscripts"},
              trouble("tbscripts: s/b.lua: is not a regular file\n"
                      "tbscripts: s/c.lua: No such file or directory\n")),
          holds("out.tbscripts", "old")}},
        {"RefusesWhatIsNoFolder",
         {file("a.lua", ""),
          gives(
              {"pack", "a.lua", "-o", "out.tbscripts"},
              trouble("tbscripts: a.lua: is not a folder\n")),
          gives(
              {"pack", "missing", "-o", "out.tbscripts"},
              trouble("tbscripts: missing: No such file or directory\n")),
          isMissing("out.tbscripts")}},
        {"RefusesAnOutputThatWouldBeTakenForAScript",
         {file("s/a.lua", "x = 1"),
          gives(
              {"pack", "s", "-o", "s/a.lua"},
              trouble("tbscripts: s/a.lua: the name of a list ends with .tbscripts\n")),
          holds("s/a.lua", "x = 1")}},
        {"RefusesAnOutputThatCannotBeReadBack",
         {file("s/a.lua", ""),
          fifo("fifo.tbscripts"),
          folder("folder.tbscripts"),
          gives(
              {"pack", "s", "-o", "fifo.tbscripts"},
              trouble("tbscripts: fifo.tbscripts: is not a regular file\n")),
          gives(
              {"pack", "s", "-o", "folder.tbscripts"},
              trouble("tbscripts: folder.tbscripts: is a folder, not a file\n"))}},
        {"ReportsAFolderThatIsMissingForTheOutput",
         {file("s/a.lua", ""),
          gives(
              {"pack", "s", "-o", "missing/out.tbscripts"},
              trouble("tbscripts: missing/out.tbscripts: No such file or directory\n"))}},
    });

} // namespace

} // namespace tool::test

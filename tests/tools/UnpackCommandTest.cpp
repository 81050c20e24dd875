#include "support/RowName.h"
#include "support/Sanitizers.h"
#include "tools/ToolSteps.h"

#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

namespace tool::test
{

namespace
{

using tbScripts::test::OnRows;
using ::testing::ElementsAre;

using UnpackCommandTest = ToolFixture;

constexpr const char* TWO_SCRIPTS = R"({"scripts":[
    {"name":"a.lua","type":"lua","sources":"one"},
    {"name":"d/e/b.lua","type":"lua","sources":"two"}]})";

// A thousand names that pass two thousand folders each, none of which exists.
TEST_F(UnpackCommandTest, TakesLittleMemoryForManyDeepNames)
{
    if (tbScripts::test::IS_SANITIZED)
        GTEST_SKIP() << "the address space belongs to the sanitizer";
    std::string folders;
    for (int i = 0; i < 2000; ++i)
        folders += "/a";
    std::string list = "[";
    for (int i = 0; i < 1000; ++i)
        list += R"({"name":")" + std::to_string(i) + folders + R"(","sources":""},)";
    write("list.tbscripts", list + R"({"name":"last","sources":""}])");
    write("out/last", "mine");

    const Outcome outcome = runInShell("ulimit -v 1000000; \"$TOOL\" unpack list.tbscripts -o out");

    EXPECT_EQ(
        outcome,
        trouble("tbscripts: list.tbscripts: out/last: exists already; --force overwrites it\n"));
}

TEST_F(UnpackCommandTest, KeepsThePermissionsOfAFileThatItOverwrites)
{
    write("list.tbscripts", R"({"name":"a.lua","sources":"new"})");
    write("out/a.lua", "old");
    ::chmod(pathOf("out/a.lua").c_str(), 0750);

    run({"unpack", "-f", "list.tbscripts", "-o", "out"});

    EXPECT_EQ(read("out/a.lua"), "new");
    EXPECT_EQ(
        std::filesystem::status(pathOf("out/a.lua")).permissions(), std::filesystem::perms(0750));
}

TEST_F(UnpackCommandTest, LeavesAFileThatItOverwritesToItsOwner)
{
    if (::geteuid() != 0)
        GTEST_SKIP() << "giving files away takes more rights";
    write("list.tbscripts", R"({"name":"a.lua","sources":"new"})");
    write("out/a.lua", "old");
    ASSERT_EQ(::chown(pathOf("out/a.lua").c_str(), 4711, 4712), 0);

    run({"unpack", "-f", "list.tbscripts", "-o", "out"});

    struct stat status = {};
    ::stat(pathOf("out/a.lua").c_str(), &status);
    EXPECT_EQ(read("out/a.lua"), "new");
    EXPECT_EQ(status.st_uid, 4711U);
    EXPECT_EQ(status.st_gid, 4712U);
}

TEST_F(UnpackCommandTest, KeepsTheOldFileIfTheDiskDoesNotTakeTheNewOne)
{
    const std::string sources(100000, 'x');
    write("list.tbscripts", R"({"name":"a.lua","sources":")" + sources + R"("})");
    write("out/a.lua", "old");

    // The shell's limit counts blocks of 512 bytes.
    const Outcome outcome =
        runInShell("trap '' XFSZ; ulimit -f 8; \"$TOOL\" unpack -f list.tbscripts -o out");

    EXPECT_EQ(outcome, trouble("tbscripts: out/a.lua: File too large\n"));
    EXPECT_EQ(read("out/a.lua"), "old");
    EXPECT_THAT(everything(), ElementsAre("list.tbscripts", "out", "out/a.lua"));
}

TEST_F(UnpackCommandTest, ReportsAFolderThatTakesNoFiles)
{
    if (::geteuid() == 0)
        GTEST_SKIP() << "no folder is closed to root";
    write("list.tbscripts", R"({"name":"a.lua","sources":""})");
    ::mkdir(pathOf("closed").c_str(), 0500);

    const Outcome outcome = run({"unpack", "list.tbscripts", "-o", "closed"});

    EXPECT_EQ(outcome, trouble("tbscripts: closed/a.lua: Permission denied\n"));
}

struct HostileRow
{
    const char* row;
    const char* declarations; // beside a good one
    std::string errors;       // behind the document's name
};

using HostileNameTest = OnRows<ToolFixture, HostileRow>;

TEST_P(HostileNameTest, IsRefusedBeforeAnythingIsWritten)
{
    write(
        "list.tbscripts",
        R"([{"name":"good.lua","sources":""},)" + std::string(GetParam().declarations) + ']');

    const Outcome outcome = run({"unpack", "--force", "list.tbscripts", "-o", "out"});

    EXPECT_EQ(outcome, trouble("tbscripts: list.tbscripts: " + GetParam().errors + '\n'));
    EXPECT_THAT(everything(), ElementsAre("list.tbscripts"));
}

ROWS(
    HostileNameTest,
    {"Absolute",
     R"({"name":"/tmp/a.lua","sources":""})",
     "element 2, /tmp/a.lua: the name is an absolute path"},
    {"Up",
     R"({"name":"../a.lua","sources":""})",
     "element 2, ../a.lua: the name leads out of the folder"},
    {"UpInside",
     R"({"name":"a/../../b.lua","sources":""})",
     "element 2, a/../../b.lua: the name leads out of the folder"},
    {"Empty", R"({"name":"","sources":""})", "element 2, '': the name is empty"},
    {"Nul",
     R"({"name":"a.lua\u0000","sources":""})",
     "element 2, a.lua\\x00: the name holds a NUL"},
    {"OnlyDot", R"({"name":".","sources":""})", "element 2, .: the name is that of a folder"},
    {"EndsWithSlash",
     R"({"name":"a/","sources":""})",
     "element 2, a/: the name is that of a folder"},
    {"EscapeSequence",
     R"({"name":"/\u001b[2J","sources":""})",
     "element 2, /\\x1b[2J: the name is an absolute path"},
    {"SameName", R"({"name":"good.lua","sources":"x"})", "good.lua: is the same file as good.lua"},
    {"SameFile",
     R"({"name":".//good.lua","sources":"x"})",
     ".//good.lua: is the same file as good.lua"},
    {"BelowAFile",
     R"({"name":"good.lua/b.lua","sources":"x"})",
     "good.lua/b.lua: lies below the file good.lua"},
    {"FarBelowAFile",
     R"({"name":"good.lua.bak","sources":""},{"name":"good.lua/b/c.lua","sources":""})",
     "good.lua/b/c.lua: lies below the file good.lua"},
    {"NoObject", "7", "element 2: has no \"name\" or no \"sources\""},
    {"NoSources", R"({"name":"a.lua"})", "element 2: has no \"name\" or no \"sources\""},
    {"NumberForAName",
     R"({"name":3,"sources":""})",
     "element 2: has no \"name\" or no \"sources\""});

const Facts<UnpackCommandTest> FACTS(
    "UnpackCommandTest",
    {
        {"WritesOneFileForEachScript",
         {file("list.tbscripts", TWO_SCRIPTS),
          gives(
              {"unpack", "list.tbscripts", "-o", "new/folder"},
              success("new/folder: 2 scripts unpacked\n")),
          holds("new/folder/a.lua", "one"),
          holds("new/folder/d/e/b.lua", "two")}},
        {"TakesEveryKindOfDocument",
         {file("one.json", R"({"name":"enemy","sources":"one"})"),
          file("two.json", R"([{"name":"friend","type":"lua","sources":"two"}])"),
          runs({"unpack", "one.json", "-o", "out"}),
          runs({"unpack", "two.json", "-o", "out"}),
          holds("out/enemy", "one"),
          holds("out/friend", "two")}},
        {"TakesTheCurrentFolder",
         {file("list.tbscripts", TWO_SCRIPTS),
          gives({"unpack", "list.tbscripts", "-o", "."}, success(".: 2 scripts unpacked\n")),
          holds("d/e/b.lua", "two")}},
        {"RefusesToOverwriteAndWritesNothing",
         {file("list.tbscripts", TWO_SCRIPTS),
          file("out/d/e/b.lua", "mine"),
          gives(
              {"unpack", "list.tbscripts", "-o", "out"},
              trouble("tbscripts: list.tbscripts: out/d/e/b.lua: exists already; "
                      "--force overwrites it\n")),
          holds("out/d/e/b.lua", "mine"),
          isMissing("out/a.lua")}},
        {"OverwritesFilesIfForced",
         {file("list.tbscripts", TWO_SCRIPTS),
          file("out/a.lua", "mine"),
          file("out/other.lua", "kept"),
          gives(
              {"unpack", "--force", "list.tbscripts", "-o", "out"},
              success("out: 2 scripts unpacked\n")),
          holds("out/a.lua", "one"),
          holds("out/other.lua", "kept")}},
        {"DoesNotWriteThroughLinksEvenIfForced",
         {file("list.tbscripts", TWO_SCRIPTS),
          file("secret/e/keep", ""),
          file("target.lua", "mine"),
          folder("out"),
          link("../secret", "out/d"),
          link("../target.lua", "out/a.lua"),
          gives(
              {"unpack", "-f", "list.tbscripts", "-o", "out"},
              trouble("tbscripts: list.tbscripts: out/a.lua: is a link, which may lead out of the "
                      "folder\n"
                      "tbscripts: list.tbscripts: out/d: is a link, which may lead out of the "
                      "folder\n")),
          holds("target.lua", "mine"),
          isMissing("secret/e/b.lua")}},
        {"RefusesWhatIsInTheWayEvenIfForced",
         {file("list.tbscripts", TWO_SCRIPTS),
          file("out/d", "a file"),
          folder("out/a.lua"),
          gives(
              {"unpack", "-f", "list.tbscripts", "-o", "out"},
              trouble("tbscripts: list.tbscripts: out/a.lua: is a folder, not a file\n"
                      "tbscripts: list.tbscripts: out/d: is in the way of a folder\n"))}},
        {"ReportsOnceWhatIsInTheWayOfSeveralFiles",
         {file("list.tbscripts", R"([{"name":"d/e/a","sources":""},{"name":"d/b","sources":""}])"),
          file("secret/b", "mine"),
          folder("out"),
          link("../secret", "out/d"),
          gives(
              {"unpack", "list.tbscripts", "-o", "out"},
              trouble("tbscripts: list.tbscripts: out/d: is a link, which may lead out of the "
                      "folder\n"))}},
        {"RefusesAFifoInThePlaceOfAFile",
         {file("list.tbscripts", R"({"name":"a.lua","sources":""})"),
          folder("out"),
          fifo("out/a.lua"),
          gives(
              {"unpack", "-f", "list.tbscripts", "-o", "out"},
              trouble("tbscripts: list.tbscripts: out/a.lua: is not a regular file\n"))}},
        {"RefusesAFileForTheFolder",
         {file("list.tbscripts", TWO_SCRIPTS),
          file("out", "a file"),
          gives(
              {"unpack", "list.tbscripts", "-o", "out"},
              trouble("tbscripts: out: Not a directory\n"))}},
        {"ReportsADocumentThatCannotBeRead",
         {fifo("fifo.tbscripts"),
          gives(
              {"unpack", "missing.tbscripts", "-o", "out"},
              trouble("tbscripts: missing.tbscripts: No such file or directory\n")),
          gives(
              {"unpack", "fifo.tbscripts", "-o", "out"},
              trouble("tbscripts: fifo.tbscripts: is not a regular file\n")),
          holdsOnly({"fifo.tbscripts"})}},
    });

} // namespace

} // namespace tool::test

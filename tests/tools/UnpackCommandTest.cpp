#include "support/RowName.h"
#include "support/Sanitizers.h"
#include "tools/ToolFixture.h"

#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

namespace tool::test
{

namespace
{

using ::testing::ElementsAre;

using UnpackCommandTest = ToolFixture;

constexpr const char* TWO_SCRIPTS = R"({"scripts":[
    {"name":"a.lua","type":"lua","sources":"one"},
    {"name":"d/e/b.lua","type":"lua","sources":"two"}]})";

TEST_F(UnpackCommandTest, WritesOneFileForEachScript)
{
    write("list.tbscripts", TWO_SCRIPTS);

    const Outcome outcome = run({"unpack", "list.tbscripts", "-o", "new/folder"});

    EXPECT_EQ(outcome, success("new/folder: 2 scripts unpacked\n"));
    EXPECT_EQ(read("new/folder/a.lua"), "one");
    EXPECT_EQ(read("new/folder/d/e/b.lua"), "two");
}

TEST_F(UnpackCommandTest, TakesEveryKindOfDocument)
{
    write("one.json", R"({"name":"enemy","sources":"one"})");
    write("two.json", R"([{"name":"friend","type":"lua","sources":"two"}])");

    run({"unpack", "one.json", "-o", "out"});
    run({"unpack", "two.json", "-o", "out"});

    EXPECT_EQ(read("out/enemy"), "one");
    EXPECT_EQ(read("out/friend"), "two");
}

TEST_F(UnpackCommandTest, TakesTheCurrentFolder)
{
    write("list.tbscripts", TWO_SCRIPTS);

    const Outcome outcome = run({"unpack", "list.tbscripts", "-o", "."});

    EXPECT_EQ(outcome, success(".: 2 scripts unpacked\n"));
    EXPECT_EQ(read("d/e/b.lua"), "two");
}

TEST_F(UnpackCommandTest, RefusesToOverwriteAndWritesNothing)
{
    write("list.tbscripts", TWO_SCRIPTS);
    write("out/d/e/b.lua", "mine");

    const Outcome outcome = run({"unpack", "list.tbscripts", "-o", "out"});

    EXPECT_EQ(
        outcome,
        trouble("tbscripts: list.tbscripts: out/d/e/b.lua: exists already; "
                "--force overwrites it\n"));
    EXPECT_EQ(read("out/d/e/b.lua"), "mine");
    EXPECT_FALSE(exists("out/a.lua"));
}

TEST_F(UnpackCommandTest, OverwritesFilesIfForced)
{
    write("list.tbscripts", TWO_SCRIPTS);
    write("out/a.lua", "mine");
    write("out/other.lua", "kept");

    const Outcome outcome = run({"unpack", "--force", "list.tbscripts", "-o", "out"});

    EXPECT_EQ(outcome, success("out: 2 scripts unpacked\n"));
    EXPECT_EQ(read("out/a.lua"), "one");
    EXPECT_EQ(read("out/other.lua"), "kept");
}

TEST_F(UnpackCommandTest, DoesNotWriteThroughLinksEvenIfForced)
{
    write("list.tbscripts", TWO_SCRIPTS);
    write("secret/e/keep", "");
    write("target.lua", "mine");
    std::filesystem::create_directory(pathOf("out"));
    std::filesystem::create_directory_symlink("../secret", pathOf("out/d"));
    std::filesystem::create_symlink("../target.lua", pathOf("out/a.lua"));

    const Outcome outcome = run({"unpack", "-f", "list.tbscripts", "-o", "out"});

    EXPECT_EQ(
        outcome,
        trouble("tbscripts: list.tbscripts: out/a.lua: is a link, which may lead out of the "
                "folder\n"
                "tbscripts: list.tbscripts: out/d: is a link, which may lead out of the "
                "folder\n"));
    EXPECT_EQ(read("target.lua"), "mine");
    EXPECT_FALSE(exists("secret/e/b.lua"));
}

TEST_F(UnpackCommandTest, RefusesWhatIsInTheWayEvenIfForced)
{
    write("list.tbscripts", TWO_SCRIPTS);
    write("out/d", "a file");
    std::filesystem::create_directory(pathOf("out/a.lua"));

    const Outcome outcome = run({"unpack", "-f", "list.tbscripts", "-o", "out"});

    EXPECT_EQ(
        outcome,
        trouble("tbscripts: list.tbscripts: out/a.lua: is a folder, not a file\n"
                "tbscripts: list.tbscripts: out/d: is in the way of a folder\n"));
}

TEST_F(UnpackCommandTest, ReportsOnceWhatIsInTheWayOfSeveralFiles)
{
    write("list.tbscripts", R"([{"name":"d/e/a","sources":""},{"name":"d/b","sources":""}])");
    write("secret/b", "mine");
    std::filesystem::create_directory(pathOf("out"));
    std::filesystem::create_directory_symlink("../secret", pathOf("out/d"));

    const Outcome outcome = run({"unpack", "list.tbscripts", "-o", "out"});

    EXPECT_EQ(
        outcome,
        trouble("tbscripts: list.tbscripts: out/d: is a link, which may lead out of the "
                "folder\n"));
}

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

TEST_F(UnpackCommandTest, RefusesAFifoInThePlaceOfAFile)
{
    write("list.tbscripts", R"({"name":"a.lua","sources":""})");
    std::filesystem::create_directory(pathOf("out"));
    ::mkfifo(pathOf("out/a.lua").c_str(), 0600);

    const Outcome outcome = run({"unpack", "-f", "list.tbscripts", "-o", "out"});

    EXPECT_EQ(outcome, trouble("tbscripts: list.tbscripts: out/a.lua: is not a regular file\n"));
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

TEST_F(UnpackCommandTest, RefusesAFileForTheFolder)
{
    write("list.tbscripts", TWO_SCRIPTS);
    write("out", "a file");

    const Outcome outcome = run({"unpack", "list.tbscripts", "-o", "out"});

    EXPECT_EQ(outcome, trouble("tbscripts: out: Not a directory\n"));
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

TEST_F(UnpackCommandTest, ReportsADocumentThatCannotBeRead)
{
    ::mkfifo(pathOf("fifo.tbscripts").c_str(), 0600);

    const Outcome missing = run({"unpack", "missing.tbscripts", "-o", "out"});
    const Outcome fifo = run({"unpack", "fifo.tbscripts", "-o", "out"});

    EXPECT_EQ(missing, trouble("tbscripts: missing.tbscripts: No such file or directory\n"));
    EXPECT_EQ(fifo, trouble("tbscripts: fifo.tbscripts: is not a regular file\n"));
    EXPECT_THAT(everything(), ElementsAre("fifo.tbscripts"));
}

struct HostileRow
{
    const char* row;
    const char* declarations; // beside a good one
    std::string errors;       // behind the document's name
};

void PrintTo(const HostileRow& row, std::ostream* stream)
{
    *stream << row.row;
}

class HostileNameTest : public ToolFixture, public ::testing::WithParamInterface<HostileRow>
{
};

TEST_P(HostileNameTest, IsRefusedBeforeAnythingIsWritten)
{
    write(
        "list.tbscripts",
        R"([{"name":"good.lua","sources":""},)" + std::string(GetParam().declarations) + ']');

    const Outcome outcome = run({"unpack", "--force", "list.tbscripts", "-o", "out"});

    EXPECT_EQ(outcome, trouble("tbscripts: list.tbscripts: " + GetParam().errors + '\n'));
    EXPECT_THAT(everything(), ElementsAre("list.tbscripts"));
}

INSTANTIATE_TEST_SUITE_P(
    Names,
    HostileNameTest,
    ::testing::Values(
        HostileRow{
            "Absolute",
            R"({"name":"/tmp/a.lua","sources":""})",
            "element 2, /tmp/a.lua: the name is an absolute path"},
        HostileRow{
            "Up",
            R"({"name":"../a.lua","sources":""})",
            "element 2, ../a.lua: the name leads out of the folder"},
        HostileRow{
            "UpInside",
            R"({"name":"a/../../b.lua","sources":""})",
            "element 2, a/../../b.lua: the name leads out of the folder"},
        HostileRow{"Empty", R"({"name":"","sources":""})", "element 2, '': the name is empty"},
        HostileRow{
            "Nul",
            R"({"name":"a.lua\u0000","sources":""})",
            "element 2, a.lua\\x00: the name holds a NUL"},
        HostileRow{
            "OnlyDot",
            R"({"name":".","sources":""})",
            "element 2, .: the name is that of a folder"},
        HostileRow{
            "EndsWithSlash",
            R"({"name":"a/","sources":""})",
            "element 2, a/: the name is that of a folder"},
        HostileRow{
            "EscapeSequence",
            R"({"name":"/\u001b[2J","sources":""})",
            "element 2, /\\x1b[2J: the name is an absolute path"},
        HostileRow{
            "SameName",
            R"({"name":"good.lua","sources":"x"})",
            "good.lua: is the same file as good.lua"},
        HostileRow{
            "SameFile",
            R"({"name":".//good.lua","sources":"x"})",
            ".//good.lua: is the same file as good.lua"},
        HostileRow{
            "BelowAFile",
            R"({"name":"good.lua/b.lua","sources":"x"})",
            "good.lua/b.lua: lies below the file good.lua"},
        HostileRow{
            "FarBelowAFile",
            R"({"name":"good.lua.bak","sources":""},{"name":"good.lua/b/c.lua","sources":""})",
            "good.lua/b/c.lua: lies below the file good.lua"},
        HostileRow{"NoObject", "7", "element 2: has no \"name\" or no \"sources\""},
        HostileRow{
            "NoSources", R"({"name":"a.lua"})", "element 2: has no \"name\" or no \"sources\""},
        HostileRow{
            "NumberForAName",
            R"({"name":3,"sources":""})",
            "element 2: has no \"name\" or no \"sources\""}),
    tbScripts::test::RowName());

} // namespace

} // namespace tool::test

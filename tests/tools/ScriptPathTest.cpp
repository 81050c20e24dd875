#include "tbscripts/ScriptPath.h"

#include "support/RowName.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tool::test
{

namespace
{

using tbScripts::test::OnRows;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

struct PathRow
{
    const char* row;
    std::string name;
    std::string path;
    const char* trouble;
};

// "a/a/a/" and so on.
std::string folders(int count)
{
    std::string path;
    for (int i = 0; i < count; ++i)
        path += "a/";
    return path;
}

using ScriptPathTest = OnRows<::testing::Test, PathRow>;

TEST_P(ScriptPathTest, StaysInTheFolderOrIsRefused)
{
    const ScriptPath place = pathOfScript(GetParam().name);

    EXPECT_EQ(place.path, GetParam().path);
    EXPECT_EQ(place.trouble, GetParam().trouble);
}

ROWS(
    ScriptPathTest,
    {"Plain", "a.lua", "a.lua", ""},
    {"Nested", "a/b/c.lua", "a/b/c.lua", ""},
    {"NoEnding", "a", "a", ""},
    {"Dots", "a/.../..b", "a/.../..b", ""},
    {"Backslashes", "..\\a", "..\\a", ""},
    {"CurrentFolder", "./a/./b", "a/b", ""},
    {"DoubleSlash", "a//b", "a/b", ""},
    {"Empty", "", "", "the name is empty"},
    {"Nul", std::string("a\0b", 3), "", "the name holds a NUL"},
    {"Absolute", "/a", "", "the name is an absolute path"},
    {"OnlySlash", "/", "", "the name is an absolute path"},
    {"Up", "..", "", "the name leads out of the folder"},
    {"UpFirst", "../a", "", "the name leads out of the folder"},
    {"UpInside", "a/../b", "", "the name leads out of the folder"},
    {"UpLast", "a/..", "", "the name leads out of the folder"},
    {"TooLong", "a/" + std::string(256, 'b'), "", "the name is too long"},
    {"LongestWhole", folders(2047) + "b", folders(2047) + "b", ""},
    {"TooLongWhole", folders(2047) + "bc", "", "the name is too long"},
    {"OnlyDot", ".", "", "the name is that of a folder"},
    {"DotLast", "a/.", "", "the name is that of a folder"},
    {"SlashLast", "a/", "", "the name is that of a folder"});

TEST(FoldersOfPathTest, NameEveryFolderOnTheWay)
{
    EXPECT_THAT(foldersOf("a/b/c.lua"), ElementsAre("a", "a/b"));
}

TEST(FoldersOfPathTest, AreNoneForAPlainName)
{
    EXPECT_THAT(foldersOf("c.lua"), IsEmpty());
}

} // namespace

} // namespace tool::test

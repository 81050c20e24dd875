#include "tbscripts/ScriptPath.h"

#include "support/RowName.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tool::test
{

namespace
{

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

void PrintTo(const PathRow& row, std::ostream* stream)
{
    *stream << row.row;
}

class ScriptPathTest : public ::testing::TestWithParam<PathRow>
{
};

TEST_P(ScriptPathTest, StaysInTheFolderOrIsRefused)
{
    const ScriptPath place = pathOfScript(GetParam().name);

    EXPECT_EQ(place.path, GetParam().path);
    EXPECT_EQ(place.trouble, GetParam().trouble);
}

INSTANTIATE_TEST_SUITE_P(
    Names,
    ScriptPathTest,
    ::testing::Values(
        PathRow{"Plain", "a.lua", "a.lua", ""},
        PathRow{"Nested", "a/b/c.lua", "a/b/c.lua", ""},
        PathRow{"NoEnding", "a", "a", ""},
        PathRow{"Dots", "a/.../..b", "a/.../..b", ""},
        PathRow{"Backslashes", "..\\a", "..\\a", ""},
        PathRow{"CurrentFolder", "./a/./b", "a/b", ""},
        PathRow{"DoubleSlash", "a//b", "a/b", ""},
        PathRow{"Empty", "", "", "the name is empty"},
        PathRow{"Nul", std::string("a\0b", 3), "", "the name holds a NUL"},
        PathRow{"Absolute", "/a", "", "the name is an absolute path"},
        PathRow{"OnlySlash", "/", "", "the name is an absolute path"},
        PathRow{"Up", "..", "", "the name leads out of the folder"},
        PathRow{"UpFirst", "../a", "", "the name leads out of the folder"},
        PathRow{"UpInside", "a/../b", "", "the name leads out of the folder"},
        PathRow{"UpLast", "a/..", "", "the name leads out of the folder"},
        PathRow{"TooLong", "a/" + std::string(256, 'b'), "", "the name is too long"},
        PathRow{"LongestWhole", folders(2047) + "b", folders(2047) + "b", ""},
        PathRow{"TooLongWhole", folders(2047) + "bc", "", "the name is too long"},
        PathRow{"OnlyDot", ".", "", "the name is that of a folder"},
        PathRow{"DotLast", "a/.", "", "the name is that of a folder"},
        PathRow{"SlashLast", "a/", "", "the name is that of a folder"}),
    tbScripts::test::RowName());

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

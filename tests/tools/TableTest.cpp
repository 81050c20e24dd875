#include "tables/Table.h"

#include <gtest/gtest.h>

namespace tables::test
{

namespace
{

constexpr ALIGNMENT LEFT = ALIGNMENT::LEFT;
constexpr ALIGNMENT RIGHT = ALIGNMENT::RIGHT;

TEST(TableTest, AlignsColumnsByTheirLongestCell)
{
    const std::string text = layOut(
        {{"A", "SIZE", "REST"}, {"long", "1", "x"}, {"\xc3\xa9", "12345", ""}},
        {LEFT, RIGHT, LEFT});

    EXPECT_EQ(
        text,
        "A      SIZE  REST\n"
        "long      1  x\n"
        "\xc3\xa9     12345\n");
}

// On a terminal the bars stand below each other.
TEST(TableTest, AlignsWhatIsWideAndWhatHasNoWidth)
{
    const std::string text = layOut(
        {{"plain", "|"},
         {"\xe6\xbc\xa2\xe5\xad\x97", "|"}, // two Han characters
         {"e\xcc\x81t\xc3\xa9", "|"},       // an accent that combines, and one that does not
         {"\xed\x95\x9c", "|"},             // Hangul
         {"a\x1b\x7f", "|"}},
        {LEFT, LEFT});

    EXPECT_EQ(
        text,
        "plain  |\n"
        "\xe6\xbc\xa2\xe5\xad\x97   |\n"
        "e\xcc\x81t\xc3\xa9    |\n"
        "\xed\x95\x9c     |\n"
        "a\x1b\x7f      |\n");
}

TEST(TableTest, WithoutRowsIsEmpty)
{
    EXPECT_EQ(layOut({}, {LEFT}), "");
}

TEST(TableTest, IsAlignedAsMarkdownToo)
{
    const std::string text = layOutAsMarkdown(
        {{"name", "n"}, {"\xe6\xbc\xa2", "1"}, {"longer name", "1234"}}, {LEFT, RIGHT});

    EXPECT_EQ(
        text,
        "| name        |    n |\n"
        "| ----------- | ---: |\n"
        "| \xe6\xbc\xa2          |    1 |\n"
        "| longer name | 1234 |\n");
}

TEST(TableTest, HasRoomForTheRuleOfMarkdown)
{
    EXPECT_EQ(layOutAsMarkdown({{"a", "b"}}, {LEFT, RIGHT}), "| a   |   b |\n| --- | --: |\n");
}

} // namespace

} // namespace tables::test

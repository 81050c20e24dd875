#include "tables/CharacterWidth.h"

#include "support/RowName.h"

#include <gtest/gtest.h>

#include <clocale>
#include <ostream>
#include <string>

namespace tables::test
{

namespace
{

struct WidthRow
{
    const char* row;
    char32_t codePoint;
    std::size_t width;
};

void PrintTo(const WidthRow& row, std::ostream* stream)
{
    *stream << row.row;
}

class CharacterWidthTest : public ::testing::TestWithParam<WidthRow>
{
};

TEST_P(CharacterWidthTest, IsThatOfATerminal)
{
    EXPECT_EQ(widthOf(GetParam().codePoint), GetParam().width);
}

TEST_P(CharacterWidthTest, IsTheSameWithoutThePlatform)
{
    EXPECT_EQ(roughWidthOf(GetParam().codePoint), GetParam().width);
}

INSTANTIATE_TEST_SUITE_P(
    Characters,
    CharacterWidthTest,
    ::testing::Values(
        WidthRow{"Nul", 0x0, 0},
        WidthRow{"Escape", 0x1B, 0},
        WidthRow{"Blank", ' ', 1},
        WidthRow{"Latin", 'a', 1},
        WidthRow{"Delete", 0x7F, 0},
        WidthRow{"UpperControl", 0x9B, 0},
        WidthRow{"LatinWithAccent", 0xE9, 1},
        WidthRow{"CombiningAccent", 0x301, 0},
        WidthRow{"Cyrillic", 0x416, 1},
        WidthRow{"ZeroWidthJoiner", 0x200D, 0},
        WidthRow{"Euro", 0x20AC, 1},
        WidthRow{"Hiragana", 0x3042, 2},
        WidthRow{"Han", 0x6F22, 2},
        WidthRow{"Hangul", 0xD55C, 2},
        WidthRow{"FullWidthLatin", 0xFF21, 2},
        WidthRow{"HalfWidthKatakana", 0xFF71, 1},
        WidthRow{"Picture", 0x1F600, 2},
        WidthRow{"HanBeyondTheFirstPlane", 0x20000, 2}),
    tbScripts::test::RowName());

TEST(StringWidthTest, IsTheSumOfTheCharacters)
{
    EXPECT_EQ(widthOf(std::string_view("a\xc3\xa9\xe2\x82\xac")), 3U);
    EXPECT_EQ(widthOf(std::string_view("\xe6\xbc\xa2 e\xcc\x81")), 4U);
    EXPECT_EQ(widthOf(std::string_view("")), 0U);
}

TEST(StringWidthTest, CountsBytesThatAreNoCharacters)
{
    EXPECT_EQ(widthOf(std::string_view("\xff\xe6\xbc")), 3U);
}

TEST(StringWidthTest, LeavesTheLocaleOfTheProcess)
{
    const std::string before = std::setlocale(LC_ALL, nullptr);

    widthOf(std::string_view("\xe6\xbc\xa2"));

    EXPECT_EQ(std::setlocale(LC_ALL, nullptr), before);
    EXPECT_EQ(MB_CUR_MAX, 1U);
}

} // namespace

} // namespace tables::test

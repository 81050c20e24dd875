#include "tables/CharacterWidth.h"

#include "support/RowName.h"

#include <gtest/gtest.h>

#include <clocale>
#include <string>

namespace tables::test
{

namespace
{

using tbScripts::test::OnRows;

struct WidthRow
{
    const char* row;
    char32_t codePoint;
    std::size_t width;
};

using CharacterWidthTest = OnRows<::testing::Test, WidthRow>;

TEST_P(CharacterWidthTest, IsThatOfATerminal)
{
    EXPECT_EQ(widthOf(GetParam().codePoint), GetParam().width);
}

TEST_P(CharacterWidthTest, IsTheSameWithoutThePlatform)
{
    EXPECT_EQ(roughWidthOf(GetParam().codePoint), GetParam().width);
}

ROWS(
    CharacterWidthTest,
    {"Nul", 0x0, 0},
    {"Escape", 0x1B, 0},
    {"Blank", ' ', 1},
    {"Latin", 'a', 1},
    {"Delete", 0x7F, 0},
    {"UpperControl", 0x9B, 0},
    {"LatinWithAccent", 0xE9, 1},
    {"CombiningAccent", 0x301, 0},
    {"Cyrillic", 0x416, 1},
    {"ZeroWidthJoiner", 0x200D, 0},
    {"Euro", 0x20AC, 1},
    {"Hiragana", 0x3042, 2},
    {"Han", 0x6F22, 2},
    {"Hangul", 0xD55C, 2},
    {"FullWidthLatin", 0xFF21, 2},
    {"HalfWidthKatakana", 0xFF71, 1},
    {"Picture", 0x1F600, 2},
    {"HanBeyondTheFirstPlane", 0x20000, 2});

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

#include "tbscripts/Escaping.h"

#include "support/RowName.h"

#include <gtest/gtest.h>

namespace tool::test
{

namespace
{

using tbScripts::test::OnRows;

struct EscapingRow
{
    const char* row;
    std::string text;
    const char* escaped;
};

using EscapingTest = OnRows<::testing::Test, EscapingRow>;

TEST_P(EscapingTest, LeavesNothingThatATerminalWouldObey)
{
    EXPECT_EQ(escape(GetParam().text), GetParam().escaped);
}

ROWS(
    EscapingTest,
    {"Empty", "", ""},
    {"Plain", "a b~\\n", "a b~\\n"},
    {"Layout", "a\nb\rc\td", "a\\nb\\rc\\td"},
    {"Nul", std::string("a\0b", 3), "a\\x00b"},
    {"EscapeSequence", "\x1b[31mred", "\\x1b[31mred"},
    {"Delete", "\x7f", "\\x7f"},
    {"TwoBytes", "\xc3\xa9", "\xc3\xa9"},
    {"ThreeBytes", "\xe2\x82\xac", "\xe2\x82\xac"},
    {"FourBytes", "\xf0\x9f\x98\x80", "\xf0\x9f\x98\x80"},
    {"UpperControl", "\xc2\x9b", "\\xc2\\x9b"},
    {"FirstBehindUpperControls", "\xc2\xa0", "\xc2\xa0"},
    {"WritingDirection", "\xe2\x80\xaegpj", "\\xe2\\x80\\xaegpj"},
    {"LeftToRightMark", "\xe2\x80\x8e", "\\xe2\\x80\\x8e"},
    {"ArabicLetterMark", "\xd8\x9c", "\\xd8\\x9c"},
    {"DirectionalIsolate", "\xe2\x81\xa7", "\\xe2\\x81\\xa7"},
    {"LineSeparator", "\xe2\x80\xa8", "\\xe2\\x80\\xa8"},
    {"LoneContinuation", "a\x80z", "a\\x80z"},
    {"CutLetter", "\xe2\x82", "\\xe2\\x82"},
    {"LetterCutByAnother", "\xe2\x82z", "\\xe2\\x82z"},
    {"LongForm", "\xc0\xaf", "\\xc0\\xaf"},
    {"LongFormOfThreeBytes", "\xe0\x80\xaf", "\\xe0\\x80\\xaf"},
    {"Surrogate", "\xed\xa0\x80", "\\xed\\xa0\\x80"},
    {"BeyondTheLast", "\xf4\x90\x80\x80", "\\xf4\\x90\\x80\\x80"},
    {"NoForm", "\xff\xfe", "\\xff\\xfe"});

TEST(EscapingLayoutTest, KeepsLineFeedsAndTabsIfAsked)
{
    EXPECT_EQ(escape("a\n\tb\r\x1b", LAYOUT::KEPT), "a\n\tb\\r\\x1b");
}

} // namespace

} // namespace tool::test

#include "tbscripts/Escaping.h"

#include "support/RowName.h"

#include <gtest/gtest.h>

namespace tool::test
{

namespace
{

struct EscapingRow
{
    const char* row;
    std::string text;
    const char* escaped;
};

void PrintTo(const EscapingRow& row, std::ostream* stream)
{
    *stream << row.row;
}

class EscapingTest : public ::testing::TestWithParam<EscapingRow>
{
};

TEST_P(EscapingTest, LeavesNothingThatATerminalWouldObey)
{
    EXPECT_EQ(escape(GetParam().text), GetParam().escaped);
}

INSTANTIATE_TEST_SUITE_P(
    Texts,
    EscapingTest,
    ::testing::Values(
        EscapingRow{"Empty", "", ""},
        EscapingRow{"Plain", "a b~\\n", "a b~\\n"},
        EscapingRow{"Layout", "a\nb\rc\td", "a\\nb\\rc\\td"},
        EscapingRow{"Nul", std::string("a\0b", 3), "a\\x00b"},
        EscapingRow{"EscapeSequence", "\x1b[31mred", "\\x1b[31mred"},
        EscapingRow{"Delete", "\x7f", "\\x7f"},
        EscapingRow{"TwoBytes", "\xc3\xa9", "\xc3\xa9"},
        EscapingRow{"ThreeBytes", "\xe2\x82\xac", "\xe2\x82\xac"},
        EscapingRow{"FourBytes", "\xf0\x9f\x98\x80", "\xf0\x9f\x98\x80"},
        EscapingRow{"UpperControl", "\xc2\x9b", "\\xc2\\x9b"},
        EscapingRow{"FirstBehindUpperControls", "\xc2\xa0", "\xc2\xa0"},
        EscapingRow{"WritingDirection", "\xe2\x80\xaegpj", "\\xe2\\x80\\xaegpj"},
        EscapingRow{"LeftToRightMark", "\xe2\x80\x8e", "\\xe2\\x80\\x8e"},
        EscapingRow{"ArabicLetterMark", "\xd8\x9c", "\\xd8\\x9c"},
        EscapingRow{"DirectionalIsolate", "\xe2\x81\xa7", "\\xe2\\x81\\xa7"},
        EscapingRow{"LineSeparator", "\xe2\x80\xa8", "\\xe2\\x80\\xa8"},
        EscapingRow{"LoneContinuation", "a\x80z", "a\\x80z"},
        EscapingRow{"CutLetter", "\xe2\x82", "\\xe2\\x82"},
        EscapingRow{"LetterCutByAnother", "\xe2\x82z", "\\xe2\\x82z"},
        EscapingRow{"LongForm", "\xc0\xaf", "\\xc0\\xaf"},
        EscapingRow{"LongFormOfThreeBytes", "\xe0\x80\xaf", "\\xe0\\x80\\xaf"},
        EscapingRow{"Surrogate", "\xed\xa0\x80", "\\xed\\xa0\\x80"},
        EscapingRow{"BeyondTheLast", "\xf4\x90\x80\x80", "\\xf4\\x90\\x80\\x80"},
        EscapingRow{"NoForm", "\xff\xfe", "\\xff\\xfe"}),
    tbScripts::test::RowName());

TEST(EscapingLayoutTest, KeepsLineFeedsAndTabsIfAsked)
{
    EXPECT_EQ(escape("a\n\tb\r\x1b", LAYOUT::KEPT), "a\n\tb\\r\\x1b");
}

} // namespace

} // namespace tool::test

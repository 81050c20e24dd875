// What is said about a text that is no document, and where in it.

#include "support/RowName.h"

#include <tbExport/JsonExporter.h>

#include <gtest/gtest.h>

#include <ostream>
#include <string>

namespace
{

using namespace std::string_literals;
using tbExport::ExporterLoadResult;
using tbExport::JsonExporter;
using tbScripts::test::operator<<;
using tbScripts::test::RowName;

struct ErrorRow
{
    const char* row;
    std::string text;
    const char* error;
    const char* context;
};

class JsonErrorTest : public ::testing::TestWithParam<ErrorRow>
{
};

TEST_P(JsonErrorTest, IsDescribedWithItsPlace)
{
    const ExporterLoadResult result = JsonExporter::importIntoTree(GetParam().text);

    EXPECT_TRUE(result.hasFailed());
    EXPECT_EQ(result.getRoot(), nullptr);
    EXPECT_EQ(result.getError(), GetParam().error);
    EXPECT_EQ(result.getErrorContext(), GetParam().context);
}

INSTANTIATE_TEST_SUITE_P(
    Ends,
    JsonErrorTest,
    ::testing::Values(
        ErrorRow{"nothing", "", "line 1, column 1: incomplete JSON", ">>>"},
        ErrorRow{"blanks", "  ", "line 1, column 3: incomplete JSON", "  >>>"},
        ErrorRow{"lines", "\n\n  ", "line 3, column 3: incomplete JSON", "  >>>"},
        ErrorRow{"lastLineFeed", "[1,\n", "line 2, column 1: incomplete JSON", ">>>"},
        ErrorRow{"byteOrderMark", "\xEF\xBB\xBF", "line 1, column 1: incomplete JSON", ">>>"},
        ErrorRow{"openArray", "[1", "line 1, column 3: incomplete JSON", "[1>>>"},
        ErrorRow{"openObject", "{\"a\":", "line 1, column 6: incomplete JSON", "{\"a\":>>>"},
        ErrorRow{"openString", "\"abc", "line 1, column 5: incomplete JSON", "\"abc>>>"},
        ErrorRow{"openWord", "tru", "line 1, column 4: incomplete JSON", "tru>>>"},
        ErrorRow{"minus", "-", "line 1, column 2: incomplete JSON", "->>>"}),
    RowName());

INSTANTIATE_TEST_SUITE_P(
    Syntax,
    JsonErrorTest,
    ::testing::Values(
        ErrorRow{"word", "nulx", "line 1, column 1: syntax error", ">>>nulx"},
        ErrorRow{"trailingComma", "[1,]", "line 1, column 4: syntax error", "[1,>>>]"},
        ErrorRow{"missingComma", "[1 2]", "line 1, column 4: syntax error", "[1 >>>2]"},
        ErrorRow{"missingColon", "{\"a\" 1}", "line 1, column 6: syntax error", "{\"a\" >>>1}"},
        ErrorRow{"bareName", "{a:1}", "line 1, column 2: syntax error", "{>>>a:1}"},
        ErrorRow{"singleQuotes", "['a']", "line 1, column 2: syntax error", "[>>>'a']"},
        ErrorRow{"comment", "// x\n1", "line 1, column 1: syntax error", ">>>// x"},
        ErrorRow{"notANumber", "NaN", "line 1, column 1: syntax error", ">>>NaN"},
        ErrorRow{"infinity", "-Infinity", "line 1, column 2: syntax error", "->>>Infinity"},
        ErrorRow{"plus", "+1", "line 1, column 1: syntax error", ">>>+1"},
        ErrorRow{"noDigitBeforePoint", ".5", "line 1, column 1: syntax error", ">>>.5"},
        ErrorRow{"noDigitBehindPoint", "1.e5", "line 1, column 3: syntax error", "1.>>>e5"},
        ErrorRow{"leadingZero", "01", "line 1, column 2: extra data", "0>>>1"},
        ErrorRow{"hexadecimal", "0x10", "line 1, column 2: extra data", "0>>>x10"},
        ErrorRow{"secondRoot", "{} x", "line 1, column 4: extra data", "{} >>>x"},
        ErrorRow{"secondBracket", "[1]]", "line 1, column 4: extra data", "[1]>>>]"},
        ErrorRow{"otherByteOrder", "\xFF\xFE", "line 1, column 1: syntax error", ">>>\xFF\xFE"},
        ErrorRow{"halfByteOrderMark", "\xEF\xBB", "line 1, column 1: syntax error", ">>>\xEF\xBB"}),
    RowName());

INSTANTIATE_TEST_SUITE_P(
    Contents,
    JsonErrorTest,
    ::testing::Values(
        ErrorRow{"escape", R"("\x")", "line 1, column 3: syntax error", R"("\>>>x")"},
        ErrorRow{
            "hexDigit", R"("\u12G4")", "line 1, column 6: expected hex digit", R"("\u12>>>G4")"},
        ErrorRow{
            "loneLeadingSurrogate",
            R"("\ud800")",
            "line 1, column 8: syntax error",
            R"("\ud800>>>")"},
        ErrorRow{
            "loneTrailingSurrogate",
            R"("\udc00")",
            "line 1, column 8: illegal trailing surrogate",
            R"("\udc00>>>")"},
        ErrorRow{"lineFeedInString", "\"a\nb\"", "line 1, column 3: syntax error", "\"a>>>"},
        ErrorRow{"tabInString", "\"a\tb\"", "line 1, column 3: syntax error", "\"a>>> b\""},
        ErrorRow{"zeroInString", "\"a\0b\""s, "line 1, column 3: syntax error", "\"a>>> b\""},
        ErrorRow{"zeroAlone", "\0"s, "line 1, column 1: syntax error", ">>> "},
        ErrorRow{"zeroBehind", "[1]\0"s, "line 1, column 4: extra data", "[1]>>> "},
        ErrorRow{"tooLarge", "[1e999]", "line 1, column 7: exponent overflow", "[1e999>>>]"},
        ErrorRow{
            "justTooLarge",
            "1.7976931348623159e308",
            "line 1, column 23: exponent overflow",
            "1.7976931348623159e308>>>"},
        ErrorRow{
            "longExponent",
            "0e99999999999",
            "line 1, column 12: exponent overflow",
            "0e999999999>>>99"}),
    RowName());

INSTANTIATE_TEST_SUITE_P(
    Places,
    JsonErrorTest,
    ::testing::Values(
        ErrorRow{"firstLine", "[x,\n2]", "line 1, column 2: syntax error", "[>>>x,"},
        ErrorRow{"middleLine", "[1,\n  x,\n3]", "line 2, column 3: syntax error", "  >>>x,"},
        ErrorRow{"lastLine", "[1,\n2,\n x]", "line 3, column 2: syntax error", " >>>x]"},
        ErrorRow{
            "carriageReturns", "[1,\r\n2,\r\n x\r\n]", "line 3, column 2: syntax error", " >>>x"},
        ErrorRow{"carriageReturnAtThePlace", "\"a\r\n", "line 1, column 3: syntax error", "\"a>>>"},
        ErrorRow{"tabs", "{\n\t\t\"a\": x}", "line 2, column 8: syntax error", "  \"a\": >>>x}"},
        ErrorRow{
            "characters",
            "[\"\xC3\xA9\xE2\x82\xAC\", x]",
            "line 1, column 8: syntax error",
            "[\"\xC3\xA9\xE2\x82\xAC\", >>>x]"},
        ErrorRow{
            "behindAByteOrderMark", "\xEF\xBB\xBF[x]", "line 1, column 2: syntax error", "[>>>x]"},
        ErrorRow{
            "terminalSequence", "[\x1B[2J\x7F", "line 1, column 2: syntax error", "[>>> [2J "}),
    RowName());

INSTANTIATE_TEST_SUITE_P(
    LongLines,
    JsonErrorTest,
    ::testing::Values(
        ErrorRow{
            "fortyBefore",
            std::string(39, ' ') + "xy",
            "line 1, column 40: syntax error",
            "                                       >>>xy"},
        ErrorRow{
            "cutBefore",
            "[\"" + std::string(50, 'a') + "\" x]",
            "line 1, column 55: syntax error",
            "...aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa\" >>>x]"},
        ErrorRow{
            "cutBehind",
            "x" + std::string(60, 'b'),
            "line 1, column 1: syntax error",
            ">>>xbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbb..."},
        ErrorRow{
            "sixtyAreNotCut",
            "x" + std::string(59, 'b') + "\n",
            "line 1, column 1: syntax error",
            ">>>xbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbb"},
        ErrorRow{
            "cutOnBothSides",
            std::string(45, ' ') + "x" + std::string(45, 'b'),
            "line 1, column 46: syntax error",
            "...                                        >>>xbbbbbbbbbbbbbbbbbbb..."}),
    RowName());

std::string repeat(const std::string& text, int times)
{
    std::string repeated;
    for (int count = 0; count < times; ++count)
        repeated += text;
    return repeated;
}

TEST(JsonErrorContextTest, NullIsIncomplete)
{
    const ExporterLoadResult result = JsonExporter::importIntoTree(tbMemory::StringView());

    EXPECT_EQ(result.getError(), "line 1, column 1: incomplete JSON");
    EXPECT_EQ(result.getErrorContext(), ">>>");
}

TEST(JsonErrorContextTest, CharactersAreNotCutInTwo)
{
    const std::string euros = repeat("\xE2\x82\xAC", 40);

    const ExporterLoadResult result = JsonExporter::importIntoTree("\"" + euros + "\"x" + euros);

    EXPECT_EQ(result.getError(), "line 1, column 43: extra data");
    EXPECT_EQ(
        result.getErrorContext(),
        "..." + repeat("\xE2\x82\xAC", 13) + "\">>>x" + repeat("\xE2\x82\xAC", 6) + "...");
}

TEST(JsonErrorContextTest, BytesThatOnlyContinueCharactersDoNotMakeItLong)
{
    const std::string stray(1000, '\x80');

    const ExporterLoadResult result = JsonExporter::importIntoTree("\"" + stray + "\"x" + stray);

    EXPECT_EQ(result.getError(), "line 1, column 3: extra data");
    EXPECT_EQ(
        result.getErrorContext(),
        "..." + std::string(36, '\x80') + "\">>>x" + std::string(19, '\x80') + "...");
}

TEST(JsonErrorContextTest, NoByteOfATextShowsAsAControlCharacter)
{
    for (int byte = 0; byte < 256; ++byte)
    {
        const std::string text = "[" + std::string(1, static_cast<char>(byte)) + "~";

        const ExporterLoadResult result = JsonExporter::importIntoTree(text);

        ASSERT_TRUE(result.hasFailed()) << byte;
        for (const char shown : result.getErrorContext())
            EXPECT_TRUE(static_cast<unsigned char>(shown) >= 0x20 && shown != 0x7F) << byte;
    }
}

} // namespace

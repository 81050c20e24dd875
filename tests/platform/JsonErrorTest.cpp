// What is said about a text that is no document, and where in it.

#include "support/RowName.h"

#include <tbExport/JsonExporter.h>

#include <gtest/gtest.h>

#include <string>

namespace
{

using tbScripts::test::OnRows;

using namespace std::string_literals;
using tbExport::ExporterLoadResult;
using tbExport::JsonExporter;

struct ErrorRow
{
    const char* row;
    std::string text;
    const char* error;
    const char* context;
};

using JsonErrorTest = OnRows<::testing::Test, ErrorRow>;

TEST_P(JsonErrorTest, IsDescribedWithItsPlace)
{
    const ExporterLoadResult result = JsonExporter::importIntoTree(GetParam().text);

    EXPECT_TRUE(result.hasFailed());
    EXPECT_EQ(result.getRoot(), nullptr);
    EXPECT_EQ(result.getError(), GetParam().error);
    EXPECT_EQ(result.getErrorContext(), GetParam().context);
}

ROWS(
    JsonErrorTest,
    // Ends
    {"nothing", "", "line 1, column 1: incomplete JSON", ">>>"},
    {"blanks", "  ", "line 1, column 3: incomplete JSON", "  >>>"},
    {"lines", "\n\n  ", "line 3, column 3: incomplete JSON", "  >>>"},
    {"lastLineFeed", "[1,\n", "line 2, column 1: incomplete JSON", ">>>"},
    {"byteOrderMark", "\xEF\xBB\xBF", "line 1, column 1: incomplete JSON", ">>>"},
    {"openArray", "[1", "line 1, column 3: incomplete JSON", "[1>>>"},
    {"openObject", "{\"a\":", "line 1, column 6: incomplete JSON", "{\"a\":>>>"},
    {"openString", "\"abc", "line 1, column 5: incomplete JSON", "\"abc>>>"},
    {"openWord", "tru", "line 1, column 4: incomplete JSON", "tru>>>"},
    {"minus", "-", "line 1, column 2: incomplete JSON", "->>>"},
    // Syntax
    {"word", "nulx", "line 1, column 1: syntax error", ">>>nulx"},
    {"trailingComma", "[1,]", "line 1, column 4: syntax error", "[1,>>>]"},
    {"missingComma", "[1 2]", "line 1, column 4: syntax error", "[1 >>>2]"},
    {"missingColon", "{\"a\" 1}", "line 1, column 6: syntax error", "{\"a\" >>>1}"},
    {"bareName", "{a:1}", "line 1, column 2: syntax error", "{>>>a:1}"},
    {"singleQuotes", "['a']", "line 1, column 2: syntax error", "[>>>'a']"},
    {"comment", "// x\n1", "line 1, column 1: syntax error", ">>>// x"},
    {"notANumber", "NaN", "line 1, column 1: syntax error", ">>>NaN"},
    {"infinity", "-Infinity", "line 1, column 2: syntax error", "->>>Infinity"},
    {"plus", "+1", "line 1, column 1: syntax error", ">>>+1"},
    {"noDigitBeforePoint", ".5", "line 1, column 1: syntax error", ">>>.5"},
    {"noDigitBehindPoint", "1.e5", "line 1, column 3: syntax error", "1.>>>e5"},
    {"leadingZero", "01", "line 1, column 2: extra data", "0>>>1"},
    {"hexadecimal", "0x10", "line 1, column 2: extra data", "0>>>x10"},
    {"secondRoot", "{} x", "line 1, column 4: extra data", "{} >>>x"},
    {"secondBracket", "[1]]", "line 1, column 4: extra data", "[1]>>>]"},
    {"otherByteOrder", "\xFF\xFE", "line 1, column 1: syntax error", ">>>\xFF\xFE"},
    {"halfByteOrderMark", "\xEF\xBB", "line 1, column 1: syntax error", ">>>\xEF\xBB"},
    // Contents
    {"escape", R"("\x")", "line 1, column 3: syntax error", R"("\>>>x")"},
    {"hexDigit", R"("\u12G4")", "line 1, column 6: expected hex digit", R"("\u12>>>G4")"},
    {"loneLeadingSurrogate", R"("\ud800")", "line 1, column 8: syntax error", R"("\ud800>>>")"},
    {"loneTrailingSurrogate",
     R"("\udc00")",
     "line 1, column 8: illegal trailing surrogate",
     R"("\udc00>>>")"},
    {"lineFeedInString", "\"a\nb\"", "line 1, column 3: syntax error", "\"a>>>"},
    {"tabInString", "\"a\tb\"", "line 1, column 3: syntax error", "\"a>>> b\""},
    {"zeroInString", "\"a\0b\""s, "line 1, column 3: syntax error", "\"a>>> b\""},
    {"zeroAlone", "\0"s, "line 1, column 1: syntax error", ">>> "},
    {"zeroBehind", "[1]\0"s, "line 1, column 4: extra data", "[1]>>> "},
    {"tooLarge", "[1e999]", "line 1, column 7: exponent overflow", "[1e999>>>]"},
    {"justTooLarge",
     "1.7976931348623159e308",
     "line 1, column 23: exponent overflow",
     "1.7976931348623159e308>>>"},
    {"longExponent", "0e99999999999", "line 1, column 12: exponent overflow", "0e999999999>>>99"},
    // Places
    {"firstLine", "[x,\n2]", "line 1, column 2: syntax error", "[>>>x,"},
    {"middleLine", "[1,\n  x,\n3]", "line 2, column 3: syntax error", "  >>>x,"},
    {"lastLine", "[1,\n2,\n x]", "line 3, column 2: syntax error", " >>>x]"},
    {"carriageReturns", "[1,\r\n2,\r\n x\r\n]", "line 3, column 2: syntax error", " >>>x"},
    {"carriageReturnAtThePlace", "\"a\r\n", "line 1, column 3: syntax error", "\"a>>>"},
    {"tabs", "{\n\t\t\"a\": x}", "line 2, column 8: syntax error", "  \"a\": >>>x}"},
    {"characters",
     "[\"\xC3\xA9\xE2\x82\xAC\", x]",
     "line 1, column 8: syntax error",
     "[\"\xC3\xA9\xE2\x82\xAC\", >>>x]"},
    {"behindAByteOrderMark", "\xEF\xBB\xBF[x]", "line 1, column 2: syntax error", "[>>>x]"},
    {"terminalSequence", "[\x1B[2J\x7F", "line 1, column 2: syntax error", "[>>> [2J "},
    // LongLines
    {"fortyBefore",
     std::string(39, ' ') + "xy",
     "line 1, column 40: syntax error",
     "                                       >>>xy"},
    {"cutBefore",
     "[\"" + std::string(50, 'a') + "\" x]",
     "line 1, column 55: syntax error",
     "...aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa\" >>>x]"},
    {"cutBehind",
     "x" + std::string(60, 'b'),
     "line 1, column 1: syntax error",
     ">>>xbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbb..."},
    {"sixtyAreNotCut",
     "x" + std::string(59, 'b') + "\n",
     "line 1, column 1: syntax error",
     ">>>xbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbb"},
    {"cutOnBothSides",
     std::string(45, ' ') + "x" + std::string(45, 'b'),
     "line 1, column 46: syntax error",
     "...                                        >>>xbbbbbbbbbbbbbbbbbbb..."});

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

// Texts that nobody means well: they give an error or a tree, and never more than that.

#include "support/Sanitizers.h"

#include <tbExport/JsonExporter.h>
#include <tbMemory/String.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <string_view>

namespace
{

using tbExport::ExporterLoadResult;
using tbExport::JsonExporter;
using tbExport::Node;
using tbMemory::String;
using tbMemory::StringView;
using tbScripts::test::IS_SANITIZED;

// The address checker sees every step, and ten times fewer show as much.
constexpr std::size_t HUGE_SIZE = IS_SANITIZED ? 5'000'000 : 50'000'000;
const std::string AFTER_HUGE = std::to_string(HUGE_SIZE + 1);

/// Reads from a block that ends with the text, so that a sanitizer sees every step beyond it.
ExporterLoadResult readInItsOwnBlock(std::string_view text)
{
    const auto block = std::make_unique<char[]>(text.size());
    std::copy(text.begin(), text.end(), block.get());
    return JsonExporter::importIntoTree(StringView(block.get(), text.size()));
}

std::string nest(std::size_t levels, const std::string& open, const std::string& close)
{
    std::string text;
    for (std::size_t level = 0; level < levels; ++level)
        text += open;
    text += "1";
    for (std::size_t level = 0; level < levels; ++level)
        text += close;
    return text;
}

/// Each kind of token, in all its forms that matter.
std::string everything()
{
    return R"({"name": "a\u0041\ud83d\ude00\n\"", "list": [1, -2.5e+10, 0.001E-3, 123456789012345678901],)"
           "\r\n\t"
           R"("more": {"": null, "t": true, "f": false, "e": [], "o": {}}, "bytes": ")"
           "\xC3\xA9\xFF\x80\"}";
}

/// Fails unless the outcome is either a tree that prints and reads back, or an error with texts.
void expectAnErrorOrATree(const ExporterLoadResult& result)
{
    if (result.hasFailed())
    {
        EXPECT_EQ(result.getRoot(), nullptr);
        EXPECT_EQ(std::string_view(result.getError()).substr(0, 5), "line ");
        EXPECT_NE(std::string_view(result.getErrorContext()).find(">>>"), std::string_view::npos);
        return;
    }
    ASSERT_NE(result.getRoot(), nullptr);
    const String text = JsonExporter::exportTreeIntoString(result.getRoot());
    const ExporterLoadResult back = JsonExporter::importIntoTree(text);
    ASSERT_FALSE(back.hasFailed());
    EXPECT_EQ(JsonExporter::exportTreeIntoString(back.getRoot()), text);
}

TEST(JsonHostileTest, DocumentCutAnywhereIsAnError)
{
    const std::string text = everything();
    ASSERT_FALSE(readInItsOwnBlock(text).hasFailed());

    for (std::size_t size = 0; size < text.size(); ++size)
    {
        const ExporterLoadResult result = readInItsOwnBlock(text.substr(0, size));

        ASSERT_TRUE(result.hasFailed()) << size;
        expectAnErrorOrATree(result);
    }
}

TEST(JsonHostileTest, EveryByteAtEveryPlaceGivesAnErrorOrATree)
{
    const std::string text = everything();

    for (std::size_t place = 0; place < text.size(); ++place)
    {
        for (int byte = 0; byte < 256; ++byte)
        {
            std::string corrupted = text;
            corrupted[place] = static_cast<char>(byte);

            expectAnErrorOrATree(readInItsOwnBlock(corrupted));
            ASSERT_FALSE(HasFailure()) << place << " " << byte;
        }
    }
}

TEST(JsonHostileTest, ByteTakenOutAnywhereGivesAnErrorOrATree)
{
    const std::string text = everything();

    for (std::size_t place = 0; place < text.size(); ++place)
    {
        std::string shortened = text;
        shortened.erase(place, 1);

        expectAnErrorOrATree(readInItsOwnBlock(shortened));
        ASSERT_FALSE(HasFailure()) << place;
    }
}

TEST(JsonHostileTest, ArraysAndObjectsMayBe512LevelsDeep)
{
    EXPECT_FALSE(readInItsOwnBlock(nest(512, "[", "]")).hasFailed());
    EXPECT_FALSE(readInItsOwnBlock(nest(512, "{\"a\":\n", "}")).hasFailed());

    for (const std::string& text :
         {nest(513, "[", "]"), std::string(100'000, '['), std::string(513, '[')})
        EXPECT_EQ(readInItsOwnBlock(text).getError(), "line 1, column 513: too deep");
    EXPECT_EQ(
        readInItsOwnBlock(nest(100'000, "{\"\":", "}")).getError(),
        "line 1, column 2049: too deep");
    const ExporterLoadResult result = readInItsOwnBlock(nest(513, "{\"a\":\n", "}"));
    EXPECT_EQ(result.getError(), "line 513, column 1: too deep");
    EXPECT_EQ(result.getErrorContext(), ">>>{\"a\":");
}

TEST(JsonHostileTest, TreeDeeperThanDocumentsIsPrintedAndRefused)
{
    Node tree;
    Node* innermost = &tree;
    for (int level = 0; level < 150'000; ++level)
    {
        innermost->setArray();
        innermost = innermost->addElement();
        innermost->setObject();
        innermost = innermost->addMember("a");
    }

    const String text = JsonExporter::exportTreeIntoString(&tree);

    EXPECT_LT(text.size(), 50'000'000u);
    EXPECT_EQ(JsonExporter::importIntoTree(text).getError(), "line 513, column 70: too deep");
}

TEST(JsonHostileTest, MillionsOfDigitsAreTooLarge)
{
    const ExporterLoadResult result = readInItsOwnBlock(std::string(HUGE_SIZE, '9'));

    EXPECT_EQ(result.getError(), "line 1, column " + AFTER_HUGE + ": exponent overflow");
    EXPECT_EQ(result.getErrorContext(), "...9999999999999999999999999999999999999999>>>");
}

TEST(JsonHostileTest, MillionsOfDigitsBehindThePointAreANumber)
{
    const ExporterLoadResult result = readInItsOwnBlock("0." + std::string(HUGE_SIZE, '0') + "1");

    ASSERT_NE(result.getRoot(), nullptr);
    EXPECT_EQ(result.getRoot()->getNumber(), 0.0);
}

TEST(JsonHostileTest, DigitsOfAnExponentMayBeMillions)
{
    const ExporterLoadResult zeros = readInItsOwnBlock("1e" + std::string(HUGE_SIZE, '0') + "2");
    ASSERT_NE(zeros.getRoot(), nullptr);
    EXPECT_EQ(zeros.getRoot()->getNumber(), 100.0);

    const ExporterLoadResult nines = readInItsOwnBlock("1e" + std::string(HUGE_SIZE, '9'));
    EXPECT_EQ(nines.getError(), "line 1, column 12: exponent overflow");
}

TEST(JsonHostileTest, ErrorBehindMillionsOfLinesIsPlaced)
{
    const ExporterLoadResult result = readInItsOwnBlock(std::string(HUGE_SIZE, '\n') + "x");

    EXPECT_EQ(result.getError(), "line " + AFTER_HUGE + ", column 1: syntax error");
    EXPECT_EQ(result.getErrorContext(), ">>>x");
}

TEST(JsonHostileTest, StringWithoutEndIsIncomplete)
{
    const ExporterLoadResult result = readInItsOwnBlock("\"" + std::string(HUGE_SIZE, 'a'));

    EXPECT_EQ(
        result.getError(), "line 1, column " + std::to_string(HUGE_SIZE + 2) + ": incomplete JSON");
    EXPECT_EQ(result.getErrorContext(), "...aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa>>>");
}

TEST(JsonHostileTest, MemberRepeatedAMillionTimesIsOneMember)
{
    std::string text = "{";
    for (int count = 0; count < 1'000'000; ++count)
        text += "\"a\":1,";
    text += "\"a\":2}";

    const ExporterLoadResult result = readInItsOwnBlock(text);

    ASSERT_NE(result.getRoot(), nullptr);
    EXPECT_EQ(result.getRoot()->getSize(), 1u);
    EXPECT_EQ(result.getRoot()->getMember("a")->getNumber(), 2.0);
}

} // namespace

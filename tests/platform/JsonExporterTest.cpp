// Documents become trees.

#include <tbExport/Exportable.h>
#include <tbExport/ExporterLoadResult.h>
#include <tbExport/JsonExporter.h>
#include <tbMemory/String.h>

#include <gtest/gtest.h>

#include <string>
#include <type_traits>
#include <utility>

namespace
{

using tbExport::ExporterLoadResult;
using tbExport::JsonExporter;
using tbExport::Node;
using tbMemory::String;
using tbMemory::StringView;

/// The tree of a document that must be one.
Node read(StringView text)
{
    ExporterLoadResult result = JsonExporter::importIntoTree(text);
    EXPECT_FALSE(result.hasFailed()) << result.getError();
    EXPECT_EQ(result.getError(), "");
    EXPECT_EQ(result.getErrorContext(), "");
    return result.getRoot() == nullptr ? Node() : std::move(*result.getRoot());
}

TEST(JsonExporterTest, ReadsAValueOfEachKind)
{
    const Node root = read(R"([null, true, false, 7, "text", [], {}])");

    ASSERT_EQ(root.getSize(), 7u);
    EXPECT_TRUE(root.getElement(0)->isNull());
    EXPECT_TRUE(root.getElement(1)->getBool());
    EXPECT_TRUE(root.getElement(2)->isBool());
    EXPECT_FALSE(root.getElement(2)->getBool());
    EXPECT_EQ(root.getElement(3)->getNumber(), 7.0);
    EXPECT_EQ(root.getElement(4)->getString(), "text");
    EXPECT_TRUE(root.getElement(5)->isArray());
    EXPECT_EQ(root.getElement(5)->getSize(), 0u);
    EXPECT_TRUE(root.getElement(6)->isObject());
    EXPECT_EQ(root.getElement(6)->getSize(), 0u);
}

TEST(JsonExporterTest, RootMayBeOfAnyKind)
{
    EXPECT_TRUE(read("null").isNull());
    EXPECT_TRUE(read("true").getBool());
    EXPECT_EQ(read("-2.5").getNumber(), -2.5);
    EXPECT_EQ(read(R"("text")").getString(), "text");
    EXPECT_TRUE(read("[]").isArray());
    EXPECT_TRUE(read("{}").isObject());
}

TEST(JsonExporterTest, RootThatIsNullIsStillARoot)
{
    const ExporterLoadResult result = JsonExporter::importIntoTree("null");

    ASSERT_NE(result.getRoot(), nullptr);
    EXPECT_FALSE(result.hasFailed());
}

TEST(JsonExporterTest, BlanksOfAllKindsMayStandAround)
{
    const Node root = read(" \t\r\n{ \t\r\n\"a\" \t\r\n: \t\r\n1 \t\r\n} \t\r\n");

    ASSERT_NE(root.getMember("a"), nullptr);
    EXPECT_EQ(root.getMember("a")->getNumber(), 1.0);
}

TEST(JsonExporterTest, MembersKeepTheOrderOfTheDocument)
{
    const Node root = read(R"({"z": 1, "a": 2, "m": 3})");

    ASSERT_EQ(root.getSize(), 3u);
    EXPECT_EQ(root.getMemberName(0), "z");
    EXPECT_EQ(root.getMemberName(1), "a");
    EXPECT_EQ(root.getMemberName(2), "m");
}

TEST(JsonExporterTest, LastOfSeveralMembersWithOneNameTakesThePlaceOfTheFirst)
{
    const Node root = read(R"({"a": 1, "b": 2, "a": [3], "c": 4, "a": 5})");

    ASSERT_EQ(root.getSize(), 3u);
    EXPECT_EQ(root.getMemberName(0), "a");
    EXPECT_EQ(root.getMemberName(1), "b");
    EXPECT_EQ(root.getMemberName(2), "c");
    EXPECT_EQ(root.getMember("a")->getNumber(), 5.0);
}

// Small objects are searched one by one, large ones by hash: another way through the library.
TEST(JsonExporterTest, LastOfSeveralMembersCountsInALargeObjectToo)
{
    std::string text = R"({"a": "first")";
    for (int count = 0; count < 100; ++count)
        text += ", \"" + std::to_string(count) + "\": 0";
    text += R"(, "a": "last", "7": 8})";

    const Node root = read(text);

    ASSERT_EQ(root.getSize(), 101u);
    EXPECT_EQ(root.getMemberName(0), "a");
    EXPECT_EQ(root.getElement(0)->getString(), "last");
    EXPECT_EQ(root.getMemberName(8), "7");
    EXPECT_EQ(root.getElement(8)->getNumber(), 8.0);
    EXPECT_EQ(root.getMember("99")->getNumber(), 0.0);
}

TEST(JsonExporterTest, EscapesStandForTheirCharacters)
{
    const Node root = read(R"("\"\\\/\b\f\n\r\t\u0041\u00e9\u20AC\ud83d\uDE00\u0000.")");

    EXPECT_EQ(
        root.getString(),
        StringView("\"\\/\b\f\n\r\tA\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80\0.", 20));
}

TEST(JsonExporterTest, NamesAreReadAsStringsAre)
{
    const Node root = read(R"({"a\u0000\"b": 1, "": 2})");

    EXPECT_EQ(root.getMemberName(0), StringView("a\0\"b", 4));
    EXPECT_EQ(root.getMember(StringView("a\0\"b", 4))->getNumber(), 1.0);
    EXPECT_EQ(root.getMember("")->getNumber(), 2.0);
}

TEST(JsonExporterTest, BytesThatAreNoUtf8AreKept)
{
    const Node root = read("{\"\xFF\": \"\xC3(\x80\xED\xA0\x80\xFE\"}");

    EXPECT_EQ(root.getMemberName(0), "\xFF");
    EXPECT_EQ(root.getElement(0)->getString(), "\xC3(\x80\xED\xA0\x80\xFE");
}

TEST(JsonExporterTest, ByteOrderMarkInFrontIsSkippedAndNoZeroIsNeededBehind)
{
    EXPECT_EQ(read("\xEF\xBB\xBF[1]").getElement(0)->getNumber(), 1.0);
    EXPECT_EQ(read(StringView("123456", 3)).getNumber(), 123.0);
}

TEST(JsonExporterTest, TreeOutlivesTheText)
{
    std::string text = R"({"a name that needs storage of its own": "a text that does so as well"})";

    const Node root = read(text);
    text.assign(text.size(), 'x');

    EXPECT_EQ(root.getMemberName(0), "a name that needs storage of its own");
    EXPECT_EQ(root.getElement(0)->getString(), "a text that does so as well");
}

TEST(JsonExporterTest, TreeOfADocumentCanBeChanged)
{
    Node root = read(R"({"a": [1, 2], "b": {"c": 3}})");

    root.getMember("a")->addElement()->setString("more");
    root.getMember("b")->addMember("c")->setBool(true);
    root.addMember("d")->setNumber(4);

    EXPECT_EQ(root.getMember("a")->getElement(2)->getString(), "more");
    EXPECT_TRUE(root.getMember("b")->getMember("c")->getBool());
    EXPECT_EQ(root.getMember("d")->getNumber(), 4.0);
}

class Thing : public tbExport::Exportable
{
public:
    void exportClassToTree(Node* node) override
    {
        wasGivenAnEmptyObject = node->isObject() && node->getSize() == 0;
        node->addMember("name")->setString("thing");
    }

    void importClassFromTree(Node*) override {}

    bool wasGivenAnEmptyObject = false;
};

TEST(JsonExporterTest, ObjectWritesItselfIntoAFreshObjectNode)
{
    Thing thing;

    const String text = JsonExporter::exportObjectIntoString(&thing);

    EXPECT_TRUE(thing.wasGivenAnEmptyObject);
    EXPECT_EQ(text, "{\n  \"name\": \"thing\"\n}\n");
}

TEST(JsonExporterTest, NothingIsPrintedForNoTreeAndNoObject)
{
    EXPECT_EQ(JsonExporter::exportTreeIntoString(nullptr), "");
    EXPECT_EQ(JsonExporter::exportObjectIntoString(nullptr), "");
}

static_assert(std::is_nothrow_move_constructible_v<ExporterLoadResult>);
static_assert(std::is_nothrow_move_assignable_v<ExporterLoadResult>);
static_assert(!std::is_copy_constructible_v<ExporterLoadResult>);
static_assert(!std::is_copy_assignable_v<ExporterLoadResult>);

ExporterLoadResult makeLoaded(tbMemory::StringView text)
{
    Node root;
    root.setString(text);
    return ExporterLoadResult(std::move(root));
}

TEST(ExporterLoadResultTest, EmptyResultHasNoRootAndHasNotFailed)
{
    ExporterLoadResult result;

    EXPECT_EQ(result.getRoot(), nullptr);
    EXPECT_FALSE(result.hasFailed());
    EXPECT_EQ(result.getError(), "");
    EXPECT_EQ(result.getErrorContext(), "");
}

TEST(ExporterLoadResultTest, LoadedResultOwnsItsRoot)
{
    ExporterLoadResult result = makeLoaded("text");

    ASSERT_NE(result.getRoot(), nullptr);
    EXPECT_EQ(result.getRoot()->getString(), "text");
    EXPECT_FALSE(result.hasFailed());
    EXPECT_EQ(result.getError(), "");
    static_assert(std::is_same_v<decltype(std::as_const(result).getRoot()), const Node*>);
    EXPECT_EQ(std::as_const(result).getRoot(), result.getRoot());
}

TEST(ExporterLoadResultTest, FailedResultHasTwoTextsAndNoRoot)
{
    const ExporterLoadResult result("what", "where");

    EXPECT_EQ(result.getRoot(), nullptr);
    EXPECT_TRUE(result.hasFailed());
    EXPECT_EQ(result.getError(), "what");
    EXPECT_EQ(result.getErrorContext(), "where");
}

TEST(ExporterLoadResultTest, MoveHandsTheRootOverAtItsAddress)
{
    ExporterLoadResult source = makeLoaded("text");
    Node* root = source.getRoot();

    ExporterLoadResult target(std::move(source));

    EXPECT_EQ(target.getRoot(), root);
    EXPECT_EQ(source.getRoot(), nullptr); // NOLINT(bugprone-use-after-move): the point
}

TEST(ExporterLoadResultTest, MoveOfAFailureLeavesAnEmptyResult)
{
    ExporterLoadResult source("what", "where");
    ExporterLoadResult target = makeLoaded("text");

    target = std::move(source);

    EXPECT_TRUE(target.hasFailed());
    EXPECT_EQ(target.getRoot(), nullptr);
    EXPECT_EQ(target.getError(), "what");
    EXPECT_EQ(target.getErrorContext(), "where");
    EXPECT_FALSE(source.hasFailed()); // NOLINT(bugprone-use-after-move): the point
    EXPECT_EQ(source.getError(), "");
    EXPECT_EQ(source.getErrorContext(), "");
}

TEST(ExporterLoadResultTest, AssignmentOfALoadedResultEndsTheFailure)
{
    ExporterLoadResult target("what", "where");

    target = makeLoaded("text");

    EXPECT_FALSE(target.hasFailed());
    EXPECT_EQ(target.getError(), "");
    EXPECT_EQ(target.getErrorContext(), "");
    ASSERT_NE(target.getRoot(), nullptr);
    EXPECT_EQ(target.getRoot()->getString(), "text");
}

TEST(ExporterLoadResultTest, AssignmentToItselfChangesNothing)
{
    ExporterLoadResult result = makeLoaded("text");
    ExporterLoadResult& same = result;

    result = std::move(same);

    ASSERT_NE(result.getRoot(), nullptr);
    EXPECT_EQ(result.getRoot()->getString(), "text");
}

TEST(ExporterLoadResultTest, RootMayBeMovedOutToOutliveTheResult)
{
    Node kept;
    {
        ExporterLoadResult result = makeLoaded("text");
        kept = std::move(*result.getRoot());
    }

    EXPECT_EQ(kept.getString(), "text");
}

// Trees become documents: the printed text, byte by byte.

String printString(StringView text)
{
    Node node;
    node.setString(text);
    return JsonExporter::exportTreeIntoString(&node);
}

TEST(JsonPrinterTest, ValueAloneIsALineAndSoAreEmptyArraysAndObjects)
{
    Node node;
    EXPECT_EQ(JsonExporter::exportTreeIntoString(&node), "null\n");
    node.setBool(true);
    EXPECT_EQ(JsonExporter::exportTreeIntoString(&node), "true\n");
    node.setBool(false);
    EXPECT_EQ(JsonExporter::exportTreeIntoString(&node), "false\n");
    node.setNumber(7);
    EXPECT_EQ(JsonExporter::exportTreeIntoString(&node), "7\n");
    node.setString("text");
    EXPECT_EQ(JsonExporter::exportTreeIntoString(&node), "\"text\"\n");
    node.setArray();
    EXPECT_EQ(JsonExporter::exportTreeIntoString(&node), "[]\n");
    node.setObject();
    EXPECT_EQ(JsonExporter::exportTreeIntoString(&node), "{}\n");
}

TEST(JsonPrinterTest, ElementsAndMembersHaveALineEach)
{
    Node node;
    node.setObject();
    node.addMember("name")->setString("a");
    Node* list = node.addMember("list");
    list->setArray();
    list->addElement()->setNumber(1);
    list->addElement()->setArray();
    list->addElement()->setObject();
    list->getElement(2)->addMember("deep")->setNull();
    node.addMember("empty")->setObject();

    EXPECT_EQ(
        JsonExporter::exportTreeIntoString(&node),
        "{\n"
        "  \"name\": \"a\",\n"
        "  \"list\": [\n"
        "    1,\n"
        "    [],\n"
        "    {\n"
        "      \"deep\": null\n"
        "    }\n"
        "  ],\n"
        "  \"empty\": {}\n"
        "}\n");
}

TEST(JsonPrinterTest, MembersKeepTheOrderOfTheirAdding)
{
    Node node;
    node.setObject();
    node.addMember("z");
    node.addMember("a");
    node.addMember("z");

    EXPECT_EQ(JsonExporter::exportTreeIntoString(&node), "{\n  \"z\": null,\n  \"a\": null\n}\n");
}

// The bracket that begins an array must not be taken for one that ends a text.
TEST(JsonPrinterTest, TextsThatEndWithBracketsAreFollowedByCommas)
{
    Node node;
    node.setArray();
    node.addElement()->setString("[");
    node.addElement()->setString("{");
    node.addElement()->setNumber(1);

    EXPECT_EQ(JsonExporter::exportTreeIntoString(&node), "[\n  \"[\",\n  \"{\",\n  1\n]\n");
}

TEST(JsonPrinterTest, ControlCharactersQuotesAndBackslashesAreEscapedAndNothingElse)
{
    EXPECT_EQ(printString("\"\\\b\f\n\r\t"), "\"\\\"\\\\\\b\\f\\n\\r\\t\"\n");
    EXPECT_EQ(
        printString(StringView("\0\x01\x0B\x0E\x1F", 5)),
        R"("\u0000\u0001\u000b\u000e\u001f")"
        "\n");
    EXPECT_EQ(printString("/'<&\x7F\xC3\xA9\xE2\x80\xA8"), "\"/'<&\x7F\xC3\xA9\xE2\x80\xA8\"\n");
    for (int byte = 0x20; byte < 256; ++byte)
    {
        if (byte == '"' || byte == '\\')
            continue;
        const std::string text(3, static_cast<char>(byte));
        EXPECT_EQ(printString(text), "\"" + text + "\"\n") << byte;
    }
}

TEST(JsonPrinterTest, NamesAreEscapedAsStringsAreAndEmptyOnesAreQuotes)
{
    Node node;
    node.setObject();
    node.addMember(StringView("a\0\"\xFF", 4));
    node.addMember("")->setString("");

    EXPECT_EQ(
        JsonExporter::exportTreeIntoString(&node),
        "{\n  \"a\\u0000\\\"\xFF\": null,\n  \"\": \"\"\n}\n");
}

TEST(JsonPrinterTest, IndentationEndsAt32Levels)
{
    Node node;
    Node* innermost = &node;
    for (int level = 0; level < 34; ++level)
    {
        innermost->setArray();
        innermost = innermost->addElement();
    }
    innermost->setNumber(1);

    const std::string text = JsonExporter::exportTreeIntoString(&node).c_str();

    const std::string widest(64, ' ');
    EXPECT_NE(text.find("\n" + std::string(62, ' ') + "[\n"), std::string::npos);
    EXPECT_NE(
        text.find("\n" + widest + "[\n" + widest + "[\n" + widest + "1\n" + widest + "]\n"),
        std::string::npos);
    EXPECT_EQ(text.find(widest + " "), std::string::npos);
}

TEST(JsonPrinterTest, PartOfATreeIsPrintedAsADocumentOfItsOwn)
{
    Node node;
    node.setObject();
    Node* part = node.addMember("part");
    part->setArray();
    part->addElement()->setNumber(1);

    EXPECT_EQ(JsonExporter::exportTreeIntoString(part), "[\n  1\n]\n");
}

} // namespace

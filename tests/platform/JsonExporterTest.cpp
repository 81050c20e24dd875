// Documents become trees.

#include <tbExport/Exportable.h>
#include <tbExport/JsonExporter.h>
#include <tbMemory/String.h>

#include <gtest/gtest.h>

#include <string>
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

TEST(JsonExporterTest, ByteOrderMarkInFrontIsSkipped)
{
    const Node root = read("\xEF\xBB\xBF{\"a\": 1}");

    ASSERT_NE(root.getMember("a"), nullptr);
    EXPECT_EQ(root.getMember("a")->getNumber(), 1.0);
}

TEST(JsonExporterTest, TextNeedNotEndWithAZero)
{
    const Node root = read(StringView("123456", 3));

    EXPECT_EQ(root.getNumber(), 123.0);
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

} // namespace

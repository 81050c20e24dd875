// Trees become documents: the printed text, byte by byte.

#include <tbExport/JsonExporter.h>
#include <tbMemory/String.h>

#include <gtest/gtest.h>

#include <string>

namespace
{

using tbExport::JsonExporter;
using tbExport::Node;
using tbMemory::String;
using tbMemory::StringView;

String printString(StringView text)
{
    Node node;
    node.setString(text);
    return JsonExporter::exportTreeIntoString(&node);
}

TEST(JsonPrinterTest, ValueAloneIsALine)
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
}

TEST(JsonPrinterTest, EmptyArraysAndObjectsTakeNoLines)
{
    Node node;
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

TEST(JsonPrinterTest, ShortEscapesAreUsedWhereJsonHasThem)
{
    EXPECT_EQ(printString("\"\\\b\f\n\r\t"), "\"\\\"\\\\\\b\\f\\n\\r\\t\"\n");
}

TEST(JsonPrinterTest, OtherControlCharactersAreEscapedByNumber)
{
    EXPECT_EQ(
        printString(StringView("\0\x01\x0B\x0E\x1F", 5)),
        R"("\u0000\u0001\u000b\u000e\u001f")"
        "\n");
}

TEST(JsonPrinterTest, NothingElseIsEscaped)
{
    EXPECT_EQ(printString("/'<&\x7F\xC3\xA9\xE2\x80\xA8"), "\"/'<&\x7F\xC3\xA9\xE2\x80\xA8\"\n");
}

TEST(JsonPrinterTest, EveryByteFromBlankOnButTwoIsPrintedAsItIs)
{
    for (int byte = 0x20; byte < 256; ++byte)
    {
        if (byte == '"' || byte == '\\')
            continue;
        const std::string text(3, static_cast<char>(byte));

        EXPECT_EQ(printString(text), "\"" + text + "\"\n") << byte;
    }
}

TEST(JsonPrinterTest, NamesAreEscapedAsStringsAre)
{
    Node node;
    node.setObject();
    node.addMember(StringView("a\0\"\xFF", 4));

    EXPECT_EQ(JsonExporter::exportTreeIntoString(&node), "{\n  \"a\\u0000\\\"\xFF\": null\n}\n");
}

TEST(JsonPrinterTest, EmptyStringAndNameAreQuotes)
{
    Node node;
    node.setObject();
    node.addMember("")->setString("");

    EXPECT_EQ(JsonExporter::exportTreeIntoString(&node), "{\n  \"\": \"\"\n}\n");
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

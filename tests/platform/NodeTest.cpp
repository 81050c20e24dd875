#include <tbExport/Exportable.h>
#include <tbExport/Node.h>
#include <tbMemory/String.h>

#include <gtest/gtest.h>

#include <limits>
#include <new>
#include <string>
#include <type_traits>
#include <utility>

namespace
{

using tbExport::Node;
using tbMemory::String;
using tbMemory::StringView;

static_assert(std::is_nothrow_move_constructible_v<Node>);
static_assert(std::is_nothrow_move_assignable_v<Node>);
static_assert(std::is_abstract_v<tbExport::Exportable>);
static_assert(std::has_virtual_destructor_v<tbExport::Exportable>);

/// One letter per kind that the node says it is of.
std::string kindsOf(const Node& node)
{
    std::string kinds;
    kinds += node.isNull() ? "0" : "";
    kinds += node.isBool() ? "b" : "";
    kinds += node.isNumber() ? "n" : "";
    kinds += node.isString() ? "s" : "";
    kinds += node.isArray() ? "a" : "";
    kinds += node.isObject() ? "o" : "";
    return kinds;
}

TEST(NodeTest, IsOfExactlyOneKind)
{
    Node node;
    EXPECT_EQ(kindsOf(node), "0");

    node.setBool(true);
    EXPECT_EQ(kindsOf(node), "b");
    node.setNumber(1);
    EXPECT_EQ(kindsOf(node), "n");
    node.setString("");
    EXPECT_EQ(kindsOf(node), "s");
    node.setArray();
    EXPECT_EQ(kindsOf(node), "a");
    node.setObject();
    EXPECT_EQ(kindsOf(node), "o");
    node.setNull();
    EXPECT_EQ(kindsOf(node), "0");
}

TEST(NodeTest, GivesBackWhatWasSet)
{
    Node node;

    node.setBool(true);
    EXPECT_TRUE(node.getBool());
    node.setNumber(-0.5);
    EXPECT_EQ(node.getNumber(), -0.5);
    node.setNumber(std::numeric_limits<double>::infinity());
    EXPECT_EQ(node.getNumber(), std::numeric_limits<double>::infinity());
    node.setString("text");
    EXPECT_EQ(node.getString(), "text");
}

TEST(NodeTest, ReadingAnotherKindGivesTheNeutralValue)
{
    Node text;
    text.setString("1");
    Node yes;
    yes.setBool(true);

    EXPECT_FALSE(text.getBool());
    EXPECT_EQ(text.getNumber(), 0.0);
    EXPECT_EQ(yes.getNumber(), 0.0);
    EXPECT_TRUE(yes.getString().isNull());
    EXPECT_EQ(text.getSize(), 0u);
}

TEST(NodeTest, StringKeepsEveryByte)
{
    Node node;

    node.setString(StringView("a\0\xff\n", 4));

    EXPECT_EQ(node.getString(), StringView("a\0\xff\n", 4));
}

TEST(NodeTest, EmptyStringIsNotNull)
{
    Node node;

    node.setString(StringView());

    EXPECT_TRUE(node.isString());
    EXPECT_FALSE(node.getString().isNull());
}

TEST(NodeTest, StringMayComeFromTheNodeItself)
{
    Node node;
    node.setString("a text that has to be stored outside of the object itself");

    node.setString(StringView(node.getString().data() + 2, 4));

    EXPECT_EQ(node.getString(), "text");
}

TEST(NodeTest, StringMayComeFromANodeBelow)
{
    Node node;
    node.setArray();
    node.addElement()->setString("a text that has to be stored outside of the object itself");

    node.setString(node.getElement(0)->getString());

    EXPECT_EQ(node.getString(), "a text that has to be stored outside of the object itself");
}

TEST(NodeTest, MembersAreFoundByTheirWholeName)
{
    Node node;
    node.setObject();
    node.addMember("name")->setNumber(1);
    node.addMember(StringView("name\0", 5))->setNumber(2);
    node.addMember("")->setNumber(3);

    EXPECT_EQ(node.getMember("name")->getNumber(), 1);
    EXPECT_EQ(node.getMember(StringView("name\0", 5))->getNumber(), 2);
    EXPECT_EQ(node.getMember(StringView())->getNumber(), 3);
    EXPECT_EQ(node.getMember("Name"), nullptr);
    EXPECT_EQ(node.getMember("nam"), nullptr);
}

TEST(NodeTest, MembersKeepTheOrderOfTheirAdding)
{
    Node node;
    node.setObject();
    node.addMember("z");
    node.addMember("a")->setNumber(5);
    node.addMember("m");

    EXPECT_EQ(node.getSize(), 3u);
    EXPECT_EQ(node.getMemberName(0), "z");
    EXPECT_EQ(node.getMemberName(1), "a");
    EXPECT_EQ(node.getMemberName(2), "m");
    EXPECT_EQ(node.getElement(1)->getNumber(), 5);
    EXPECT_TRUE(node.getMemberName(3).isNull());
}

TEST(NodeTest, AddingAMemberAgainSetsItToNullInItsPlace)
{
    Node node;
    node.setObject();
    node.addMember("a")->setNumber(1);
    node.addMember("b")->setNumber(2);

    Node* again = node.addMember("a");

    EXPECT_EQ(again, node.getElement(0));
    EXPECT_TRUE(again->isNull());
    EXPECT_EQ(node.getSize(), 2u);
    EXPECT_EQ(node.getMemberName(0), "a");
}

TEST(NodeTest, ElementsAreFoundByTheirPlace)
{
    Node node;
    node.setArray();
    node.addElement()->setNumber(1);
    node.addElement()->setNumber(2);

    EXPECT_EQ(node.getSize(), 2u);
    EXPECT_EQ(node.getElement(1)->getNumber(), 2);
    EXPECT_EQ(node.getElement(2), nullptr);
    EXPECT_EQ(node.getElement(std::numeric_limits<std::size_t>::max()), nullptr);
    EXPECT_TRUE(node.getMemberName(0).isNull());
}

TEST(NodeTest, OnlyObjectsHaveMembersAndOnlyArraysTakeElements)
{
    Node array;
    array.setArray();
    Node object;
    object.setObject();
    Node number;
    number.setNumber(1);

    EXPECT_EQ(array.addMember("a"), nullptr);
    EXPECT_EQ(array.getMember("a"), nullptr);
    EXPECT_EQ(object.addElement(), nullptr);
    EXPECT_EQ(number.addMember("a"), nullptr);
    EXPECT_EQ(number.addElement(), nullptr);
    EXPECT_EQ(number.getElement(0), nullptr);
    EXPECT_EQ(number.getMember("a"), nullptr);
}

TEST(NodeTest, NodesFurtherDownKeepTheirAddressesWhenNodesAreAddedAbove)
{
    Node object;
    object.setObject();
    Node* array = object.addMember("array");
    array->setArray();
    Node* element = array->addElement();
    element->setString("text");

    for (int count = 0; count < 1000; ++count)
        object.addMember(std::to_string(count));

    EXPECT_EQ(object.getMember("array")->getElement(0), element);
    EXPECT_EQ(element->getString(), "text");
}

TEST(NodeTest, ChildrenKeepTheirContentWhenNodesAreAddedBesideThem)
{
    Node object;
    object.setObject();
    Node array;
    array.setArray();
    object.addMember("first")->setString("short");
    array.addElement()->setString("a text that has to be stored outside of the object itself");

    for (int count = 0; count < 1000; ++count)
    {
        object.addMember(std::to_string(count));
        array.addElement();
    }

    EXPECT_EQ(object.getMember("first")->getString(), "short");
    EXPECT_EQ(
        array.getElement(0)->getString(),
        "a text that has to be stored outside of the object itself");
}

TEST(NodeTest, NameMayComeFromANodeBelow)
{
    Node node;
    node.setObject();
    Node* text = node.addMember("text");
    text->setString("short"); // stored inside of a node, which moves

    for (int count = 0; count < 40; ++count)
    {
        node.addMember(node.getMember("text")->getString());
        node.addMember(std::to_string(count));
        node.getMember("text")->setString("short" + std::to_string(count));
    }

    EXPECT_EQ(node.getSize(), 81u);
    EXPECT_NE(node.getMember("short"), nullptr);
    EXPECT_NE(node.getMember("short38"), nullptr);
}

TEST(NodeTest, SettingTheKindAgainDropsTheContent)
{
    Node node;
    node.setArray();
    node.addElement();

    node.setArray();
    EXPECT_EQ(node.getSize(), 0u);

    node.setObject();
    node.addMember("a");
    node.setObject();
    EXPECT_EQ(node.getMember("a"), nullptr);
    EXPECT_EQ(node.getSize(), 0u);
}

TEST(NodeTest, ConstNodeGivesConstChildren)
{
    Node node;
    node.setObject();
    node.addMember("a");
    const Node& constNode = node;

    EXPECT_EQ(constNode.getMember("a"), node.getMember("a"));
    EXPECT_EQ(constNode.getElement(0), node.getElement(0));
    static_assert(std::is_same_v<decltype(constNode.getMember("a")), const Node*>);
}

TEST(NodeTest, CopyIsAWholeTreeOfItsOwn)
{
    Node node;
    node.setObject();
    node.addMember("b")->setBool(true);
    Node* array = node.addMember("a");
    array->setArray();
    array->addElement()->setString("text");

    const Node copy(node);
    array->getElement(0)->setString("changed");

    EXPECT_EQ(copy.getMemberName(0), "b");
    EXPECT_TRUE(copy.getMember("b")->getBool());
    EXPECT_EQ(copy.getMember("a")->getElement(0)->getString(), "text");
}

TEST(NodeTest, AssignmentFromAPartOfTheTreeIsSafe)
{
    Node node;
    node.setArray();
    node.addElement()->setString("part");
    Node moved = node;

    node = *node.getElement(0);
    moved = std::move(*moved.getElement(0));

    EXPECT_EQ(node.getString(), "part");
    EXPECT_EQ(moved.getString(), "part");
}

TEST(NodeTest, AssignmentOfTheTreeToAPartOfItIsSafe)
{
    Node node;
    node.setArray();
    node.addElement()->setNumber(1);

    *node.getElement(0) = node;

    EXPECT_EQ(node.getElement(0)->getElement(0)->getNumber(), 1);
}

TEST(NodeTest, AssignmentToItselfChangesNothing)
{
    Node node;
    node.setString("text");
    Node& same = node;

    node = same;
    node = std::move(same);

    EXPECT_EQ(node.getString(), "text");
}

TEST(NodeTest, MovedFromNodeIsNull)
{
    Node node;
    node.setArray();
    Node* element = node.addElement();

    const Node moved(std::move(node));

    EXPECT_TRUE(node.isNull()); // NOLINT(bugprone-use-after-move): the point
    EXPECT_EQ(node.getSize(), 0u);
    EXPECT_EQ(moved.getElement(0), element);
}

TEST(NodeTest, ManyMembersAreAddedAndFoundQuickly)
{
    Node node;
    node.setObject();

    for (int count = 0; count < 100'000; ++count)
        node.addMember(std::to_string(count))->setNumber(count);

    EXPECT_EQ(node.getMember("99999")->getNumber(), 99999);
}

// The size is refused before a byte is read.
TEST(NodeTest, TextsOfTwoGigabytesAreRefusedLikeOnesWithoutMemory)
{
    const StringView text("x", 0x7FFF'FFFF);
    Node node;
    node.setObject();
    node.addMember("a");

    EXPECT_THROW(node.addMember(text), std::bad_alloc);
    EXPECT_EQ(node.getMember(text), nullptr);
    EXPECT_EQ(node.getSize(), 1u);
    EXPECT_THROW(node.setString(text), std::bad_alloc);
    EXPECT_EQ(node.getSize(), 1u);
}

class NamedThing : public tbExport::Exportable
{
public:
    void exportClassToTree(Node* node) override { node->addMember("name")->setString(m_name); }

    void importClassFromTree(Node* node) override { m_name = node->getMember("name")->getString(); }

    String m_name;
};

TEST(ExportableTest, WritesItselfAndReadsItselfBack)
{
    NamedThing source;
    source.m_name = "thing";
    Node node;
    node.setObject();
    NamedThing target;

    static_cast<tbExport::Exportable&>(source).exportClassToTree(&node);
    static_cast<tbExport::Exportable&>(target).importClassFromTree(&node);

    EXPECT_EQ(target.m_name, "thing");
}

TEST(ExportableTest, DerivedClassesCanBeCopied)
{
    NamedThing source;
    source.m_name = "thing";

    NamedThing copy(source);
    copy = source;

    EXPECT_EQ(copy.m_name, "thing");
}

} // namespace

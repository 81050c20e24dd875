

#include "support/Sanitizers.h"

#include <tbExport/Exportable.h>
#include <tbExport/JsonExporter.h>
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

using tbExport::JsonExporter;
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

TEST(NodeTest, StringKeepsEveryByteAndIsNotNullIfItIsEmpty)
{
    Node node;

    node.setString(StringView("a\0\xff\n", 4));
    EXPECT_EQ(node.getString(), StringView("a\0\xff\n", 4));
    node.setString(StringView());

    EXPECT_TRUE(node.isString());
    EXPECT_FALSE(node.getString().isNull());
}

TEST(NodeTest, StringMayComeFromTheNodeItselfOrOneBelow)
{
    Node node;
    node.setArray();
    node.addElement()->setString("a text that has to be stored outside of the object itself");

    node.setString(node.getElement(0)->getString());
    EXPECT_EQ(node.getString(), "a text that has to be stored outside of the object itself");
    node.setString(StringView(node.getString().data() + 2, 4));

    EXPECT_EQ(node.getString(), "text");
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

TEST(NodeTest, AssignmentsBetweenATreeAndItsPartsAreSafe)
{
    Node node;
    node.setArray();
    node.addElement()->setString("part");
    Node copied = node;
    Node moved = node;

    copied = *copied.getElement(0);
    moved = std::move(*moved.getElement(0));
    *node.getElement(0) = node;
    Node& same = copied;
    copied = same;
    copied = std::move(same);

    EXPECT_EQ(copied.getString(), "part");
    EXPECT_EQ(moved.getString(), "part");
    EXPECT_EQ(node.getElement(0)->getElement(0)->getString(), "part");
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

// Trees of any depth, and what is done to them without a recursion that follows it.

// Far more levels than a C stack of 8 MiB has room for.
constexpr int DEEP = tbScripts::test::IS_SANITIZED ? 100'000 : 300'000; // frames are larger there

/// Turns `node` into arrays in arrays, with the number 7 in the innermost.
void nestArrays(Node& node, int levels)
{
    Node* innermost = &node;
    for (int level = 0; level < levels; ++level)
    {
        innermost->setArray();
        innermost = innermost->addElement();
    }
    innermost->setNumber(7);
}

/// Turns `node` into arrays and objects in turn, each of which holds the next one between others.
/// In every third object there are so many that members are found by hash.
void nestAmongOthers(Node& node, int levels)
{
    Node* innermost = &node;
    for (int level = 0; level < levels; ++level)
    {
        if (level % 2 == 0)
        {
            innermost->setArray();
            innermost->addElement()->setString("a text that needs storage of its own");
            innermost->addElement()->setArray();
            innermost->addElement();
            innermost->addElement()->setObject();
            innermost = innermost->getElement(2);
            continue;
        }
        innermost->setObject();
        innermost->addMember("a name that needs storage of its own")->setBool(true);
        innermost->addMember("next");
        for (int count = level % 3 == 0 ? 20 : 2; count > 0; --count)
            innermost->addMember(std::to_string(count))->setNumber(count);
        innermost = innermost->getMember("next");
    }
    innermost->setNumber(7);
}

double innermostNumber(const Node& node)
{
    const Node* innermost = &node;
    while (innermost->isArray())
        innermost = innermost->getElement(0);
    return innermost->getNumber();
}

TEST(NodeDepthTest, DeepArraysAreCopiedMovedAndDestroyed)
{
    Node node;
    nestArrays(node, DEEP);
    Node target;
    nestArrays(target, DEEP);

    const Node copy(node);
    EXPECT_EQ(innermostNumber(copy), 7);
    target = std::move(node);
    EXPECT_EQ(innermostNumber(target), 7);
    target.setNull();

    EXPECT_TRUE(target.isNull());
    EXPECT_EQ(target.getSize(), 0u);
}

TEST(NodeDepthTest, DeepTreeWithOthersBesideIsCopiedAndDestroyed)
{
    Node node;
    nestAmongOthers(node, 100'000);

    Node copy(node);
    node.setNull();

    EXPECT_EQ(copy.getElement(0)->getString(), "a text that needs storage of its own");
    EXPECT_EQ(copy.getElement(2)->getMemberName(0), "a name that needs storage of its own");
    EXPECT_EQ(copy.getElement(2)->getMember("next")->getSize(), 4u);
}

TEST(NodeDepthTest, TreeWithSeveralDeepBranchesIsCopiedAndDestroyed)
{
    Node node;
    node.setArray();
    for (int count = 0; count < 3; ++count)
        nestArrays(*node.addElement(), 100'000);
    node.addElement()->setObject();
    nestArrays(*node.getElement(3)->addMember("first"), 100'000);
    nestArrays(*node.getElement(3)->addMember("second"), 100'000);

    Node copy(node);
    node.setNull();

    EXPECT_EQ(innermostNumber(*copy.getElement(0)), 7);
    EXPECT_EQ(innermostNumber(*copy.getElement(2)), 7);
    EXPECT_EQ(innermostNumber(*copy.getElement(3)->getMember("second")), 7);
}

// Shallow trees are left to the library's own recursion; the border is somewhere among these.
TEST(NodeDepthTest, TreeOfAnyOfManyDepthsIsCopiedWhole)
{
    for (int levels = 0; levels < 200; ++levels)
    {
        Node node;
        nestAmongOthers(node, levels);

        const Node copy(node);

        ASSERT_EQ(
            JsonExporter::exportTreeIntoString(&copy), JsonExporter::exportTreeIntoString(&node))
            << levels;
    }
}

TEST(NodeDepthTest, InnermostPartMayReplaceTheDeepTree)
{
    Node node;
    nestArrays(node, DEEP);
    Node* innermost = &node;
    while (innermost->isArray())
        innermost = innermost->getElement(0);

    node = std::move(*innermost);

    EXPECT_EQ(node.getNumber(), 7);
}

TEST(NodeDepthTest, DeepTreeIsPrinted)
{
    Node node;
    nestArrays(node, DEEP);

    const std::string text = JsonExporter::exportTreeIntoString(&node).c_str();

    EXPECT_EQ(text.substr(0, 10), "[\n  [\n    ");
    EXPECT_EQ(text.substr(text.size() - 13), "\n    ]\n  ]\n]\n");
    EXPECT_NE(text.find(" 7\n"), std::string::npos);
    EXPECT_LT(text.size(), 50'000'000u);
}

} // namespace

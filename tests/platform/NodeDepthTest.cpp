// Trees of any depth, and what is done to them without a recursion that follows it.

#include <tbExport/JsonExporter.h>
#include <tbExport/Node.h>
#include <tbMemory/String.h>

#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace
{

using tbExport::JsonExporter;
using tbExport::Node;

// Far more levels than a C stack of 8 MiB has room for.
constexpr int DEEP = 300'000;

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

TEST(NodeDepthTest, DeepArraysAreDestroyed)
{
    Node node;
    nestArrays(node, DEEP);

    node.setNull();

    EXPECT_TRUE(node.isNull());
    EXPECT_EQ(node.getSize(), 0u);
}

TEST(NodeDepthTest, DeepArraysAreCopied)
{
    Node node;
    nestArrays(node, DEEP);

    const Node copy(node);

    EXPECT_EQ(innermostNumber(copy), 7);
}

TEST(NodeDepthTest, DeepArraysAreMoved)
{
    Node node;
    nestArrays(node, DEEP);
    Node target;
    nestArrays(target, DEEP);

    target = std::move(node);

    EXPECT_EQ(innermostNumber(target), 7);
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

// What was printed reads back as the same tree.

#include <tbExport/JsonExporter.h>
#include <tbMemory/String.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <random>
#include <string>

namespace
{

using tbExport::ExporterLoadResult;
using tbExport::JsonExporter;
using tbExport::Node;
using tbMemory::String;

// The standard fixes what this engine gives for a seed, but not what its distributions do with it.
using Random = std::mt19937_64;

std::string randomBytes(Random& random, std::size_t maxSize)
{
    std::string bytes(random() % (maxSize + 1), '\0');
    for (char& byte : bytes)
        byte = static_cast<char>(random() % 256);
    return bytes;
}

/// Any double but NaN and the infinities; half of them whole.
double randomNumber(Random& random)
{
    if (random() % 2 == 0)
        return static_cast<double>(static_cast<std::int64_t>(random()) >> (random() % 64));
    const std::uint64_t bits = random();
    double number = 0.0;
    std::memcpy(&number, &bits, sizeof number);
    return std::isfinite(number) ? number : 0.5;
}

// `levels` is how many more of them there may be below.
void fillRandomly(Node& node, Random& random, int levels)
{
    const std::uint64_t kinds = levels > 0 ? 6 : 4;
    switch (random() % kinds)
    {
    case 0:
        return;
    case 1:
        return node.setBool(random() % 2 == 0);
    case 2:
        return node.setNumber(randomNumber(random));
    case 3:
        return node.setString(randomBytes(random, 20));
    case 4:
        node.setArray();
        for (std::uint64_t count = random() % 5; count > 0; --count)
            fillRandomly(*node.addElement(), random, levels - 1);
        return;
    default:
        node.setObject();
        for (std::uint64_t count = random() % 5; count > 0; --count)
            fillRandomly(*node.addMember(randomBytes(random, 3)), random, levels - 1);
        return;
    }
}

bool areOfOneKind(const Node& left, const Node& right)
{
    return left.isNull() == right.isNull() && left.isBool() == right.isBool() &&
           left.isNumber() == right.isNumber() && left.isString() == right.isString() &&
           left.isArray() == right.isArray() && left.isObject() == right.isObject();
}

bool areEqual(const Node& left, const Node& right)
{
    if (!areOfOneKind(left, right) || left.getBool() != right.getBool() ||
        left.getNumber() != right.getNumber() ||
        std::signbit(left.getNumber()) != std::signbit(right.getNumber()) ||
        left.getString() != right.getString() || left.getSize() != right.getSize())
        return false;
    for (std::size_t index = 0; index < left.getSize(); ++index)
    {
        if (left.getMemberName(index) != right.getMemberName(index) ||
            !areEqual(*left.getElement(index), *right.getElement(index)))
            return false;
    }
    return true;
}

/// Prints a tree and reads the text.
Node sendThroughText(const Node& tree)
{
    ExporterLoadResult result =
        JsonExporter::importIntoTree(JsonExporter::exportTreeIntoString(&tree));
    EXPECT_FALSE(result.hasFailed()) << result.getError() << "\n" << result.getErrorContext();
    return result.hasFailed() ? Node() : std::move(*result.getRoot());
}

TEST(JsonRoundTripTest, EveryTextOfUpToTwoBytesReadsBack)
{
    Node texts;
    texts.setArray();
    texts.addElement()->setString("");
    for (int first = 0; first < 256; ++first)
    {
        const std::string one(1, static_cast<char>(first));
        texts.addElement()->setString(one);
        for (int second = 0; second < 256; ++second)
            texts.addElement()->setString(one + static_cast<char>(second));
    }

    const Node back = sendThroughText(texts);

    EXPECT_EQ(back.getSize(), 65793u);
    EXPECT_TRUE(areEqual(back, texts));
}

TEST(JsonRoundTripTest, EveryNameOfUpToTwoBytesReadsBack)
{
    Node names;
    names.setObject();
    names.addMember("");
    for (int first = 0; first < 256; ++first)
    {
        const std::string one(1, static_cast<char>(first));
        names.addMember(one);
        for (int second = 0; second < 256; ++second)
            names.addMember(one + static_cast<char>(second));
    }

    const Node back = sendThroughText(names);

    EXPECT_EQ(back.getSize(), 65793u);
    EXPECT_TRUE(areEqual(back, names));
}

TEST(JsonRoundTripTest, RandomBytesReadBack)
{
    Random random(1);
    Node texts;
    texts.setArray();
    for (int count = 0; count < 2000; ++count)
        texts.addElement()->setString(randomBytes(random, 300));

    EXPECT_TRUE(areEqual(sendThroughText(texts), texts));
}

TEST(JsonRoundTripTest, RandomNumbersReadBackExactly)
{
    Random random(2);
    Node numbers;
    numbers.setArray();
    for (int count = 0; count < 100'000; ++count)
        numbers.addElement()->setNumber(randomNumber(random));

    EXPECT_TRUE(areEqual(sendThroughText(numbers), numbers));
}

TEST(JsonRoundTripTest, RandomTreesReadBack)
{
    Random random(3);

    for (int count = 0; count < 20'000; ++count)
    {
        Node tree;
        fillRandomly(tree, random, 4);

        const Node back = sendThroughText(tree);

        ASSERT_TRUE(areEqual(back, tree)) << JsonExporter::exportTreeIntoString(&tree);
    }
}

TEST(JsonRoundTripTest, PrintedTextPrintsAgainAsItIs)
{
    Random random(4);

    for (int count = 0; count < 1000; ++count)
    {
        Node tree;
        fillRandomly(tree, random, 4);
        const String text = JsonExporter::exportTreeIntoString(&tree);

        const Node back = sendThroughText(tree);

        ASSERT_EQ(JsonExporter::exportTreeIntoString(&back), text);
    }
}

TEST(JsonRoundTripTest, TreeOf512LevelsReadsBack)
{
    Node tree;
    Node* innermost = &tree;
    for (int level = 0; level < 256; ++level)
    {
        innermost->setArray();
        innermost = innermost->addElement();
        innermost->setObject();
        innermost = innermost->addMember("a");
    }
    innermost->setString("innermost");

    EXPECT_TRUE(areEqual(sendThroughText(tree), tree));
}

// Proves that the comparison above can fail.
TEST(JsonRoundTripTest, ComparisonSeesEveryDifference)
{
    const char* const texts[] = {
        "null",
        "true",
        "false",
        "0",
        "-0.0",
        "1",
        "\"\"",
        "\"a\"",
        "[]",
        "[1]",
        "[2]",
        "[1,2]",
        "{}",
        "{\"a\":1}",
        "{\"b\":1}",
        "{\"a\":2}",
        "{\"a\":1,\"b\":1}",
        "{\"b\":1,\"a\":1}"};

    for (const char* left : texts)
    {
        for (const char* right : texts)
        {
            const ExporterLoadResult leftTree = JsonExporter::importIntoTree(left);
            const ExporterLoadResult rightTree = JsonExporter::importIntoTree(right);
            EXPECT_EQ(areEqual(*leftTree.getRoot(), *rightTree.getRoot()), left == right)
                << left << " and " << right;
        }
    }
}

} // namespace

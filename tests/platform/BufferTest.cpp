#include <tbMemory/Buffer.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <type_traits>
#include <utility>

namespace
{

using tbMemory::Buffer;
using ::testing::ElementsAre;

static_assert(std::is_nothrow_move_constructible_v<Buffer>);
static_assert(std::is_nothrow_move_assignable_v<Buffer>);

TEST(BufferTest, DefaultBufferHasNeitherBytesNorAddress)
{
    const Buffer buffer;

    EXPECT_TRUE(buffer.empty());
    EXPECT_EQ(buffer.data(), nullptr);
    EXPECT_EQ(buffer.begin(), buffer.end());
}

TEST(BufferTest, CopiesTheGivenBytes)
{
    const char source[] = {1, 0, 3};

    const Buffer buffer(source, sizeof(source));

    EXPECT_NE(static_cast<const void*>(buffer.data()), static_cast<const void*>(source));
    EXPECT_THAT(buffer, ElementsAre(1, 0, 3));
}

TEST(BufferTest, NullPointerGivesEmptyBuffer)
{
    EXPECT_TRUE(Buffer(nullptr, 7).empty());
}

TEST(BufferTest, ResizeAddsZerosAndCutsTheEnd)
{
    Buffer buffer("ab", 2);

    buffer.resize(4);
    EXPECT_THAT(buffer, ElementsAre('a', 'b', 0, 0));

    buffer.resize(1);
    EXPECT_THAT(buffer, ElementsAre('a'));
}

TEST(BufferTest, AppendAddsBytesAtTheEnd)
{
    Buffer buffer;

    buffer.append("ab", 2);
    buffer.append("c", 1);
    buffer.append("", 0);
    buffer.append(nullptr, 3);

    EXPECT_THAT(buffer, ElementsAre('a', 'b', 'c'));
}

TEST(BufferTest, AppendOfItsOwnBytesIsSafe)
{
    Buffer buffer("abcd", 4);

    buffer.append(buffer.data() + 1, 3);
    buffer.append(buffer.data(), buffer.size());

    EXPECT_EQ(buffer, Buffer("abcdbcdabcdbcd", 14));
}

TEST(BufferTest, BytesCanBeChangedInPlace)
{
    Buffer buffer("ab", 2);

    std::memset(buffer.data(), 7, buffer.size());

    EXPECT_THAT(buffer, ElementsAre(7, 7));
}

TEST(BufferTest, CopyHasBytesOfItsOwn)
{
    Buffer original("ab", 2);
    Buffer copy(original);

    copy.data()[0] = 'x';

    EXPECT_EQ(original, Buffer("ab", 2));
    EXPECT_EQ(copy, Buffer("xb", 2));
}

TEST(BufferTest, MovedFromBufferIsEmpty)
{
    Buffer constructedFrom("ab", 2);
    Buffer assignedFrom("cd", 2);

    Buffer target(std::move(constructedFrom));
    EXPECT_EQ(target, Buffer("ab", 2));
    target = std::move(assignedFrom);

    EXPECT_EQ(target, Buffer("cd", 2));
    EXPECT_TRUE(constructedFrom.empty()); // NOLINT(bugprone-use-after-move): the point
    EXPECT_TRUE(assignedFrom.empty());    // NOLINT(bugprone-use-after-move): the point
}

TEST(BufferTest, MoveToItselfKeepsTheBytes)
{
    Buffer buffer("ab", 2);
    Buffer& same = buffer;

    buffer = std::move(same);

    EXPECT_EQ(buffer, Buffer("ab", 2));
}

TEST(BufferTest, ClearRemovesAllBytes)
{
    Buffer buffer("ab", 2);

    buffer.clear();

    EXPECT_TRUE(buffer.empty());
    EXPECT_EQ(buffer, Buffer());
}

TEST(BufferTest, EqualityIsThatOfAllBytes)
{
    EXPECT_TRUE(Buffer("ab", 2) == Buffer("ab", 2));
    EXPECT_TRUE(Buffer("ab", 2) != Buffer("abc", 3));
    EXPECT_TRUE(Buffer("ab", 2) != Buffer("ac", 2));
}

} // namespace

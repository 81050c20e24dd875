

#include <tbMemory/Buffer.h>
#include <tbMemory/BufferCast.h>
#include <tbMemory/BufferView.h>
#include <tbMemory/String.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace
{

using tbMemory::Buffer;
using tbMemory::BufferCast;
using tbMemory::BufferView;
using tbMemory::String;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

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

static_assert(std::is_nothrow_move_constructible_v<BufferCast<String>>);

TEST(BufferCastTest, DefaultBufferIsEmpty)
{
    const BufferCast<String> buffer;

    EXPECT_TRUE(buffer.empty());
    EXPECT_EQ(buffer.getByteSize(), 0u);
    EXPECT_EQ(buffer.begin(), buffer.end());
}

TEST(BufferCastTest, EachAppendGrowsByExactlyOneElement)
{
    BufferCast<std::uint32_t> buffer;

    for (std::uint32_t count = 1; count <= 100; ++count)
    {
        buffer.append(count);
        ASSERT_EQ(buffer.size(), count);
        ASSERT_EQ(buffer.getByteSize(), count * 4);
    }
    EXPECT_EQ(buffer[99], 100u);
}

TEST(BufferCastTest, AppendOfItsOwnElementIsSafe)
{
    BufferCast<String> buffer;
    buffer.append("a text that has to be stored outside of the object itself");

    for (int round = 0; round < 10; ++round)
        buffer.append(buffer[0]);

    EXPECT_EQ(buffer[10], "a text that has to be stored outside of the object itself");
}

TEST(BufferCastTest, ElementsCanBeChangedInPlace)
{
    BufferCast<int> buffer;
    buffer.append(1);
    buffer.append(2);

    buffer[0] = 10;
    *(buffer.data() + 1) = 20;

    EXPECT_THAT(buffer, ElementsAre(10, 20));
}

TEST(BufferCastTest, CopyHasElementsOfItsOwn)
{
    BufferCast<int> original;
    original.append(1);

    BufferCast<int> copy(original);
    copy[0] = 2;

    EXPECT_THAT(original, ElementsAre(1));
}

TEST(BufferCastTest, MovedFromBufferIsEmpty)
{
    BufferCast<int> original;
    original.append(1);

    BufferCast<int> moved(std::move(original));
    BufferCast<int> assigned;
    assigned = std::move(moved);

    EXPECT_THAT(assigned, ElementsAre(1));
    EXPECT_TRUE(original.empty()); // NOLINT(bugprone-use-after-move): the point
    EXPECT_TRUE(moved.empty());    // NOLINT(bugprone-use-after-move): the point
}

TEST(BufferCastTest, IsAViewOfItsElements)
{
    BufferCast<int> buffer;
    buffer.append(1);
    buffer.append(2);

    BufferView<int> view = buffer;
    view[0] = 10;
    const BufferView<int> constView = std::as_const(buffer);

    EXPECT_EQ(view.data(), buffer.data());
    EXPECT_THAT(constView, ElementsAre(10, 2));
}

TEST(BufferCastTest, ClearDestroysAllElements)
{
    BufferCast<String> buffer;
    buffer.append("a");

    buffer.clear();

    EXPECT_TRUE(buffer.empty());
}

static_assert(sizeof(BufferView<std::string>) == 2 * sizeof(void*));
static_assert(!std::is_convertible_v<Buffer&, BufferView<int>>);

// Constness is deep.
using ConstView = const BufferView<int>;
static_assert(std::is_same_v<decltype(std::declval<ConstView&>()[0]), const int&>);
static_assert(std::is_same_v<decltype(std::declval<ConstView&>().data()), const int*>);
static_assert(std::is_same_v<decltype(std::declval<ConstView&>().begin()), const int*>);
static_assert(std::is_same_v<decltype(std::declval<BufferView<int>&>()[0]), int&>);
static_assert(std::is_same_v<decltype(std::declval<BufferView<int>&>().begin()), int*>);

int sumOf(const BufferView<int>& numbers)
{
    int sum = 0;
    for (const int number : numbers)
        sum += number;
    return sum;
}

std::string joined(const BufferView<std::string>& texts)
{
    std::string all;
    for (const std::string& text : texts)
        all += text;
    return all;
}

TEST(BufferViewTest, DefaultViewHasNeitherElementsNorAddress)
{
    const BufferView<int> view;

    EXPECT_TRUE(view.empty());
    EXPECT_EQ(view.data(), nullptr);
    EXPECT_THAT(view, IsEmpty());
}

TEST(BufferViewTest, NullPointerWithCountHasNoElements)
{
    int* none = nullptr;

    EXPECT_EQ(BufferView<int>(none, 3).size(), 0u);
}

TEST(BufferViewTest, BorrowsAnArray)
{
    int numbers[] = {1, 2, 3};

    const BufferView<int> view(numbers);

    EXPECT_EQ(view.data(), numbers);
    EXPECT_EQ(view.size(), 3u);
    EXPECT_EQ(view[2], 3);
}

TEST(BufferViewTest, ChangesElementsThroughANonConstView)
{
    int numbers[] = {1, 2, 3};
    BufferView<int> view(numbers);

    view[1] = 20;
    *view.begin() = 10;

    EXPECT_THAT(numbers, ElementsAre(10, 20, 3));
}

TEST(BufferViewTest, BorrowsConstElementsForConstUse)
{
    const int numbers[] = {1, 2, 3};
    const std::vector<int> vector = {4, 5};
    const std::array<int, 2> array = {6, 7};

    EXPECT_EQ(sumOf(numbers), 6);
    EXPECT_EQ(sumOf(vector), 9);
    EXPECT_EQ(sumOf(array), 13);
    EXPECT_EQ(sumOf(BufferView<int>(vector.data() + 1, 1)), 5);
}

TEST(BufferViewTest, BorrowsVectorsAndArraysWithoutCopying)
{
    std::vector<int> vector = {1, 2};
    std::array<int, 2> array = {3, 4};

    EXPECT_EQ(BufferView<int>(vector).data(), vector.data());
    EXPECT_EQ(BufferView<int>(array).data(), array.data());
    EXPECT_EQ(BufferView<int>(array).size(), 2u);
}

TEST(BufferViewTest, BracedListServesAsArgument)
{
    EXPECT_EQ(sumOf({1, 2, 3}), 6);
    EXPECT_EQ(sumOf({}), 0);
    EXPECT_EQ(joined({"a", "bc", std::string(40, 'd')}), "abc" + std::string(40, 'd'));
}

TEST(BufferViewTest, BorrowsTheBytesOfABuffer)
{
    Buffer buffer("ab", 2);
    const Buffer constBuffer("cd", 2);

    BufferView<unsigned char> view(buffer);
    view[0] = 'x';

    EXPECT_EQ(buffer, Buffer("xb", 2));
    EXPECT_EQ(BufferView<unsigned char>(constBuffer).data(), constBuffer.data());
}

TEST(BufferViewTest, CopyBorrowsTheSameElements)
{
    int numbers[] = {1, 2};
    const BufferView<int> view(numbers);

    const BufferView<int> copy(view);

    EXPECT_EQ(copy.data(), numbers);
    EXPECT_EQ(copy.size(), 2u);
}

} // namespace

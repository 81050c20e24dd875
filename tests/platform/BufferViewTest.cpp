#include <tbMemory/BufferView.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace
{

using tbMemory::Buffer;
using tbMemory::BufferView;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

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

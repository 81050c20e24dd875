#include <tbMemory/BufferCast.h>
#include <tbMemory/String.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <type_traits>
#include <utility>

namespace
{

using tbMemory::BufferCast;
using tbMemory::BufferView;
using tbMemory::String;
using ::testing::ElementsAre;

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

} // namespace

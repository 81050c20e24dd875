#include "core/Counted.h"

#include <gtest/gtest.h>

#include <utility>

namespace tbScripts::test
{

namespace
{

struct Held : HolderCount
{
    explicit Held(int& ends)
        : numberOfEnds(ends)
    {
    }

    static void destroy(Held* object) noexcept
    {
        ++object->numberOfEnds;
        delete object;
    }

    int& numberOfEnds;
};

} // namespace

class CountedTest : public ::testing::Test
{
protected:
    int m_ends = 0;
};

TEST_F(CountedTest, IsEmptyByDefault)
{
    const Counted<Held> nothing;
    const Counted<Held> copy(nothing); // NOLINT(performance-unnecessary-copy-initialization)

    EXPECT_FALSE(nothing);
    EXPECT_EQ(copy.get(), nullptr);
}

TEST_F(CountedTest, LastHolderDestroysTheObject)
{
    Counted<Held> first = makeCounted<Held>(m_ends);
    EXPECT_FALSE(first->isShared());
    {
        const Counted<Held> second(first);
        EXPECT_TRUE(first->isShared());
        EXPECT_EQ(second.get(), first.get());
    }

    EXPECT_FALSE(first->isShared());
    EXPECT_EQ(m_ends, 0);
    first = Counted<Held>();
    EXPECT_EQ(m_ends, 1);
}

TEST_F(CountedTest, MoveTransfersTheHold)
{
    Counted<Held> first = makeCounted<Held>(m_ends);
    const Counted<Held> second(std::move(first));

    EXPECT_FALSE(first); // NOLINT(bugprone-use-after-move): that is what is tested
    EXPECT_FALSE(second->isShared());
    EXPECT_EQ(m_ends, 0);
}

TEST_F(CountedTest, AssignmentLetsTheFormerObjectGo)
{
    int endsOfOther = 0;
    Counted<Held> held = makeCounted<Held>(m_ends);

    held = makeCounted<Held>(endsOfOther);

    EXPECT_EQ(m_ends, 1);
    EXPECT_EQ(endsOfOther, 0);
}

TEST_F(CountedTest, AssignmentToItselfChangesNothing)
{
    Counted<Held> held = makeCounted<Held>(m_ends);
    const Counted<Held>& same = held;

    held = same;

    EXPECT_FALSE(held->isShared());
    EXPECT_EQ(m_ends, 0);
}

TEST_F(CountedTest, PlainPointerKeepsTheHoldThatWasDetached)
{
    Held* const plain = makeCounted<Held>(m_ends).detach();
    Counted<Held>::hold(*plain);

    Counted<Held>::letGo(*plain);
    EXPECT_EQ(m_ends, 0);
    Counted<Held>::letGo(*plain);
    EXPECT_EQ(m_ends, 1);
}

} // namespace tbScripts::test

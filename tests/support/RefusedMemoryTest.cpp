#include "support/RefusedMemory.h"

#include <gtest/gtest.h>

#include <memory>
#include <new>

namespace tbScripts::test
{

namespace
{

// Returns whether there is memory for one more object.
bool isThereMemory()
{
    return std::unique_ptr<int>(new (std::nothrow) int(7)) != nullptr;
}

} // namespace

TEST(RefusedMemoryTest, RefusesTheChosenRequestAlone)
{
    const RefusedMemory memory(1, RefusedMemory::SPAN::ONE_REQUEST);

    EXPECT_TRUE(isThereMemory());
    EXPECT_FALSE(isThereMemory());
    EXPECT_TRUE(isThereMemory());
}

TEST(RefusedMemoryTest, RefusesAllThatFollowToo)
{
    const RefusedMemory memory(1, RefusedMemory::SPAN::ALL_FURTHER);

    EXPECT_TRUE(isThereMemory());
    EXPECT_FALSE(isThereMemory());
    EXPECT_FALSE(isThereMemory());
}

TEST(RefusedMemoryTest, TellsWhetherItHasRefused)
{
    const RefusedMemory memory(1, RefusedMemory::SPAN::ONE_REQUEST);

    isThereMemory();
    const bool hasRefusedTheFirst = memory.hasRefused();
    isThereMemory();

    EXPECT_FALSE(hasRefusedTheFirst);
    EXPECT_TRUE(memory.hasRefused());
}

TEST(RefusedMemoryTest, RefusedRequestThrows)
{
    bool hasThrown = false;
    try
    {
        const RefusedMemory memory(0, RefusedMemory::SPAN::ALL_FURTHER);
        const auto object = std::make_unique<int>(7);
    }
    catch (const std::bad_alloc&)
    {
        hasThrown = true;
    }

    EXPECT_TRUE(hasThrown);
}

TEST(RefusedMemoryTest, LetsEverythingPassAtItsEnd)
{
    {
        const RefusedMemory memory(0, RefusedMemory::SPAN::ALL_FURTHER);
    }

    EXPECT_TRUE(isThereMemory());
}

TEST(RefusedMemoryTest, CountsWhatIsNotGivenBackYet)
{
    const std::size_t before = RefusedMemory::countLivingBlocks();
    auto object = std::make_unique<int>(7);
    const std::size_t meanwhile = RefusedMemory::countLivingBlocks();

    object.reset();

    EXPECT_EQ(meanwhile, before + 1);
    EXPECT_EQ(RefusedMemory::countLivingBlocks(), before);
}

} // namespace tbScripts::test

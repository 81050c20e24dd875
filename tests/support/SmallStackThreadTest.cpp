#include "support/SmallStackThread.h"

#include <gtest/gtest.h>

#include <pthread.h>

namespace tbScripts::test
{

TEST(SmallStackThreadTest, RunsTheWorkOnAStackOfTheChosenSize)
{
    std::size_t stackSize = 0;

    runOnStackOf(
        1 << 20,
        [&stackSize]
        {
            pthread_attr_t attributes;
            ASSERT_EQ(pthread_getattr_np(pthread_self(), &attributes), 0);
            EXPECT_EQ(pthread_attr_getstacksize(&attributes, &stackSize), 0);
            EXPECT_EQ(pthread_attr_destroy(&attributes), 0);
        });

    EXPECT_EQ(stackSize, std::size_t{1} << 20);
}

TEST(SmallStackThreadTest, WaitsForTheEndOfTheWork)
{
    bool isDone = false;

    runOnStackOf(1 << 20, [&isDone] { isDone = true; });

    EXPECT_TRUE(isDone);
}

} // namespace tbScripts::test

#include "support/Farewell.h"

#include <gtest/gtest.h>

namespace tbScripts::test
{

TEST(FarewellTest, ActsOnceWhenTheLastCopyGoes)
{
    int acts = 0;
    std::shared_ptr<const void> first = makeFarewell([&acts] { ++acts; });
    std::shared_ptr<const void> second = first;

    first.reset();
    EXPECT_EQ(acts, 0);
    second.reset();

    EXPECT_EQ(acts, 1);
}

} // namespace tbScripts::test

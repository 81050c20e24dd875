#include "support/ScriptValueFixture.h"

namespace tbScripts::test
{

using ::testing::IsEmpty;

class ScriptValueFixtureTest : public ScriptValueFixture
{
};

TEST_F(ScriptValueFixtureTest, JoinsPartsInTheirOrder)
{
    EXPECT_EQ(joined({{1, 2}, {}, {3}}), (Bytes{1, 2, 3}));
}

TEST_F(ScriptValueFixtureTest, KnowsTheBytesOfAPointer)
{
    EXPECT_EQ(bytesOf(nullptr), (Bytes{0, 0, 0, 0, 0, 0, 0, 0}));
    EXPECT_NE(bytesOf(this), bytesOf(nullptr));
}

TEST_F(ScriptValueFixtureTest, RefersToValuesAndToFunctions)
{
    EXPECT_EQ(refer("1").getType(), PARAM_TYPE_SCRIPT_OBJECT);
    EXPECT_EQ(refer("print").getType(), PARAM_TYPE_SCRIPT_FUNCTION);
    EXPECT_EQ(refer("nil").getInterpreterReference(), nullptr);
}

TEST_F(ScriptValueFixtureTest, TellsWhatHolds)
{
    EXPECT_TRUE(holds("1 == 1"));
    EXPECT_FALSE(holds("1 == 2"));
    EXPECT_FALSE(holds("nil"));
}

TEST_F(ScriptValueFixtureTest, ForgetsWhatWasReadBefore)
{
    EXPECT_TRUE(read({'b', 1, 0, 0}));
    EXPECT_TRUE(holds("read"));

    EXPECT_FALSE(read({}));

    EXPECT_TRUE(holds("read == nil"));
}

} // namespace tbScripts::test

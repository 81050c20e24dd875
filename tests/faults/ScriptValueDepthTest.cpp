// Values that nest deeper than the C stack and the interpreter's stack reach.

#include "support/ScriptValueFixture.h"
#include "support/SmallStackThread.h"

#include <string>

namespace tbScripts::test
{

namespace
{

constexpr int DEPTHS[] = {1, 2, 62, 63, 64, 65, 66, 127, 128, 129, 1000, 10000, 100000};

// Tables in tables, each with an entry before and one after the next: `depth` of them.
std::string nested(int depth)
{
    return "(function() local v = {} local t = v for i = 2, " + std::to_string(depth) +
           " do t[1] = i t[2] = {} t[3] = 'after' t = t[2] end t[1] = 'last' return v end)()";
}

} // namespace

class ScriptValueDepthTest : public ScriptValueFixture, public ::testing::WithParamInterface<int>
{
protected:
    // Returns whether `read` is what `nested` makes.
    bool isNested()
    {
        return holds(
            "(function() local t, depth = read, 1"
            " while t[2] do depth = depth + 1"
            " if t[1] ~= depth or t[3] ~= 'after' then return false end t = t[2] end"
            " return depth == " +
            std::to_string(GetParam()) + " and t[1] == 'last' end)()");
    }
};

INSTANTIATE_TEST_SUITE_P(Depths, ScriptValueDepthTest, ::testing::ValuesIn(DEPTHS));

TEST_P(ScriptValueDepthTest, IsWritten)
{
    const std::size_t inner = static_cast<std::size_t>(GetParam()) - 1;

    const Bytes bytes = write(nested(GetParam()));

    EXPECT_EQ(bytes.size(), inner * (8 + 24 + 12 + 20) + (8 + 20));
}

TEST_P(ScriptValueDepthTest, IsReadAgain)
{
    ASSERT_TRUE(read(write(nested(GetParam()))));

    EXPECT_TRUE(isNested());
}

TEST_P(ScriptValueDepthTest, IsWrittenAgainByteForByte)
{
    const Bytes bytes = write(nested(GetParam()));
    ASSERT_TRUE(read(bytes));

    EXPECT_EQ(write(environment().getVar("read")), bytes);
}

TEST_P(ScriptValueDepthTest, IsReadOnASmallStack)
{
    const ScriptObjectReference value = refer(nested(GetParam()));
    bool isRead = false;

    runOnStackOf(64 * 1024, [&] { isRead = read(write(value)); });

    EXPECT_TRUE(isRead);
    EXPECT_TRUE(isNested());
}

TEST_P(ScriptValueDepthTest, IsReadBelowAKeyThatIsDropped)
{
    ASSERT_TRUE(read(write("{nan = " + nested(GetParam()) + ", " + nested(GetParam()) + "}")));

    run("isAlone = next(read, next(read)) == nil  read = read[1]");
    EXPECT_TRUE(holds("isAlone"));
    EXPECT_TRUE(isNested());
}

TEST_P(ScriptValueDepthTest, OfDroppedKeysIsRead)
{
    ASSERT_TRUE(read(write(
        "(function() local v = {} local t = v for i = 1, " + std::to_string(GetParam()) +
        " do t.nan = {} t.kept = i t = t.nan end return v end)()")));

    EXPECT_TRUE(holds("read.kept == 1 and next(read, 'kept') == nil"));
}

TEST_P(ScriptValueDepthTest, WithoutEndsCannotBeRead)
{
    const std::size_t depth = static_cast<std::size_t>(GetParam());
    Bytes bytes;
    for (std::size_t i = 0; i < depth; ++i)
        bytes.insert(bytes.end(), {'{', 0, 0, 0, 'k', 'a', 0, 0});

    EXPECT_FALSE(read(bytes));
}

} // namespace tbScripts::test

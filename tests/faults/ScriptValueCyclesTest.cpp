// Tables that contain themselves cannot be written, however long the way round is; tables that are
// only reached by several ways can.

#include "support/RowName.h"
#include "support/ScriptValueFixture.h"
#include "support/SmallStackThread.h"

#include <string>

namespace tbScripts::test
{

namespace
{

struct TableRow
{
    const char* row;
    const char* code; // makes the global `v`
};

using test::operator<<;

class CyclicTableTest : public OnRows<ScriptValueFixture, TableRow>
{
protected:
    CyclicTableTest() { run(GetParam().code); }
};

ROWS(
    CyclicTableTest,
    {"Direct", "v = {} v.v = v"},
    {"DirectAmongOthers", "v = {1, 2, {3}, {4}, 'text'} v.v = v"},
    {"ThroughAChild", "v = {child = {}} v.child.parent = v"},
    {"ThroughTwoLevels", "v = {{{}}} v[1][1][1] = v"},
    {"OfAChild", "v = {{}} v[1][1] = v[1]"},
    {"OfAGrandchild", "v = {{{}}} v[1][1][1] = v[1]"},
    {"OfAllChildren", "v = {} for i = 1, 100 do v[i] = {parent = v} end"},
    {"AmongChildrenThatAreDeeper",
     "v = {} local t = v for i = 1, 50 do t.a = {{{{}}}, 1, {}} t.z = {} t = t.z end"
     " t.z = v"},
    {"ThroughItsMetatableOfAnotherValue", "v = setmetatable({}, {}) v[1] = v"});

TEST_P(CyclicTableTest, CannotBeWrittenNorAsPartOfAnotherAndLeavesTheOwnersOfItsInstances)
{
    EXPECT_THAT(write(environment().getVar("v")), IsEmpty());
    EXPECT_THAT(write("{1, {v}, 2}"), IsEmpty());
    run("v.object = Vec.new()");

    EXPECT_THAT(write("{Vec.new(), {Vec.new()}, v}", true), IsEmpty());

    run("written, v = nil, nil");
    collect();
    EXPECT_EQ(m_destroyed.size(), 3U);
}

// The way to the round, and the length of the round.
class CycleLengthTest : public ScriptValueFixture,
                        public ::testing::WithParamInterface<std::tuple<int, int>>
{
protected:
    // Makes `v`, a chain of tables whose last contains an earlier one.
    void makeChain()
    {
        run("v = {} local t, chain = v, {v}"
            " for i = 2, " +
            std::to_string(std::get<0>(GetParam()) + std::get<1>(GetParam())) +
            " do t.side = {} t.next = {1} t = t.next chain[i] = t end"
            " t.next = chain[" +
            std::to_string(std::get<0>(GetParam()) + 1) + "]");
    }
};

INSTANTIATE_TEST_SUITE_P(
    Lengths,
    CycleLengthTest,
    ::testing::Combine(
        ::testing::Values(0, 1, 2, 3, 7, 8, 9, 62, 63, 64, 65, 66, 1000),
        ::testing::Values(1, 2, 3, 4, 5, 7, 8, 9, 63, 64, 65, 100, 10000)));

TEST_P(CycleLengthTest, DoesNotMatterUnlessTheRoundIsOpened)
{
    makeChain();
    EXPECT_THAT(write(environment().getVar("v")), IsEmpty());

    const int length = std::get<0>(GetParam()) + std::get<1>(GetParam());
    run("local t = v for i = 2, " + std::to_string(length) + " do t = t.next end t.next = nil");

    EXPECT_EQ(
        write(environment().getVar("v")).size(),
        8U + static_cast<unsigned>(length - 1) * ((8 + 8) + (8 + 8) + 24));
}

using SharedTableTest = OnRows<ScriptValueFixture, TableRow>;

ROWS(
    SharedTableTest,
    {"Beside", "local s = {7} v = {s, s, s, s}"},
    {"BesideAndBelow", "local s = {7} v = {s, {s, {s, {s, {s}}}}, s}"},
    {"BelowAndBeside", "local s = {7} v = {{{{{s}, s}, s}, s}, s}"},
    {"AtEveryDepth",
     "local s = {7} v = {} local t = v"
     " for i = 1, 200 do t.before = s t.next = {} t.zafter = s t = t.next end"},
    {"TwiceInEachOfSixteen", "v = {7} for i = 1, 16 do v = {v, v} end"});

TEST_P(SharedTableTest, IsWrittenAsOftenAsItIsReached)
{
    run(GetParam().code);
    // What LuaJIT 2.1.0-beta3 compiles of such a recursion does not end in one of some 400 runs.
    run("function count(t) local n = 0 for k, x in pairs(t) do"
        " n = n + (type(x) == 'table' and count(x) or x) end return n end jit.off(count)");

    ASSERT_TRUE(read(write(environment().getVar("v"))));

    EXPECT_TRUE(holds("count(v) > 7 and count(read) == count(v)"));
}

// Values that nest deeper than the C stack and the interpreter's stack reach.

constexpr int DEPTHS[] = {1, 2, 62, 63, 64, 65, 66, 127, 128, 129, 1000, 10000, 100000};

// Tables in tables, each with an entry before and one after the next: `depth` of them.
std::string nested(int depth)
{
    return "(function() local v = {} local t = v for i = 2, " + std::to_string(depth) +
           " do t[1] = i t[2] = {} t[3] = 'after' t = t[2] end t[1] = 'last' return v end)()";
}

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

} // namespace

} // namespace tbScripts::test

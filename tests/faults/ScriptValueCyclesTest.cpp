// Tables that contain themselves cannot be written, however long the way round is; tables that are
// only reached by several ways can.

#include "support/RowName.h"
#include "support/ScriptValueFixture.h"

namespace tbScripts::test
{

using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace
{

struct TableRow
{
    const char* row;
    const char* code; // makes the global `v`
};

void PrintTo(const TableRow& row, std::ostream* stream)
{
    *stream << row.row;
}

} // namespace

class CyclicTableTest : public ScriptValueFixture, public ::testing::WithParamInterface<TableRow>
{
protected:
    CyclicTableTest() { run(GetParam().code); }
};

INSTANTIATE_TEST_SUITE_P(
    Tables,
    CyclicTableTest,
    ::testing::Values(
        TableRow{"Direct", "v = {} v.v = v"},
        TableRow{"DirectAmongOthers", "v = {1, 2, {3}, {4}, 'text'} v.v = v"},
        TableRow{"ThroughAChild", "v = {child = {}} v.child.parent = v"},
        TableRow{"ThroughTwoLevels", "v = {{{}}} v[1][1][1] = v"},
        TableRow{"OfAChild", "v = {{}} v[1][1] = v[1]"},
        TableRow{"OfAGrandchild", "v = {{{}}} v[1][1][1] = v[1]"},
        TableRow{"OfAllChildren", "v = {} for i = 1, 100 do v[i] = {parent = v} end"},
        TableRow{
            "AmongChildrenThatAreDeeper",
            "v = {} local t = v for i = 1, 50 do t.a = {{{{}}}, 1, {}} t.z = {} t = t.z end"
            " t.z = v"},
        TableRow{"ThroughItsMetatableOfAnotherValue", "v = setmetatable({}, {}) v[1] = v"}),
    RowName());

TEST_P(CyclicTableTest, CannotBeWritten)
{
    EXPECT_THAT(write(environment().getVar("v")), IsEmpty());
}

TEST_P(CyclicTableTest, CannotBeWrittenAsPartOfAnother)
{
    EXPECT_THAT(write("{1, {v}, 2}"), IsEmpty());
}

TEST_P(CyclicTableTest, LeavesTheOwnersOfItsInstances)
{
    run("v.object = Vec.new()");

    const Bytes bytes = write("{Vec.new(), {Vec.new()}, v}", true);
    run("written, v = nil, nil");
    collect();

    EXPECT_THAT(bytes, IsEmpty());
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

TEST_P(CycleLengthTest, DoesNotMatter)
{
    makeChain();

    EXPECT_THAT(write(environment().getVar("v")), IsEmpty());
}

TEST_P(CycleLengthTest, IsNoneOnceItIsOpened)
{
    makeChain();
    run("local t = v for i = 2, " +
        std::to_string(std::get<0>(GetParam()) + std::get<1>(GetParam())) +
        " do t = t.next end t.next = nil");

    EXPECT_EQ(
        write(environment().getVar("v")).size(),
        8U + static_cast<unsigned>(std::get<0>(GetParam()) + std::get<1>(GetParam()) - 1) *
                 ((8 + 8) + (8 + 8) + 24));
}

class SharedTableTest : public ScriptValueFixture, public ::testing::WithParamInterface<TableRow>
{
};

INSTANTIATE_TEST_SUITE_P(
    Tables,
    SharedTableTest,
    ::testing::Values(
        TableRow{"Beside", "local s = {7} v = {s, s, s, s}"},
        TableRow{"BesideAndBelow", "local s = {7} v = {s, {s, {s, {s, {s}}}}, s}"},
        TableRow{"BelowAndBeside", "local s = {7} v = {{{{{s}, s}, s}, s}, s}"},
        TableRow{
            "AtEveryDepth",
            "local s = {7} v = {} local t = v"
            " for i = 1, 200 do t.before = s t.next = {} t.zafter = s t = t.next end"},
        TableRow{"TwiceInEachOfSixteen", "v = {7} for i = 1, 16 do v = {v, v} end"}),
    RowName());

TEST_P(SharedTableTest, IsWrittenAsOftenAsItIsReached)
{
    run(GetParam().code);
    run("function count(t) local n = 0 for k, x in pairs(t) do"
        " n = n + (type(x) == 'table' and count(x) or x) end return n end");

    ASSERT_TRUE(read(write(environment().getVar("v"))));

    EXPECT_TRUE(holds("count(v) > 7 and count(read) == count(v)"));
}

} // namespace tbScripts::test

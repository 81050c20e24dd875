// Hosts run scripts on stacks of their own: fibres, whose memory comes from anywhere. The library
// does not know where such a stack ends, and must not go beyond it all the same.

#include "support/EnvironmentFixture.h"
#include "support/Facts.h"
#include "support/Fiber.h"
#include "support/Sanitizers.h"
#include "support/SmallStackThread.h"

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace tbScripts::test
{

using ::testing::HasSubstr;

class FiberStackTest : public EnvironmentFixture
{
public:
    // Runs `work` on small fibres of both kinds of memory; it may not use more than they have.
    void onSmallFibers(const std::function<void()>& work)
    {
        for (const std::size_t kibibytes : {std::size_t{64}, std::size_t{128}, std::size_t{256}})
        {
            // A checked build has frames several times as large.
            const std::size_t stackSize = kibibytes << (IS_SANITIZED ? 12 : 10);
            for (const FIBER_MEMORY memory : {FIBER_MEMORY::HEAP, FIBER_MEMORY::MAPPED})
            {
                SCOPED_TRACE(kibibytes);
                EXPECT_LE(runOnFiber(stackSize, memory, work), stackSize);
            }
        }
    }

    // Runs a script on each of them, which has to fail for want of stack.
    void overflows(const std::string& sources)
    {
        onSmallFibers([&]
                      { EXPECT_THAT(runExpectingError(sources), HasSubstr("stack overflow")); });
        is("('a'):gsub('a', function() return 'b' end)", "b");
    }

    void runs(const std::string& sources)
    {
        onSmallFibers([&] { run(sources); });
    }

    // Declares `again`, which runs the script function `enter`, and counts how often it does.
    void declareAgain()
    {
        declare(
            "again",
            {},
            [this](const Parameters&)
            {
                ++m_calls;
                Parameters outputs;
                if (!environment().callScriptFunction(
                        environment().getScriptFunction("enter"), {}, outputs))
                    throw std::string("stack overflow of the host");
                return FunctionParameter::VOID;
            });
        run("function enter() again() end");
    }

    int m_calls = 0;
};

namespace
{

using FiberStep = std::function<void(FiberStackTest&)>;

FiberStep overflows(const std::string& sources)
{
    return [=](FiberStackTest& test) { test.overflows(sources); };
}

FiberStep runs(const std::string& sources)
{
    return [=](FiberStackTest& test) { test.runs(sources); };
}

// clang-format off
const Facts<FiberStackTest> fiberFacts("FiberStackTest", {
    {"CallbacksWithoutEndAreAnError",
        {&FiberStackTest::declareAgain, overflows("again()")}},
    {"CallbacksWithoutEndInCoroutinesAreAnError",
        {&FiberStackTest::declareAgain,
         overflows("function enter() coroutine.wrap(again)() end again()")}},
    {"GsubWithoutEndIsAnError",
        {overflows("local function f() return (('a'):gsub('a', f)) end f()")}},
    {"SortWithoutEndIsAnError",
        {overflows("local function f() table.sort({2, 1, 3}, function(a, b) f() return a < b end) "
                   "end f()")}},
    {"CoroutinesWithoutEndAreAnError",
        {overflows("local function f() coroutine.wrap(f)() end f()")}},
    {"CallbacksThroughGsubWithoutEndAreAnError",
        {&FiberStackTest::declareAgain,
         overflows("function enter() local s = ('a'):gsub('a', again) end again()")}},
    {"UsualScriptsRun",
        {runs("local s = ('a b'):gsub('%w', function(c) return c:upper() end) assert(s == 'A B') "
              "local t = {3, 1, 2} table.sort(t, function(a, b) return a > b end) "
              "assert(load('return 1')() == 1) assert(require('string') == string) "
              "assert(coroutine.wrap(function() return string.format('%s', 1) end)() == '1')")}},
});
// clang-format on

} // namespace

TEST_F(FiberStackTest, SomeCallbacksNestOnTheSmallest)
{
    constexpr int LEVELS = IS_SANITIZED ? 2 : 4; // a checked build has larger frames
    int level = 0;
    declareAction(
        "down",
        [&]
        {
            if (++level < LEVELS)
                run("down()");
        });

    onSmallFibers(
        [&]
        {
            level = 0;
            run("down()");
            EXPECT_EQ(level, LEVELS);
        });
}

TEST_F(FiberStackTest, FiberInsideOfACallHasAStackOfItsOwn)
{
    declareAgain();
    int inner = 0;
    declareAction(
        "switch",
        [&]
        {
            onSmallFibers(
                [&]
                {
                    m_calls = 0;
                    EXPECT_THAT(runExpectingError("again()"), HasSubstr("stack overflow"));
                    EXPECT_GT(m_calls, 1);
                    ++inner;
                });
        });

    onSmallFibers([&] { run("switch()"); });

    EXPECT_EQ(inner, 36);
}

TEST_F(FiberStackTest, ThreadIsUsedToItsEndAfterAFiber)
{
    declareAgain();
    onSmallFibers([&] { EXPECT_THAT(runExpectingError("again()"), HasSubstr("stack overflow")); });
    m_calls = 0;

    EXPECT_THAT(runExpectingError("again()"), HasSubstr("stack overflow"));

    EXPECT_EQ(m_calls, 200);
}

} // namespace tbScripts::test

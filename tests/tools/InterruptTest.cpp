#include "port/SignalHold.h"
#include "tools/ToolFixture.h"

#include <cstdio>
#include <cstdlib>
#include <signal.h>

namespace tool::test
{

namespace
{

using tbScripts::port::SignalHold;
using ::testing::AnyOf;
using ::testing::ElementsAre;
using ::testing::Eq;

TEST(SignalHoldTest, LetsWorkFinishBeforeTheSignalEndsTheProcess)
{
    const auto work = []
    {
        const SignalHold hold;
        ::raise(SIGINT);
        std::fputs("finished", stderr);
    };

    EXPECT_EXIT(work(), ::testing::KilledBySignal(SIGINT), "^finished$");
}

TEST(SignalHoldTest, LeavesSignalsThatComeLaterAlone)
{
    const auto work = []
    {
        {
            const SignalHold hold;
        }
        ::raise(SIGTERM);
        std::exit(0);
    };

    EXPECT_EXIT(work(), ::testing::KilledBySignal(SIGTERM), "");
}

using InterruptTest = ToolFixture;

TEST_F(InterruptTest, PackLeavesTheOldOrTheNewListAndNothingBesideIt)
{
    write("old/a.lua", std::string(300000, 'x'));
    write("new/a.lua", std::string(400000, 'y'));
    run({"pack", "old", "-o", "list.tbscripts"});
    run({"pack", "new", "-o", "new.tbscripts"});
    const std::string oldList = read("list.tbscripts");
    const std::string newList = read("new.tbscripts");

    // At many places of the work; which ones is up to the machine.
    for (int round = 0; round < 30; ++round)
    {
        write("list.tbscripts", oldList);
        runInterrupted({"pack", "new", "-o", "list.tbscripts"}, round * 40);
        ASSERT_THAT(read("list.tbscripts"), AnyOf(Eq(oldList), Eq(newList)));
    }

    EXPECT_THAT(
        everything(),
        ElementsAre("list.tbscripts", "new", "new.tbscripts", "new/a.lua", "old", "old/a.lua"));
}

TEST_F(InterruptTest, UnpackLeavesNoFileInParts)
{
    std::string list = "[";
    for (int i = 100; i < 200; ++i)
        list += R"({"name":")" + std::to_string(i) + R"(","sources":")" + std::string(20000, 'x') +
                R"("},)";
    write("list.tbscripts", list + R"({"name":"last","sources":""}])");

    // At many places of the work; which ones is up to the machine.
    for (int round = 0; round < 30; ++round)
    {
        runInterrupted({"unpack", "-f", "list.tbscripts", "-o", "out"}, round * 40);
        for (const std::string& name : everything())
        {
            if (name.size() == 7) // "out/123"
                ASSERT_EQ(read(name), std::string(20000, 'x')) << name;
            else
                ASSERT_THAT(name, AnyOf("list.tbscripts", "out", "out/last"));
        }
    }
}

TEST_F(InterruptTest, EndsAScriptThatNeverEnds)
{
    write("a.lua", "io.popen('kill -INT $PPID'):close() while true do pcall(error) end");

    const Outcome outcome = run({"run", "a.lua"});

    EXPECT_EQ(outcome, (Outcome{-1, SIGINT, "", ""}));
}

} // namespace

} // namespace tool::test

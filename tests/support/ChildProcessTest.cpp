#include "support/ChildProcess.h"

#include <gtest/gtest.h>

#include <csignal>
#include <stdexcept>
#include <unistd.h>

namespace tbScripts::test
{

TEST(ChildProcessTest, GivesItsExitCode)
{
    ChildProcess child([] { return 5; });

    EXPECT_EQ(child.wait(), 5);
}

TEST(ChildProcessTest, ChangesNothingHere)
{
    int value = 1;
    ChildProcess child([&value] { return value = 2; });

    EXPECT_EQ(child.wait(), 2);
    EXPECT_EQ(value, 1);
}

TEST(ChildProcessTest, TellsTheSignalThatEndedIt)
{
    ChildProcess child([] { return ::raise(SIGTERM); });

    EXPECT_EQ(child.wait(), -15);
}

TEST(ChildProcessTest, IsKilledWhereverItIs)
{
    ChildProcess child(
        []
        {
            for (;;)
                ::pause();
            return 0;
        });

    child.kill();

    EXPECT_EQ(child.wait(), -9);
}

TEST(ChildProcessTest, ExceptionIsAnExitCodeToo)
{
    ChildProcess child([]() -> int { throw std::runtime_error("failed"); });

    EXPECT_EQ(child.wait(), 111);
}

} // namespace tbScripts::test

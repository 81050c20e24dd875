// What a host meets when the process may not grow any more. Each case runs in a child process, with
// a limit of its own.

#include "support/EnvironmentFixture.h"
#include "support/Sanitizers.h"

#include <cstdio>
#include <fstream>
#include <sys/resource.h>
#include <unistd.h>

namespace tbScripts::test
{

namespace
{

constexpr int PASSED = 0;
constexpr int FAILED = 1;

rlim_t sizeOfThisProcess()
{
    std::ifstream statistics("/proc/self/statm");
    rlim_t pages = 0;
    statistics >> pages;
    return pages * static_cast<rlim_t>(sysconf(_SC_PAGESIZE));
}

// Leaves a bit for the small things, too little for an interpreter.
void forbidGrowth()
{
    constexpr rlim_t ALLOWANCE = rlim_t{48} << 10;
    const rlimit limit{sizeOfThisProcess() + ALLOWANCE, RLIM_INFINITY};
    setrlimit(RLIMIT_AS, &limit);
}

void allowGrowth()
{
    const rlimit limit{RLIM_INFINITY, RLIM_INFINITY};
    setrlimit(RLIMIT_AS, &limit);
}

} // namespace

class NoMemoryDeathTest : public LogFixture
{
protected:
    void SetUp() override
    {
        if (IS_SANITIZED)
            GTEST_SKIP() << "the checkers need more address space than any limit leaves";
        m_environment.setName("world");
    }

    [[noreturn]] static void endChild(bool hasPassed) { _exit(hasPassed ? PASSED : FAILED); }

    // Switches without memory, and returns what that logged.
    std::vector<LogEntry> switchWithoutMemory()
    {
        forbidGrowth();
        m_environment.setEnvironmentFor(INTERPRETER_LUA);
        allowGrowth();
        return m_log.takeEntries();
    }

    Environment m_environment;
};

TEST_F(NoMemoryDeathTest, InterpreterThatCannotBeMadeIsReported)
{
    EXPECT_EXIT(
        endChild(
            switchWithoutMemory() ==
            std::vector<LogEntry>{LogEntry{
                "Not enough memory for an interpreter. This will disable the Environment.",
                "Environment"}}),
        ::testing::ExitedWithCode(PASSED),
        "");
}

TEST_F(NoMemoryDeathTest, EnvironmentHasNoInterpreterThen)
{
    EXPECT_EXIT(
        {
            switchWithoutMemory();
            const int value = m_environment.getVar("score", -1);
            endChild(
                value == -1 && m_log.takeEntries() ==
                                   std::vector<LogEntry>{LogEntry{
                                       "Requesting a variable in environment 'world', which has no "
                                       "InterpreterType. This will have no effect.",
                                       "Environment"}});
        },
        ::testing::ExitedWithCode(PASSED),
        "");
}

TEST_F(NoMemoryDeathTest, EnvironmentCanBeSwitchedWhenThereIsMemoryAgain)
{
    EXPECT_EXIT(
        {
            switchWithoutMemory();
            m_environment.setEnvironmentFor(INTERPRETER_LUA);
            endChild(runScript(m_environment, "score = 1") && m_environment.isVarSet("score"));
        },
        ::testing::ExitedWithCode(PASSED),
        "");
}

} // namespace tbScripts::test

// Values whose bytes do not fit into the process. Each case runs in a child process, with a limit
// of its own.

#include "support/Sanitizers.h"
#include "support/ScriptValueFixture.h"

#include <sys/resource.h>
#include <unistd.h>

namespace tbScripts::test
{

namespace
{

constexpr int PASSED = 0;
constexpr int FAILED = 1;

void limitMemory(rlim_t bytes)
{
    const rlimit limit{bytes, RLIM_INFINITY};
    setrlimit(RLIMIT_AS, &limit);
}

} // namespace

class ScriptValueMemoryDeathTest : public ScriptValueFixture
{
protected:
    void SetUp() override
    {
        if (IS_SANITIZED)
            GTEST_SKIP() << "the checkers need more address space than any limit leaves";
    }

    [[noreturn]] static void endChild(bool hasPassed) { _exit(hasPassed ? PASSED : FAILED); }

    // Writes `value` with 256 MiB for all.
    Bytes writeWithoutMemory(const ScriptObjectReference& value, bool transferOwnership)
    {
        limitMemory(rlim_t{256} << 20);
        Bytes bytes = write(value, transferOwnership);
        limitMemory(RLIM_INFINITY);
        return bytes;
    }
};

TEST_F(ScriptValueMemoryDeathTest, TableThatIsReachedByTooManyWaysGivesNoBytes)
{
    EXPECT_EXIT(
        {
            run("v = {} for i = 1, 40 do v = {v, v} end");
            const Bytes bytes = writeWithoutMemory(environment().getVar("v"), false);
            endChild(
                bytes.empty() && m_log.takeEntries() == std::vector<LogEntry>{LogEntry{
                                                            "std::bad_alloc", "LuaEnvironment"}});
        },
        ::testing::ExitedWithCode(PASSED),
        "");
}

TEST_F(ScriptValueMemoryDeathTest, InstancesKeepTheirOwnersThen)
{
    EXPECT_EXIT(
        {
            run("v = {Vec.new()} for i = 1, 40 do v = {v[1] or v, v, v} end");
            writeWithoutMemory(environment().getVar("v"), true);
            run("v = nil");
            collect();
            endChild(m_destroyed.size() == 1);
        },
        ::testing::ExitedWithCode(PASSED),
        "");
}

TEST_F(ScriptValueMemoryDeathTest, TextsAreWrittenWhenThereIsMemoryAgain)
{
    EXPECT_EXIT(
        {
            run("v = {('x'):rep(2^20)} for i = 1, 10 do v = {v, v} end");
            const ScriptObjectReference value = environment().getVar("v");
            const bool isRefused = writeWithoutMemory(value, false).empty();
            run("v = {v[1][1][1][1]}");
            endChild(isRefused && write(environment().getVar("v")).size() > (size_t{64} << 20));
        },
        ::testing::ExitedWithCode(PASSED),
        "");
}

} // namespace tbScripts::test

// Compiling without enough memory, in a child process whose address space is cut short.

#include "support/Sanitizers.h"
#include "support/ScriptFixture.h"

#include <tbScripts/LogManager.h>

#include <cstddef>
#include <cstdlib>
#include <fstream>
#include <malloc.h>
#include <memory>
#include <string>
#include <sys/resource.h>
#include <unistd.h>

namespace tbScripts::test
{

namespace
{

constexpr std::size_t KILOBYTE = 1024;

enum EXIT : int
{
    EXIT_AS_EXPECTED = 0,
    EXIT_WRONG_RESULT = 10,
    EXIT_WRONG_LOG = 11,
    EXIT_BYTECODE_LEFT = 12,
    EXIT_NEVER_ENOUGH = 13,
    EXIT_ALWAYS_ENOUGH = 14,
    EXIT_EXCEPTION = 15
};

// Allows this process `headroom` bytes more than it has mapped, until its end.
class MemoryLimit
{
public:
    explicit MemoryLimit(std::size_t headroom)
    {
        getrlimit(RLIMIT_AS, &m_before);
        rlimit limit = m_before;
        limit.rlim_cur = getMappedSize() + headroom;
        setrlimit(RLIMIT_AS, &limit);
    }

    MemoryLimit(const MemoryLimit&) = delete;
    MemoryLimit& operator=(const MemoryLimit&) = delete;

    ~MemoryLimit() { setrlimit(RLIMIT_AS, &m_before); }

private:
    static std::size_t getMappedSize()
    {
        std::size_t pages = 0;
        std::ifstream("/proc/self/statm") >> pages;
        return pages * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    }

    rlimit m_before{};
};

} // namespace

class ScriptMemoryTest : public ScriptFixture
{
protected:
    void SetUp() override
    {
        if (IS_SANITIZED)
            GTEST_SKIP() << "The sanitizer maps more than any limit allows.";
        ::testing::GTEST_FLAG(death_test_style) = "fast";
    }

    // One long text: compiling and dumping it takes several times its size.
    void setSourcesOf(std::size_t size)
    {
        m_script.setSources("x = #'" + std::string(size, 'a') + "'");
    }

    // Compiles with `headroom` bytes to spare and judges what came of it.
    EXIT judgeLoad(std::size_t headroom, bool& hasLoaded)
    {
        {
            const MemoryLimit limit(headroom);
            hasLoaded = m_script.load();
        }
        const CompilationResult& result = m_script.getLastCompilationResult();
        const std::string message = "Error while compiling script 'x' : not enough memory";
        const std::vector<LogEntry> entries = m_log.takeEntries();
        if (hasLoaded)
            return entries.empty() && result.success ? EXIT_AS_EXPECTED : EXIT_WRONG_RESULT;
        if (result.success || result.errorCode != 4U || result.message != message)
            return EXIT_WRONG_RESULT;
        if (entries != std::vector<LogEntry>{{message, "LuaScript"}})
            return EXIT_WRONG_LOG;
        return hasBytecode(m_script) ? EXIT_BYTECODE_LEFT : EXIT_AS_EXPECTED;
    }

    // Compiles with more and more memory until that succeeds.
    EXIT judgeLoadsUntilSuccess()
    {
        constexpr std::size_t STEP = 256 * KILOBYTE;
        constexpr std::size_t FAR_TOO_MUCH = 256 * KILOBYTE * KILOBYTE;
        bool hasLoaded = false;
        std::size_t headroom = 0;
        for (; !hasLoaded && headroom < FAR_TOO_MUCH; headroom += STEP)
        {
            const EXIT judgement = judgeLoad(headroom, hasLoaded);
            if (judgement != EXIT_AS_EXPECTED)
                return judgement;
        }
        if (!hasLoaded)
            return EXIT_NEVER_ENOUGH;
        return headroom == STEP ? EXIT_ALWAYS_ENOUGH : EXIT_AS_EXPECTED;
    }

    // Runs in the child process, and ends it.
    template <typename Judge>
    [[noreturn]] static void endWith(Judge&& judge)
    {
        // Long texts are mapped one by one: no block given back earlier may serve for them.
        mallopt(M_MMAP_THRESHOLD, 64 * KILOBYTE);
        malloc_trim(0);
        try
        {
            std::_Exit(judge());
        }
        catch (...)
        {
            std::_Exit(EXIT_EXCEPTION);
        }
    }
};

TEST_F(ScriptMemoryTest, NoMemoryForAStateIsCodeFour)
{
    bool hasLoaded = true;

    EXPECT_EXIT(
        endWith(
            [&]
            {
                setSourcesOf(1);
                return judgeLoad(0, hasLoaded);
            }),
        ::testing::ExitedWithCode(EXIT_AS_EXPECTED),
        "");
}

TEST_F(ScriptMemoryTest, EveryStepOfCompilingFailsWithCodeFourOrNotAtAll)
{
    EXPECT_EXIT(
        endWith(
            [&]
            {
                setSourcesOf(4 * KILOBYTE * KILOBYTE);
                return judgeLoadsUntilSuccess();
            }),
        ::testing::ExitedWithCode(EXIT_AS_EXPECTED),
        "");
}

} // namespace tbScripts::test

// A thread may be ended from inside by the C library, which unwinds it with an exception of its
// own. That one has to reach the thread's start; swallowing it would abort the process.

#include "support/EnvironmentFixture.h"
#include "support/SmallStackThread.h"

#include <tbScripts/LogManager.h>

#include <cstddef>
#include <functional>
#include <pthread.h>

namespace tbScripts::test
{

namespace
{

constexpr std::size_t STACK_SIZE = std::size_t{4} << 20;

class ThreadEndingLogger : public tbLog::Logger
{
public:
    void log(const tbLog::StringView&, const tbLog::StringView&) override { pthread_exit(nullptr); }
};

} // namespace

class ThreadEndTest : public EnvironmentFixture
{
protected:
    ThreadEndTest()
    {
        declare("endThread", {}, [](const Parameters&) -> FunctionParameter { pthread_exit({}); });
    }

    // Acts in a thread of its own; returns whether the thread has ended in the middle of that.
    static bool endsThread(const std::function<void()>& act)
    {
        bool hasReturned = false;
        runOnStackOf(
            STACK_SIZE,
            [&]
            {
                act();
                hasReturned = true;
            });
        return !hasReturned;
    }

    void expectThatTheEnvironmentGoesOn()
    {
        run("local t = {} for i = 1, 100 do t[i] = tostring(i) end done = t[100]");
        EXPECT_EQ(environment().getVar("done", ""), "100");
        environment().setEnvironmentFor(INTERPRETER_LUA); // would be refused if something still ran
    }
};

TEST_F(ThreadEndTest, LogReceiverMayEndItsThread)
{
    ThreadEndingLogger ending;
    run("setmetatable(_G, {__index = function() error('strict', 0) end})");
    LogManager::getInstance()->setReceiver(&ending);

    EXPECT_TRUE(endsThread([this] { environment().getVar("score", 1); }));

    LogManager::getInstance()->setReceiver(&m_log);
    run("setmetatable(_G, nil)");
    expectThatTheEnvironmentGoesOn();
}

TEST_F(ThreadEndTest, HostFunctionMayEndItsThreadAlsoUnderAProtectedCallOfAScript)
{
    EXPECT_TRUE(endsThread([this] { runScript(environment(), "endThread()"); }));
    EXPECT_TRUE(endsThread(
        [this] { runScript(environment(), "pcall(endThread) coroutine.wrap(endThread)()"); }));

    expectThatTheEnvironmentGoesOn();
}

TEST_F(ThreadEndTest, HostFunctionMayEndItsThreadUnderAMetamethod)
{
    run("setmetatable(_G, {__index = function() endThread() end})");

    EXPECT_TRUE(endsThread([this] { environment().getVar("score", 1); }));

    run("setmetatable(_G, nil)");
    expectThatTheEnvironmentGoesOn();
}

} // namespace tbScripts::test

#include "support/LogFixture.h"
#include "support/RowName.h"

#include <tbScripts/LogManager.h>
#include <tbScripts/Script.h>

#include <functional>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace tbScripts::test
{

namespace
{

// Loading the library creates no instance.
const LogManager* const INSTANCE_BEFORE_MAIN = LogManager::getInstanceIfExisting();

// What the library does by itself: logs one message.
void disableAScript()
{
    Script script;
    script.setTargetInterpreter(INTERPRETER_UNKNOWN);
}

const LogEntry SCRIPT_WAS_DISABLED = {
    "Script type requested unknown. This will disable the Script.", "Script"};

// Does something of its own with each message.
class ActingLogger : public tbLog::Logger
{
public:
    using Action = std::function<void(const std::string& message)>;

    explicit ActingLogger(Action action)
        : m_action(std::move(action))
    {
    }

    void log(const tbLog::StringView& message, const tbLog::StringView& /*source*/) override
    {
        m_action(std::string(message));
    }

private:
    Action m_action;
};

// A copy cannot be destroyed by its user, so it lives in storage that is never given back.
class CopyOfLogManager
{
public:
    CopyOfLogManager() { new (&m_storage) LogManager(*LogManager::getInstance()); }

    LogManager& operator*() { return *reinterpret_cast<LogManager*>(&m_storage); }

    LogManager* operator->() { return &**this; }

private:
    std::aligned_storage_t<sizeof(LogManager), alignof(LogManager)> m_storage;
};

using LogManagerTest = LogFixture;

TEST_F(LogManagerTest, NoneExistsBeforeAnybodyAskedForIt)
{
    EXPECT_EQ(INSTANCE_BEFORE_MAIN, nullptr);
}

TEST_F(LogManagerTest, OnlyItsSingletonMakesAndDestroysIt)
{
    EXPECT_FALSE(std::is_default_constructible_v<LogManager>);
    EXPECT_FALSE(std::is_destructible_v<LogManager>);
}

TEST_F(LogManagerTest, KeepsItsReceiver)
{
    RecordingLogger another;

    LogManager::getInstance()->setReceiver(&another);

    EXPECT_EQ(LogManager::getInstance()->getReceiver(), &another);
}

TEST_F(LogManagerTest, PassesOnAllBytesOfMessageAndSourceAndNoneBehindTheEnd)
{
    const std::vector<char> unterminated = {'T', 'a', 'g'};

    LogManager::getInstance()->log("the message", "TheSource");
    LogManager::getInstance()->log(
        tbMemory::StringView("a\0b!", 3),
        tbMemory::StringView(unterminated.data(), unterminated.size()));
    LogManager::getInstance()->log(tbMemory::StringView(), tbMemory::StringView());

    expectLogged({{"the message", "TheSource"}, {std::string("a\0b", 3), "Tag"}, {"", ""}});
}

TEST_F(LogManagerTest, DropsMessagesWithoutReceiverUntilThereIsOneAgain)
{
    LogManager::getInstance()->setReceiver(nullptr);
    LogManager::getInstance()->log("the message", "TheSource");
    EXPECT_EQ(LogManager::getInstance()->getReceiver(), nullptr);
    LogManager::getInstance()->setReceiver(&m_log);

    LogManager::getInstance()->log("another", "TheSource");

    expectLogged("another", "TheSource");
}

TEST_F(LogManagerTest, HostAndLibraryShareOneInstance)
{
    disableAScript();

    expectLogged({SCRIPT_WAS_DISABLED});
}

TEST_F(LogManagerTest, FirstMessageOfTheLibraryCreatesTheInstance)
{
    LogManager::getInstance()->kill();

    disableAScript();

    ASSERT_NE(LogManager::getInstanceIfExisting(), nullptr);
    EXPECT_EQ(LogManager::getInstanceIfExisting()->getReceiver(), nullptr);
}

TEST_F(LogManagerTest, KillForgetsTheReceiver)
{
    LogManager::getInstance()->kill();

    EXPECT_EQ(LogManager::getInstanceIfExisting(), nullptr);
    EXPECT_EQ(LogManager::getInstance()->getReceiver(), nullptr);
    disableAScript();
}

TEST_F(LogManagerTest, CopyHasTheReceiverAndIsNotTheInstance)
{
    LogManager* const instance = LogManager::getInstance();

    CopyOfLogManager copy;
    copy->log("the message", "TheSource");

    expectLogged("the message", "TheSource");
    EXPECT_EQ(copy->getReceiver(), &m_log);
    EXPECT_NE(&*copy, instance);
    EXPECT_EQ(LogManager::getInstance(), instance);
}

TEST_F(LogManagerTest, CopyHasAReceiverOfItsOwnUntilAnAssignmentCopiesAnother)
{
    CopyOfLogManager copy;
    copy->setReceiver(nullptr);
    EXPECT_EQ(LogManager::getInstance()->getReceiver(), &m_log);

    LogManager& result = *copy = *LogManager::getInstance();

    EXPECT_EQ(&result, &*copy);
    EXPECT_EQ(copy->getReceiver(), &m_log);
}

TEST_F(LogManagerTest, KillOnACopyDestroysTheInstance)
{
    CopyOfLogManager copy;

    copy->kill();

    EXPECT_EQ(LogManager::getInstanceIfExisting(), nullptr);
    EXPECT_EQ(copy->getReceiver(), &m_log);
}

TEST_F(LogManagerTest, ReceiverMayReplaceItselfWhileItIsCalled)
{
    ActingLogger replacing([this](const std::string&)
                           { LogManager::getInstance()->setReceiver(&m_log); });
    LogManager::getInstance()->setReceiver(&replacing);

    LogManager::getInstance()->log("goes to the first", "TheSource");
    LogManager::getInstance()->log("goes to the second", "TheSource");

    expectLogged("goes to the second", "TheSource");
}

TEST_F(LogManagerTest, ReceiverMayDestroyItselfWhileItIsCalled)
{
    std::unique_ptr<ActingLogger> leaving;
    leaving = std::make_unique<ActingLogger>(
        [&leaving](const std::string&)
        {
            LogManager::getInstance()->setReceiver(nullptr);
            const std::unique_ptr<ActingLogger> goes = std::move(leaving);
        });
    LogManager::getInstance()->setReceiver(leaving.get());

    disableAScript();

    EXPECT_EQ(leaving, nullptr);
}

TEST_F(LogManagerTest, ReceiverMayKillTheManagerWhileItIsCalled)
{
    ActingLogger killing([](const std::string&) { LogManager::getInstance()->kill(); });
    LogManager::getInstance()->setReceiver(&killing);

    disableAScript();

    EXPECT_EQ(LogManager::getInstanceIfExisting(), nullptr);
}

TEST_F(LogManagerTest, ReceiverMayLogWhileItIsCalled)
{
    std::vector<std::string> messages;
    ActingLogger answering(
        [&messages](const std::string& message)
        {
            messages.push_back(message);
            if (messages.size() == 1)
                LogManager::getInstance()->log("and once more", "TheReceiver");
        });
    LogManager::getInstance()->setReceiver(&answering);

    LogManager::getInstance()->log("once", "TheSource");

    EXPECT_THAT(messages, ElementsAre("once", "and once more"));
}

struct ReceiverException
{
    const char* row;
    void (*raise)();
};

using LogManagerExceptionTest = OnRows<LogFixture, ReceiverException>;

ROWS(
    LogManagerExceptionTest,
    {"StandardException", [] { throw std::runtime_error("no space left"); }},
    {"Text", [] { throw std::string("no space left"); }},
    {"Number", [] { throw 7; }},
    {"NoMemory", [] { throw std::bad_alloc(); }});

TEST_P(LogManagerExceptionTest, IsDroppedAndTheReceiverGetsTheNextMessage)
{
    int count = 0;
    ActingLogger throwing(
        [&count](const std::string&)
        {
            ++count;
            GetParam().raise();
        });
    LogManager::getInstance()->setReceiver(&throwing);

    EXPECT_NO_THROW(LogManager::getInstance()->log("one", "TheSource"));
    EXPECT_NO_THROW(LogManager::getInstance()->log("two", "TheSource"));

    EXPECT_EQ(count, 2);
}

TEST_P(LogManagerExceptionTest, CallThatLoggedGoesOnAfterTheReceiverThrew)
{
    ActingLogger throwing([](const std::string&) { GetParam().raise(); });
    LogManager::getInstance()->setReceiver(&throwing);
    Script script;
    script.setTargetInterpreter(INTERPRETER_LUA);
    script.setSources("x = = 1");

    EXPECT_FALSE(script.load());

    EXPECT_EQ(script.getLastCompilationResult().errorCode, 3U);
}

} // namespace

} // namespace tbScripts::test

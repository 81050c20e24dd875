// The receiver of the log may do anything to the script of whose failure it reads.

#include "support/RowName.h"
#include "support/ScriptFixture.h"

#include <tbScripts/LogManager.h>

#include <functional>
#include <memory>
#include <utility>

namespace tbScripts::test
{

namespace
{

// Acts on its first message, then reads it.
class ActingReceiver : public RecordingLogger
{
public:
    using Action = std::function<void()>;

    explicit ActingReceiver(Action action)
        : m_action(std::move(action))
    {
        LogManager::getInstance()->setReceiver(this);
    }

    void log(const tbLog::StringView& message, const tbLog::StringView& source) override
    {
        if (const Action action = std::exchange(m_action, nullptr))
            action();
        RecordingLogger::log(message, source);
    }

private:
    Action m_action;
};

const LogEntry FAILURE = {
    "Error while compiling script 'x' : [string \"x = = 1\"]:1: unexpected symbol near '='",
    "LuaScript"};

const LogEntry DISABLED = {
    "Script type requested unknown. This will disable the Script.", "Script"};

class ScriptLogReceiverTest : public ScriptFixture
{
protected:
    ScriptLogReceiverTest()
        : m_own(std::make_unique<Script>())
    {
        m_own->setName("x");
        m_own->setTargetInterpreter(INTERPRETER_LUA);
        m_own->setSources("x = = 1");
    }

    std::unique_ptr<Script> m_own;
};

TEST_F(ScriptLogReceiverTest, MayLoadTheScriptAnew)
{
    ActingReceiver receiver(
        [this]
        {
            m_own->setSources("x = 1");
            m_own->load();
        });

    m_own->load();

    EXPECT_THAT(receiver.takeEntries(), ElementsAre(FAILURE));
    EXPECT_TRUE(m_own->getLastCompilationResult().success);
    EXPECT_EQ(run(*m_own), 1);
}

TEST_F(ScriptLogReceiverTest, MayLoadTheScriptAnewInVain)
{
    ActingReceiver receiver(
        [this]
        {
            m_own->setSources("y = = 1");
            m_own->load();
        });

    EXPECT_FALSE(m_own->load());

    EXPECT_THAT(
        receiver.takeEntries(),
        ElementsAre(
            LogEntry{
                "Error while compiling script 'x' : [string \"y = = 1\"]:1: unexpected symbol near "
                "'='",
                "LuaScript"},
            FAILURE));
}

// What the receiver does, what it reads then besides, and the result that is left, 99 for none.
struct ActionRow
{
    const char* row;
    void (*act)(std::unique_ptr<Script>& script);
    std::vector<LogEntry> before;
    unsigned int code;
};

using Owned = std::unique_ptr<Script>;

constexpr unsigned int NO_RESULT = 99;

using ScriptLogReceiverActionTest = OnRows<ScriptLogReceiverTest, ActionRow>;

ROWS(
    ScriptLogReceiverActionTest,
    {"Destroying", [](Owned& script) { script.reset(); }, {}, NO_RESULT},
    {"Disabling",
     [](Owned& script) { script->setTargetInterpreter(INTERPRETER_UNKNOWN); },
     {DISABLED},
     0},
    {"ChangingNameAndSources",
     [](Owned& script)
     {
         script->setName("a name that is longer than the one before, and stored elsewhere");
         script->setSources("x = 'sources that are longer than those before'");
     },
     {},
     3},
    {"Assigning", [](Owned& script) { *script = Script(); }, {}, 0},
    {"Unloading", [](Owned& script) { script->unload(); }, {}, 3},
    {"KillingTheManager", [](Owned&) { LogManager::getInstance()->kill(); }, {}, 3});

TEST_P(ScriptLogReceiverActionTest, IsSafeWhileAScriptFailsToCompile)
{
    ActingReceiver receiver([this] { GetParam().act(m_own); });

    EXPECT_FALSE(m_own->load());

    std::vector<LogEntry> expected = GetParam().before;
    expected.push_back(FAILURE);
    EXPECT_EQ(receiver.takeEntries(), expected);
    EXPECT_EQ(m_own == nullptr, GetParam().code == NO_RESULT);
    if (!m_own)
        return;
    const CompilationResult& result = m_own->getLastCompilationResult();
    EXPECT_EQ(result.errorCode, GetParam().code);
    EXPECT_EQ(result.message, GetParam().code == 3 ? FAILURE.message : "");
}

TEST_F(ScriptLogReceiverTest, MayDestroyTheScriptWhileACopyCompiles)
{
    Script copy(*m_own);
    ActingReceiver receiver([this] { m_own.reset(); });

    EXPECT_FALSE(copy.load());

    EXPECT_THAT(receiver.takeEntries(), ElementsAre(FAILURE));
    EXPECT_EQ(copy.getLastCompilationResult().errorCode, 3U);
    EXPECT_EQ(copy.getLastCompilationResult().message, FAILURE.message);
}

TEST_F(ScriptLogReceiverTest, MayDestroyTheScriptThatIsBeingDisabled)
{
    ActingReceiver receiver([this] { m_own.reset(); });

    m_own->setTargetInterpreter(INTERPRETER_UNKNOWN);

    EXPECT_THAT(receiver.takeEntries(), ElementsAre(DISABLED));
}

TEST_F(ScriptLogReceiverTest, FindsTheScriptDisabledWhenItReadsOfThat)
{
    bool hasLoaded = true;
    ActingReceiver receiver([&] { hasLoaded = m_own->load(); });

    m_own->setTargetInterpreter(INTERPRETER_UNKNOWN);

    EXPECT_FALSE(hasLoaded);
    EXPECT_EQ(m_own->getLastCompilationResult().errorCode, 2U);
    EXPECT_THAT(receiver.takeEntries(), ElementsAre(DISABLED));
}

} // namespace

} // namespace tbScripts::test

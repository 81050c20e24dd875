// The receiver of the log is code of the host, called in the middle of things. It may change
// whatever it likes, down to the environment that it is told about.

#include "support/EnvironmentFixture.h"
#include "support/RowName.h"

#include <tbScripts/LogManager.h>
#include <tbScripts/Script.h>

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace tbScripts::test
{

namespace
{

// Records like any other and then does what it was told to, once.
class ActingLogger : public RecordingLogger
{
public:
    void log(const tbLog::StringView& message, const tbLog::StringView& source) override
    {
        RecordingLogger::log(message, source);
        if (const std::function<void()> action = std::exchange(m_action, nullptr))
            action();
    }

    void actAtNextEntry(std::function<void()> action) { m_action = std::move(action); }

private:
    std::function<void()> m_action;
};

using World = Environment;

// Something that makes the library log, in an environment that was prepared by a script.
struct Trigger
{
    const char* row;
    const char* script;
    void (*pull)(Environment& environment);
    const char* firstMessage;
};

bool callGlobal(Environment& environment, const char* name, FUNCTION_PARAMETER_TYPE output)
{
    std::vector<FunctionParameter> outputs{FunctionParameter::ofType(output)};
    Parameters outputView(outputs);
    return environment.callScriptFunction(environment.getScriptFunction(name), {}, outputView);
}

constexpr const char* STRICT = "local function fail() error('strict', 0) end"
                               " setmetatable(_G, {__index = fail, __newindex = fail})";

std::vector<Trigger> allTriggers()
{
    return {
        {"FailingExecution",
         "",
         [](World& world) { runScript(world, "error('lost', 0)", "round"); },
         "Error while executing script 'round' : lost"},
        {"ExecutionWithoutBytecode",
         "",
         [](World& world)
         {
             Script script;
             script.setName("round");
             script.setTargetInterpreter(INTERPRETER_LUA);
             world.execute(script);
         },
         "Script 'round' has no bytecode ready. Cannot execute anything, be sure the script is "
         "correctly loaded."},
        {"ExecutionForAnotherInterpreter",
         "",
         [](World& world)
         {
             Script script;
             script.setName("round");
             world.execute(script);
         },
         "Script 'round'not of the right InterpreterType. Currently expecting Lua."},
        {"FailingScriptFunctionCall",
         "function fail() error('lost', 0) end",
         [](World& world) { callGlobal(world, "fail", PARAM_TYPE_INT); },
         "lost"},
        {"ResultOfAnotherKind",
         "function give() return {} end",
         [](World& world) { callGlobal(world, "give", PARAM_TYPE_INT); },
         "Could not unpack parameter 0 of output from lua function, type mismatch. Aborting "
         "unpack."},
        {"FailingReading", STRICT, [](World& world) { world.getVar("score", 1); }, "strict"},
        {"FailingTextReading",
         STRICT,
         [](World& world) { world.getVar("score", "text"); },
         "strict"},
        {"FailingReferenceReading", STRICT, [](World& world) { world.getVar("score"); }, "strict"},
        {"FailingWriting", STRICT, [](World& world) { world.setVar("score", 1); }, "strict"},
        {"FailingDeclaration", STRICT, [](World& world) { world.setFunc("late"); }, "strict"},
        {"RepeatedDeclaration",
         "",
         [](World& world) { world.setFunc("known"); },
         "Function 'known' already existant. Resetting its state before returning it. This might "
         "break previous usage of the function."},
        {"UnboundFunction",
         "",
         [](World& world)
         {
             world.getFunc("known")->reset();
             runScript(world, "known()");
         },
         "Function 'known' called but no user function is bound. Call having no effect."},
        {"MismatchOfAnArgument",
         "",
         [](World& world)
         {
             world.getFunc("known")->addParameter(PARAM_TYPE_INT);
             runScript(world, "pcall(known)");
         },
         "Error l.-1 while calling known. Expected int, got no value."},
        {"RaisingFinaliser",
         "collectgarbage('stop') local error = error for i = 1, 3 do"
         " getmetatable(newproxy(true)).__gc = function() error('finaliser failed', 0) end end",
         [](World& world) { world.requestGarbageCollection(); },
         "finaliser failed"},
        {"UnknownInterpreter",
         "",
         [](World& world) { world.setEnvironmentFor(INTERPRETER_UNKNOWN); },
         "Environment type requested unknown. This will disable the Environment."},
        {"SwitchWhileRunning",
         "",
         [](World& world)
         {
             world.getFunc("known")->setFunction(
                 [&world](const Parameters&)
                 {
                     world.setEnvironmentFor(INTERPRETER_LUA);
                     return FunctionParameter::VOID;
                 });
             runScript(world, "known()");
         },
         "Environment 'world' is running a script. Its type can't be changed from inside."}};
}

} // namespace

class LogReceiverTest : public OnRows<::testing::Test, Trigger>
{
protected:
    LogReceiverTest()
        : m_environment(std::make_unique<Environment>())
        , m_witness(std::make_shared<int>())
    {
        LogManager::getInstance()->setReceiver(&m_log);
        m_environment->setName("world");
        m_environment->setEnvironmentFor(INTERPRETER_LUA);
        m_environment->setFunc("known");
        // Held by a binding, so that it tells when the bindings are gone.
        m_environment->setFunc("witness")->setFunction([witness = m_witness](const Parameters&)
                                                       { return FunctionParameter::VOID; });
        runScript(*m_environment, GetParam().script);
    }

    ~LogReceiverTest() override
    {
        m_environment.reset();
        LogManager::getInstance()->kill();
    }

    bool areBindingsGone() const { return m_witness.use_count() == 1; }

    std::string firstMessage() { return m_log.takeEntries().at(0).message; }

    ActingLogger m_log;
    std::unique_ptr<Environment> m_environment;

private:
    std::shared_ptr<int> m_witness;
};

ROWS(LogReceiverTest, allTriggers());

TEST_P(LogReceiverTest, MayDestroyTheEnvironmentThatItIsToldAbout)
{
    Environment& environment = *m_environment;
    m_log.actAtNextEntry([this] { m_environment.reset(); });

    GetParam().pull(environment);

    EXPECT_EQ(firstMessage(), GetParam().firstMessage);
    EXPECT_TRUE(areBindingsGone());
}

TEST_P(LogReceiverTest, MayKillTheLogManager)
{
    m_log.actAtNextEntry([] { LogManager::getInstance()->kill(); });

    GetParam().pull(*m_environment);

    const std::vector<LogEntry> entries = m_log.takeEntries();
    ASSERT_THAT(entries, SizeIs(1)); // whoever is made next has no receiver
    EXPECT_EQ(entries[0].message, GetParam().firstMessage);
}

TEST_P(LogReceiverTest, MayReplaceItself)
{
    RecordingLogger next;
    m_log.actAtNextEntry([&next] { LogManager::getInstance()->setReceiver(&next); });

    GetParam().pull(*m_environment);

    EXPECT_EQ(m_log.takeEntries().size(), 1U);
    LogManager::getInstance()->setReceiver(nullptr);
}

TEST_P(LogReceiverTest, MayThrowWhatever)
{
    m_log.actAtNextEntry([] { throw std::runtime_error("disk full"); });
    EXPECT_NO_THROW(GetParam().pull(*m_environment));
    EXPECT_EQ(firstMessage(), GetParam().firstMessage);

    m_log.actAtNextEntry([] { throw 7; });
    EXPECT_NO_THROW(LogManager::getInstance()->log("another", "Test"));
    EXPECT_EQ(firstMessage(), "another");
}

TEST_P(LogReceiverTest, MayUseTheEnvironmentThatItIsToldAbout)
{
    bool isUsed = false;
    m_log.actAtNextEntry(
        [this, &isUsed]
        {
            m_environment->getVar("anything", 1);
            m_environment->setVar("anything", 1);
            runScript(*m_environment, "return 1");
            m_environment->requestGarbageCollection();
            m_environment->setFunc("another");
            isUsed = true;
        });

    GetParam().pull(*m_environment);

    EXPECT_TRUE(isUsed);
}

} // namespace tbScripts::test

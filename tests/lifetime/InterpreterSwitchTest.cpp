// An environment that is given another interpreter: what was declared stays registered, inert, and
// is installed in the new one when it is declared again.

#include "support/EnvironmentFixture.h"
#include "support/Sanitizers.h"

#include <memory>
#include <string>
#include <vector>

namespace tbScripts::test
{

using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace
{

LogEntry alreadyExistant(const std::string& name)
{
    return LogEntry{
        "Function '" + name +
            "' already existant. Resetting its state before returning it. This might break "
            "previous usage of the function.",
        "Environment"};
}

LogEntry refusedSwitch()
{
    return LogEntry{
        "Environment 'world' is running a script. Its type can't be changed from inside.",
        "Environment"};
}

LogEntry functionWithoutInterpreter()
{
    return LogEntry{
        "Requesting a function in environment 'world', which has no InterpreterType. This will "
        "have no effect, returning nullptr.",
        "Environment"};
}

FunctionParameter answer(const Parameters&)
{
    return FunctionParameter(42);
}

} // namespace

class InterpreterSwitchTest : public EnvironmentFixture
{
protected:
    void switchInterpreter() { environment().setEnvironmentFor(INTERPRETER_LUA); }

    // Declares a host function of that name that tries to switch.
    void declareSwitching(const std::string& name, INTERPRETER interpreter = INTERPRETER_LUA)
    {
        declare(
            name,
            {},
            [this, interpreter](const Parameters&)
            {
                environment().setEnvironmentFor(interpreter);
                return FunctionParameter::VOID;
            });
    }
};

TEST_F(InterpreterSwitchTest, FunctionStaysRegisteredButScriptsDoNotSeeIt)
{
    Function* const function = declare("answer", {}, &answer);

    switchInterpreter();

    EXPECT_TRUE(environment().isFuncSet("answer"));
    EXPECT_EQ(environment().getFunc("answer"), function);
    EXPECT_FALSE(environment().isVarSet("answer"));
}

TEST_F(InterpreterSwitchTest, InertFunctionCanBeChanged)
{
    Function* const function = declare("answer", {}, &answer);
    switchInterpreter();

    function->addParameter(PARAM_TYPE_INT);
    function->setFunction([](const Parameters&) { return FunctionParameter(1); });
    function->reset();

    EXPECT_EQ(function->getName(), "answer");
}

TEST_F(InterpreterSwitchTest, DeclaringAgainInstallsTheSameObject)
{
    Function* const function = declare("answer", {}, &answer);
    switchInterpreter();

    Function* const again = declare("answer", {}, &answer);

    EXPECT_EQ(again, function);
    EXPECT_THAT(m_log.takeEntries(), ElementsAre(alreadyExistant("answer")));
    run("assert(answer() == 42)");
}

TEST_F(InterpreterSwitchTest, FunctionCanBeInstalledAfterEverySwitch)
{
    Function* const function = declare("answer", {}, &answer);

    for (int i = 0; i < 3; ++i)
    {
        switchInterpreter();
        EXPECT_EQ(declare("answer", {}, &answer), function);
        run("assert(answer() == 42)");
    }

    EXPECT_EQ(m_log.takeEntries().size(), 3U);
}

TEST_F(InterpreterSwitchTest, WithinOneInterpreterDeclaringAgainPublishesNothing)
{
    declare("answer", {}, &answer);
    run("answer = 'a value of the script'");

    declare("answer", {}, &answer);

    EXPECT_THAT(m_log.takeEntries(), ElementsAre(alreadyExistant("answer")));
    EXPECT_EQ(environment().getVar("answer", ""), "a value of the script");
}

TEST_F(InterpreterSwitchTest, FunctionThatFailedToInstallIsInstalledByDeclaringAgain)
{
    Function* const function = declare("answer", {}, &answer);
    switchInterpreter();
    run("setmetatable(_G, {__newindex = function() error('strict', 0) end})");

    environment().setFunc("answer");
    run("setmetatable(_G, nil)");
    declare("answer", {}, &answer);

    EXPECT_EQ(environment().getFunc("answer"), function);
    EXPECT_THAT(
        m_log.takeEntries(),
        ElementsAre(
            alreadyExistant("answer"),
            LogEntry{"strict", "LuaEnvironment"},
            alreadyExistant("answer")));
    run("assert(answer() == 42)");
}

TEST_F(InterpreterSwitchTest, NullEntryBecomesAFunctionWhenItIsDeclaredAgain)
{
    environment().setEnvironmentFor(INTERPRETER_UNKNOWN);
    EXPECT_EQ(environment().setFunc("answer"), nullptr);
    switchInterpreter();
    m_log.takeEntries();

    declare("answer", {}, &answer);

    EXPECT_THAT(m_log.takeEntries(), ElementsAre(alreadyExistant("answer")));
    run("assert(answer() == 42)");
}

TEST_F(InterpreterSwitchTest, NullEntryStaysNullWithoutInterpreter)
{
    environment().setEnvironmentFor(INTERPRETER_UNKNOWN);
    environment().setFunc("answer");
    m_log.takeEntries();

    Function* const again = environment().setFunc("answer");

    EXPECT_EQ(again, nullptr);
    EXPECT_TRUE(environment().isFuncSet("answer"));
    EXPECT_THAT(
        m_log.takeEntries(), ElementsAre(alreadyExistant("answer"), functionWithoutInterpreter()));
    switchInterpreter(); // without interpreter, the end of an environment warns
}

TEST_F(InterpreterSwitchTest, NullEntriesAreSkippedAtTheEnd)
{
    environment().setEnvironmentFor(INTERPRETER_UNKNOWN);
    environment().setFunc("first");
    switchInterpreter();
    environment().setFunc("second");
    m_log.takeEntries();

    destroyEnvironment();

    EXPECT_THAT(m_log.takeEntries(), IsEmpty());
}

TEST_F(InterpreterSwitchTest, TwoSwitchesWithLivingFunctionsAndReferences)
{
    std::vector<ScriptObjectReference> references;
    for (const char* name : {"first", "second", "third"})
    {
        declare(name, {}, &answer);
        run("list = {}");
        references.push_back(environment().getVar("list"));
        references.push_back(environment().getScriptFunction(name));
        switchInterpreter();
    }

    destroyEnvironment();

    EXPECT_EQ(references.size(), 6U); // they go last, and touch nothing
}

TEST_F(InterpreterSwitchTest, FunctionsOfEarlierInterpretersGoWithTheEnvironment)
{
    const auto witness = std::make_shared<int>();
    for (const char* name : {"first", "second"})
    {
        declare(name, {}, [witness](const Parameters&) { return FunctionParameter::VOID; });
        switchInterpreter();
    }

    destroyEnvironment();

    EXPECT_EQ(witness.use_count(), 1);
}

TEST_F(InterpreterSwitchTest, SwitchFromInsideAHostFunctionIsRefused)
{
    declareSwitching("switch");

    run("known = 42 switch() assert(known == 42)");

    EXPECT_THAT(m_log.takeEntries(), ElementsAre(refusedSwitch()));
    EXPECT_EQ(environment().getVar("known", 0), 42);
}

TEST_F(InterpreterSwitchTest, SwitchToNoneFromInsideAHostFunctionIsRefused)
{
    declareSwitching("switch", INTERPRETER_UNKNOWN);

    run("known = 42 switch() assert(known == 42)");

    EXPECT_THAT(m_log.takeEntries(), ElementsAre(refusedSwitch()));
}

TEST_F(InterpreterSwitchTest, SwitchFromInsideACoroutineIsRefused)
{
    declareSwitching("switch");

    run("coroutine.wrap(function() switch() done = true end)() assert(done)");

    EXPECT_THAT(m_log.takeEntries(), ElementsAre(refusedSwitch()));
}

TEST_F(InterpreterSwitchTest, SwitchFromAMetamethodOfTheGlobalsIsRefused)
{
    declareSwitching("switch");
    run("setmetatable(_G, {__index = function() switch() return 7 end})");

    const int score = environment().getVar("score", 0);

    EXPECT_EQ(score, 7);
    EXPECT_THAT(m_log.takeEntries(), ElementsAre(refusedSwitch()));
}

TEST_F(InterpreterSwitchTest, SwitchFromAFinaliserOfARequestedCollectionIsRefused)
{
    declareSwitching("switch");
    run("known = 42 getmetatable(newproxy(true)).__gc = function() switch() end");

    environment().requestGarbageCollection();

    EXPECT_THAT(m_log.takeEntries(), ElementsAre(refusedSwitch()));
    EXPECT_EQ(environment().getVar("known", 0), 42);
}

TEST_F(InterpreterSwitchTest, SwitchFromAFinaliserOfAClosingStateIsRefused)
{
    declareSwitching("switch");
    run("kept = newproxy(true) getmetatable(kept).__gc = switch");

    switchInterpreter();

    EXPECT_THAT(m_log.takeEntries(), ElementsAre(refusedSwitch()));
    run("assert(kept == nil)");
}

TEST_F(InterpreterSwitchTest, AnotherEnvironmentMaySwitchMeanwhile)
{
    Environment other;
    other.setEnvironmentFor(INTERPRETER_LUA);
    other.setVar("known", 1);
    declare(
        "switchOther",
        {},
        [&other](const Parameters&)
        {
            other.setEnvironmentFor(INTERPRETER_LUA);
            return FunctionParameter::VOID;
        });

    run("switchOther()");

    EXPECT_FALSE(other.isVarSet("known"));
}

TEST_F(InterpreterSwitchTest, CoroutinesThatWereSuspendedGoWithTheirState)
{
    int finalised = 0;
    declare(
        "count",
        {},
        [&finalised](const Parameters&)
        {
            ++finalised;
            return FunctionParameter::VOID;
        });
    run("local function held() local object = newproxy(true)"
        "  getmetatable(object).__gc = count coroutine.yield(object) end "
        "kept = {} for i = 1, 10 do kept[i] = coroutine.create(held)"
        "  coroutine.resume(kept[i]) end");

    switchInterpreter();

    EXPECT_EQ(finalised, 10);
}

TEST_F(InterpreterSwitchTest, LastResultKeepsItsPlaceAndIsReset)
{
    const ExecutionResult& result = environment().getLastExecutionResult();
    runExpectingError("error('lost', 0)");
    EXPECT_EQ(result.code, 5);

    switchInterpreter();

    EXPECT_EQ(&environment().getLastExecutionResult(), &result);
    EXPECT_EQ(result.code, 0);
    EXPECT_TRUE(result.success);
    EXPECT_TRUE(result.message.empty());
}

TEST_F(InterpreterSwitchTest, LastResultOfTheLatestInterpreterShowsThroughTheOldReference)
{
    const ExecutionResult& result = environment().getLastExecutionResult();
    environment().setEnvironmentFor(INTERPRETER_UNKNOWN);

    runScript(environment(), "return 1");

    EXPECT_EQ(result.code, 2);
    switchInterpreter(); // without interpreter, the end of an environment warns
    m_log.takeEntries();
}

TEST_F(InterpreterSwitchTest, ManyEnvironmentsComeAndGo)
{
    for (int i = 0; i < repetitions(10000); ++i)
    {
        Environment passing;
        passing.setEnvironmentFor(INTERPRETER_LUA);
        passing.setFunc("answer")->setFunction(&answer);
        passing.setVar("count", i);
        ASSERT_EQ(passing.getVar("count", -1), i);
    }

    EXPECT_THAT(m_log.takeEntries(), IsEmpty());
}

TEST_F(InterpreterSwitchTest, OneEnvironmentIsSwitchedManyTimes)
{
    for (int i = 0; i < repetitions(2000); ++i)
    {
        switchInterpreter();
        environment().setVar("count", i);
        ASSERT_EQ(environment().getVar("count", -1), i);
    }

    EXPECT_THAT(m_log.takeEntries(), IsEmpty());
}

} // namespace tbScripts::test

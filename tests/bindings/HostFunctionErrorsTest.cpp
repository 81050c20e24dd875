#include "support/CountedObject.h"
#include "support/EnvironmentFixture.h"
#include "support/ReactingLogger.h"

#include <new>
#include <ostream>
#include <stdexcept>

namespace tbScripts::test
{

using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace
{

struct Thrown
{
    const char* name;
    void (*raise)();
    const char* message;           // what the script sees
    std::vector<LogEntry> entries; // what is logged about it
};

std::ostream& operator<<(std::ostream& stream, const Thrown& row)
{
    return stream << row.name;
}

} // namespace

class HostFunctionThrowingTest : public EnvironmentFixture,
                                 public ::testing::WithParamInterface<Thrown>
{
protected:
    HostFunctionThrowingTest()
    {
        declare(
            "fail",
            {},
            [](const Parameters&)
            {
                GetParam().raise();
                return FunctionParameter::VOID;
            });
    }
};

TEST_P(HostFunctionThrowingTest, RaisesAScriptError)
{
    run("isDone, message = pcall(fail)");

    EXPECT_FALSE(environment().getVar("isDone", true));
    EXPECT_EQ(environment().getVar("message", ""), GetParam().message);
    EXPECT_EQ(m_log.takeEntries(), GetParam().entries);
}

TEST_P(HostFunctionThrowingTest, RaisesThroughACoroutine)
{
    run("isDone, message = coroutine.resume(coroutine.create(function() fail() end))");

    EXPECT_FALSE(environment().getVar("isDone", true));
    EXPECT_EQ(environment().getVar("message", ""), GetParam().message);
    EXPECT_EQ(m_log.takeEntries(), GetParam().entries);
}

TEST_P(HostFunctionThrowingTest, EndsAnUnprotectedScript)
{
    const bool isDone = runScript(environment(), "fail() isReached = true");

    EXPECT_FALSE(isDone);
    EXPECT_FALSE(environment().isVarSet("isReached"));
    std::vector<LogEntry> expected = GetParam().entries;
    expected.push_back(
        {std::string("Error while executing script 'test' : ") + GetParam().message,
         "LuaEnvironment"});
    EXPECT_EQ(m_log.takeEntries(), expected);
}

TEST_P(HostFunctionThrowingTest, RaisesWhileTheHostHandlesAnExceptionOfItsOwn)
{
    try
    {
        throw std::runtime_error("of the host");
    }
    catch (const std::exception&)
    {
        run("isDone, message = pcall(fail)");
    }

    EXPECT_EQ(environment().getVar("message", ""), GetParam().message);
    EXPECT_EQ(m_log.takeEntries(), GetParam().entries);
}

TEST_P(HostFunctionThrowingTest, LeavesTheFunctionUsable)
{
    run("for i = 1, 100 do pcall(fail) end");
    m_log.takeEntries();
    Function* const function = environment().getFunc("fail");
    function->addParameter(PARAM_TYPE_INT);

    function->setFunction([](const Parameters& parameters) { return parameters[0].getInt() + 1; });

    run("result = fail(7)");
    EXPECT_EQ(environment().getVar("result", -1), 8);
}

INSTANTIATE_TEST_SUITE_P(
    Kinds,
    HostFunctionThrowingTest,
    ::testing::Values(
        Thrown{
            "Text",
            [] { throw std::string("no such weapon"); },
            "no such weapon",
            {{"no such weapon", "LuaFunction"}}},
        Thrown{
            "RuntimeError",
            [] { throw std::runtime_error("out of range"); },
            "out of range",
            {{"out of range", "LuaFunction"}}},
        Thrown{
            "NoMemory",
            [] { throw std::bad_alloc(); },
            "std::bad_alloc",
            {{"std::bad_alloc", "LuaFunction"}}},
        Thrown{
            "EmptyCallableOfTheHost",
            [] { std::function<void()>()(); },
            "bad_function_call",
            {{"bad_function_call", "LuaFunction"}}},
        Thrown{"Int", [] { throw 7; }, "C++ exception", {}},
        Thrown{"CharacterPointer", [] { throw "literal"; }, "C++ exception", {}}),
    [](const auto& row) { return std::string(row.param.name); });

class HostFunctionErrorsTest : public EnvironmentFixture
{
};

TEST_F(HostFunctionErrorsTest, EmptyCallableIsLeftToTheInterpreter)
{
    declare("spawn", {}, Function::Callable());

    run("isDone, message = pcall(spawn)");

    EXPECT_FALSE(environment().getVar("isDone", true));
    EXPECT_EQ(environment().getVar("message", ""), "C++ exception");
    EXPECT_THAT(m_log.takeEntries(), IsEmpty());
}

TEST_F(HostFunctionErrorsTest, EmptyCallableInACoroutineIsLeftToTheInterpreter)
{
    declare("spawn", {PARAM_TYPE_INT}, Function::Callable());

    run("isDone, message = coroutine.resume(coroutine.create(spawn), 1)");

    EXPECT_FALSE(environment().getVar("isDone", true));
    EXPECT_EQ(environment().getVar("message", ""), "C++ exception");
}

TEST_F(HostFunctionErrorsTest, EmptyCallableIsContainedWhileTheHostHandlesAnException)
{
    declare("spawn", {PARAM_TYPE_INT}, Function::Callable());
    bool isDone = true;

    try
    {
        throw std::runtime_error("of the host");
    }
    catch (const std::exception&)
    {
        isDone = runScript(environment(), "spawn(1)");
    }

    EXPECT_FALSE(isDone);
    EXPECT_THAT(
        m_log.takeEntries(),
        ElementsAre(
            LogEntry{"Error while executing script 'test' : C++ exception", "LuaEnvironment"}));
}

TEST_F(HostFunctionErrorsTest, ArgumentsAreReadBeforeAnEmptyCallableIsNoticed)
{
    declare("spawn", {PARAM_TYPE_INT}, Function::Callable());

    run("isDone, message = pcall(spawn, {})\n");

    EXPECT_EQ(
        environment().getVar("message", ""),
        "Error l.-1 while calling spawn. Expected int, got table.");
    EXPECT_THAT(
        m_log.takeEntries(),
        ElementsAre(
            LogEntry{"Error l.-1 while calling spawn. Expected int, got table.", "LuaFunction"}));
}

TEST_F(HostFunctionErrorsTest, EmptyCallableLeavesTheFunctionUsable)
{
    Function* const function = declare("spawn", {PARAM_TYPE_INT}, Function::Callable());
    run("for i = 1, 10 do pcall(spawn, 1) end");

    function->setFunction([](const Parameters& parameters) { return parameters[0].getInt() + 1; });

    run("result = spawn(7)");
    EXPECT_EQ(environment().getVar("result", -1), 8);
}

TEST_F(HostFunctionErrorsTest, TextWithZeroByteIsLoggedWholeAndRaisedUpToIt)
{
    declare(
        "fail",
        {},
        [](const Parameters&) -> FunctionParameter { throw std::string("seen\0unseen", 11); });

    run("isDone, message = pcall(fail)");

    EXPECT_EQ(environment().getVar("message", ""), "seen");
    EXPECT_THAT(
        m_log.takeEntries(), ElementsAre(LogEntry{std::string("seen\0unseen", 11), "LuaFunction"}));
}

TEST_F(HostFunctionErrorsTest, LogComesBeforeTheScriptSeesTheError)
{
    std::size_t entriesSeen = 0;
    declare(
        "fail", {}, [](const Parameters&) -> FunctionParameter { throw std::string("broken"); });
    declare(
        "look",
        {},
        [&](const Parameters&)
        {
            entriesSeen = m_log.takeEntries().size();
            return FunctionParameter::VOID;
        });

    run("pcall(fail) look()");

    EXPECT_EQ(entriesSeen, 1U);
}

TEST_F(HostFunctionErrorsTest, EveryObjectOfTheCallableEnds)
{
    CountedObject::restart();
    declare(
        "fail",
        {PARAM_TYPE_INT},
        [](const Parameters& parameters) -> FunctionParameter
        {
            const CountedObject local;
            if (parameters[0].getInt() == 1)
                throw std::string("text");
            if (parameters[0].getInt() == 2)
                throw std::runtime_error("error");
            throw 7;
        });

    run("for i = 1, 300 do pcall(fail, i % 3) end");

    EXPECT_EQ(CountedObject::getMade(), 300);
    EXPECT_EQ(CountedObject::getLiving(), 0);
    EXPECT_EQ(m_log.takeEntries().size(), 200U);
}

TEST_F(HostFunctionErrorsTest, ScriptErrorPassesThroughNoCallable)
{
    bool hasFailed = false;
    declare(
        "outer",
        {PARAM_TYPE_SCRIPT_FUNCTION},
        [&](const Parameters& parameters)
        {
            Parameters outputs;
            hasFailed = !environment().callScriptFunction(
                parameters[0].getScriptObject(), Parameters(), outputs);
            return 5;
        });

    run("result = outer(function() error('inner', 0) end)");

    EXPECT_TRUE(hasFailed);
    EXPECT_EQ(environment().getVar("result", -1), 5);
    EXPECT_THAT(m_log.takeEntries(), ElementsAre(LogEntry{"inner", "LuaEnvironment"}));
}

TEST_F(HostFunctionErrorsTest, NestedThrowEndsTheInnerCallOnly)
{
    declare(
        "inner", {}, [](const Parameters&) -> FunctionParameter { throw std::string("inner"); });
    declare(
        "outer",
        {PARAM_TYPE_INT},
        [this](const Parameters& parameters)
        {
            EXPECT_FALSE(runScript(environment(), "inner()", "nested"));
            return parameters[0].getInt();
        });

    run("result = outer(5)");

    EXPECT_EQ(environment().getVar("result", -1), 5);
    EXPECT_THAT(
        m_log.takeEntries(),
        ElementsAre(
            LogEntry{"inner", "LuaFunction"},
            LogEntry{"Error while executing script 'nested' : inner", "LuaEnvironment"}));
}

TEST_F(HostFunctionErrorsTest, ThrowFromACallableThatRebindsItselfIsReported)
{
    Function* const function = declare("fail", {}, Function::Callable());
    function->setFunction(
        [function](const Parameters&) -> FunctionParameter
        {
            function->setFunction(Function::Callable());
            throw std::runtime_error("rebound");
        });

    run("isDone, message = pcall(fail)");

    EXPECT_EQ(environment().getVar("message", ""), "rebound");
    EXPECT_THAT(m_log.takeEntries(), ElementsAre(LogEntry{"rebound", "LuaFunction"}));
}

TEST_F(HostFunctionErrorsTest, ExceptionOfTheLogReceiverIsDropped)
{
    const ReactingLogger logger([] { throw 7; });
    declare("fail", {}, [](const Parameters&) -> FunctionParameter { throw std::string("text"); });

    run("isDone, message = pcall(fail)");

    EXPECT_EQ(environment().getVar("message", ""), "text");
}

} // namespace tbScripts::test

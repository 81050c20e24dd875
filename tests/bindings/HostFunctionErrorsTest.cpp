#include "support/CountedObject.h"
#include "support/ReactingLogger.h"
#include "support/RowName.h"
#include "support/Steps.h"

#include <new>
#include <stdexcept>

namespace tbScripts::test
{

namespace
{

struct ForeignException
{
};

struct Thrown
{
    const char* row;
    void (*raise)();
    const char* message;           // what the script sees
    std::vector<LogEntry> entries; // what is logged about it
};

// Runs `code` while the host handles an exception of its own.
bool runWhileHandling(Environment& environment, const std::string& code)
{
    try
    {
        throw std::runtime_error("of the host");
    }
    catch (const std::exception&)
    {
        return runScript(environment, code);
    }
}

// Returns a callable that throws `value`.
template <typename Value>
Function::Callable throwing(const Value& value)
{
    return [value](const Parameters&) -> FunctionParameter { throw value; };
}

} // namespace

class HostFunctionErrorsTest : public EnvironmentFixture
{
protected:
    // Expects a script's `isDone` and `message` to be those of a call that failed.
    void expectFailed(const std::string& message)
    {
        is("isDone", "false");
        is("message", message);
    }

    static FunctionParameter plusOne(const Parameters& parameters)
    {
        return parameters[0].getInt() + 1;
    }
};

class HostFunctionThrowingTest : public OnRows<HostFunctionErrorsTest, Thrown>
{
protected:
    HostFunctionThrowingTest()
    {
        declare("fail", {}, doing([] { GetParam().raise(); }));
    }
};

TEST_P(HostFunctionThrowingTest, RaisesAScriptError)
{
    run("isDone, message = pcall(fail)");
    expectFailed(GetParam().message);
    expectLogged(GetParam().entries);
}

TEST_P(HostFunctionThrowingTest, EndsItsCoroutineAndNoOther)
{
    run("local failing = coroutine.create(function() fail() end)"
        " local other = coroutine.create(function() coroutine.yield(1) return 2 end)"
        " coroutine.resume(other)"
        " isDone, message = coroutine.resume(failing)"
        " state, _, second = coroutine.status(failing), coroutine.resume(other)");
    expectFailed(GetParam().message);
    is("state", "dead");
    is("second", "2");
    expectLogged(GetParam().entries);
}

TEST_P(HostFunctionThrowingTest, EndsAnUnprotectedScript)
{
    EXPECT_FALSE(runScript(environment(), "fail() isReached = true"));
    EXPECT_FALSE(environment().isVarSet("isReached"));
    EXPECT_EQ(environment().getLastExecutionResult().code, 5);
    std::vector<LogEntry> expected = GetParam().entries;
    expected.push_back(
        {std::string("Error while executing script 'test' : ") + GetParam().message,
         "LuaEnvironment"});
    expectLogged(expected);
}

TEST_P(HostFunctionThrowingTest, RaisesWhileTheHostHandlesAnExceptionOfItsOwn)
{
    EXPECT_TRUE(runWhileHandling(environment(), "isDone, message = pcall(fail)"));
    expectFailed(GetParam().message);
    expectLogged(GetParam().entries);
}

TEST_P(HostFunctionThrowingTest, FailsACallByTheHostAndNoHostFunctionAroundIt)
{
    run("function callFail() fail() end");
    const ScriptObjectReference callFail = environment().getScriptFunction("callFail");
    int failures = 0;
    Parameters outputs;
    declareAction(
        "outer",
        [&] { failures += environment().callScriptFunction(callFail, {}, outputs) ? 100 : 1; });

    EXPECT_FALSE(
        environment().callScriptFunction(environment().getScriptFunction("fail"), {}, outputs));
    EXPECT_EQ(environment().getLastExecutionResult().message, GetParam().message);
    EXPECT_EQ(environment().getLastExecutionResult().code, 5);
    run("outer() outer()");

    forgetLog();
    EXPECT_EQ(failures, 2);
}

TEST_P(HostFunctionThrowingTest, LeavesTheFunctionUsable)
{
    run("for i = 1, 100 do pcall(fail) end");
    forgetLog();
    Function* const function = environment().getFunc("fail");
    function->addParameter(PARAM_TYPE_INT);
    function->setFunction(plusOne);
    is("fail(7)", "8");
}

ROWS(
    HostFunctionThrowingTest,
    {"Text",
     [] { throw std::string("no such weapon"); },
     "no such weapon",
     {{"no such weapon", "LuaFunction"}}},
    {"EmptyText", [] { throw std::string(); }, "", {{"", "LuaFunction"}}},
    {"RuntimeError",
     [] { throw std::runtime_error("out of range"); },
     "out of range",
     {{"out of range", "LuaFunction"}}},
    {"NoMemory",
     [] { throw std::bad_alloc(); },
     "std::bad_alloc",
     {{"std::bad_alloc", "LuaFunction"}}},
    {"EmptyCallableOfTheHost",
     [] { std::function<void()>()(); },
     "bad_function_call",
     {{"bad_function_call", "LuaFunction"}}},
    {"Int", [] { throw 7; }, "C++ exception", {}},
    {"CharacterPointer", [] { throw "literal"; }, "C++ exception", {}},
    {"ForeignClass", [] { throw ForeignException(); }, "C++ exception", {}});

TEST_F(HostFunctionErrorsTest, EmptyCallableIsLeftToTheInterpreter)
{
    declare("spawn", {}, Function::Callable());
    run("isDone, message = pcall(spawn)");
    expectFailed("C++ exception");
}

TEST_F(HostFunctionErrorsTest, EmptyCallableInACoroutineIsLeftToTheInterpreter)
{
    declare("spawn", {PARAM_TYPE_INT}, Function::Callable());
    run("isDone, message = coroutine.resume(coroutine.create(spawn), 1)");
    expectFailed("C++ exception");
}

TEST_F(HostFunctionErrorsTest, EmptyCallableIsContainedWhileTheHostHandlesAnException)
{
    declare("spawn", {PARAM_TYPE_INT}, Function::Callable());
    EXPECT_FALSE(runWhileHandling(environment(), "spawn(1)"));
    expectLogged("Error while executing script 'test' : C++ exception", "LuaEnvironment");
}

TEST_F(HostFunctionErrorsTest, ArgumentsAreReadBeforeAnEmptyCallableIsNoticed)
{
    declare("spawn", {PARAM_TYPE_INT}, Function::Callable());
    run("isDone, message = pcall(spawn, {})");
    expectFailed("Error l.-1 while calling spawn. Expected int, got table.");
    expectLogged("Error l.-1 while calling spawn. Expected int, got table.", "LuaFunction");
}

TEST_F(HostFunctionErrorsTest, EmptyCallableLeavesTheFunctionUsable)
{
    Function* const function = declare("spawn", {PARAM_TYPE_INT}, Function::Callable());
    run("for i = 1, 10 do pcall(spawn, 1) end");
    function->setFunction(plusOne);
    is("spawn(7)", "8");
}

TEST_F(HostFunctionErrorsTest, TextWithZeroByteIsLoggedWholeAndRaisedUpToIt)
{
    declare("fail", {}, throwing(std::string("seen\0unseen", 11)));
    run("isDone, message = pcall(fail)");
    expectFailed("seen");
    expectLogged(std::string("seen\0unseen", 11), "LuaFunction");
}

TEST_F(HostFunctionErrorsTest, LogComesBeforeTheScriptSeesTheError)
{
    declare("fail", {}, throwing(std::string("broken")));
    declareAction("look", [this] { expectLogCount(1); });
    run("pcall(fail) look()");
}

TEST_F(HostFunctionErrorsTest, EveryObjectOfTheCallableIsDestroyed)
{
    CountedObject::restart();
    declare(
        "fail",
        {PARAM_TYPE_INT},
        doing(
            [](const Parameters& parameters)
            {
                const CountedObject local;
                if (parameters[0].getInt() == 1)
                    throw std::string("text");
                if (parameters[0].getInt() == 2)
                    throw std::runtime_error("error");
                throw 7;
            }));

    run("for i = 1, 300 do pcall(fail, i % 3) end");

    EXPECT_EQ(CountedObject::getMade(), 300);
    EXPECT_EQ(CountedObject::getLiving(), 0);
    expectLogCount(200);
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
    is("outer(function() error('inner', 0) end)", "5");
    EXPECT_TRUE(hasFailed);
    expectLogged("inner", "LuaEnvironment");
}

TEST_F(HostFunctionErrorsTest, NestedThrowEndsTheInnerCallOnly)
{
    declare("inner", {}, throwing(std::string("inner")));
    declare(
        "outer",
        {PARAM_TYPE_INT},
        [this](const Parameters& parameters)
        {
            EXPECT_FALSE(runScript(environment(), "inner()", "nested"));
            return parameters[0].getInt();
        });
    is("outer(5)", "5");
    expectLogged(
        {{"inner", "LuaFunction"},
         {"Error while executing script 'nested' : inner", "LuaEnvironment"}});
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
    expectFailed("rebound");
    expectLogged("rebound", "LuaFunction");
}

TEST_F(HostFunctionErrorsTest, ExceptionOfTheLogReceiverIsDropped)
{
    const ReactingLogger logger([] { throw 7; });
    declare("fail", {}, throwing(std::string("text")));
    run("isDone, message = pcall(fail)");
    expectFailed("text");
}

} // namespace tbScripts::test

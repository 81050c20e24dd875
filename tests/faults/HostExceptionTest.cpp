// What host callables throw: a text becomes a script error and is logged, anything else is left to
// the interpreter. Nothing reaches the caller of the library.

#include "support/CallContextFixture.h"
#include "support/CountedObject.h"
#include "support/RowName.h"
#include "support/Sanitizers.h"

#include <new>
#include <stdexcept>
#include <string>

namespace tbScripts::test
{

namespace
{

struct ForeignException
{
};

struct ThrownRow
{
    const char* row;
    void (*throwIt)();
    const char* scriptText;
    std::vector<LogEntry> entries;
};

std::vector<ThrownRow> allThrown()
{
    return {
        {"String",
         [] { throw std::string("no such enemy"); },
         "no such enemy",
         {LogEntry{"no such enemy", "LuaFunction"}}},
        {"EmptyString", [] { throw std::string(); }, "", {LogEntry{"", "LuaFunction"}}},
        {"RuntimeError",
         [] { throw std::runtime_error("out of range"); },
         "out of range",
         {LogEntry{"out of range", "LuaFunction"}}},
        {"BadAlloc",
         [] { throw std::bad_alloc(); },
         "std::bad_alloc",
         {LogEntry{"std::bad_alloc", "LuaFunction"}}},
        {"Int", [] { throw 7; }, "C++ exception", {}},
        {"CString", [] { throw "text"; }, "C++ exception", {}},
        {"ForeignClass", [] { throw ForeignException(); }, "C++ exception", {}}};
}

} // namespace

class ThrownByHostTest : public OnRows<EnvironmentFixture, ThrownRow>
{
protected:
    ThrownByHostTest()
    {
        declareAction(
            "fail",
            []
            {
                const CountedObject local;
                GetParam().throwIt();
            });
    }
};

ROWS(ThrownByHostTest, allThrown());

TEST_P(ThrownByHostTest, ScriptCatchesItAsItsText)
{
    run("works, text = pcall(fail)");

    EXPECT_FALSE(environment().getVar("works", true));
    EXPECT_EQ(environment().getVar("text", "none"), GetParam().scriptText);
    EXPECT_EQ(m_log.takeEntries(), GetParam().entries);
}

TEST_P(ThrownByHostTest, UncaughtItFailsTheExecution)
{
    const bool hasSucceeded = runScript(environment(), "fail()", "round");

    std::vector<LogEntry> expected = GetParam().entries;
    expected.push_back(
        {std::string("Error while executing script 'round' : ") + GetParam().scriptText,
         "LuaEnvironment"});
    EXPECT_FALSE(hasSucceeded);
    EXPECT_EQ(environment().getLastExecutionResult().code, 5);
    EXPECT_EQ(m_log.takeEntries(), expected);
}

TEST_P(ThrownByHostTest, DestructorsOfTheCallableRun)
{
    CountedObject::restart();

    run("for i = 1, 100 do pcall(fail) end");

    m_log.takeEntries();
    EXPECT_EQ(CountedObject::getMade(), 100);
    EXPECT_EQ(CountedObject::getLiving(), 0);
}

TEST_P(ThrownByHostTest, CoroutineDiesOfItAndOthersGoOn)
{
    run(R"(
        local failing = coroutine.create(fail)
        local other = coroutine.create(function() coroutine.yield(1) return 2 end)
        coroutine.resume(other)
        works, text = coroutine.resume(failing)
        state = coroutine.status(failing)
        _, second = coroutine.resume(other)
    )");

    m_log.takeEntries();
    EXPECT_EQ(environment().getVar("text", "none"), GetParam().scriptText);
    EXPECT_EQ(environment().getVar("state", "none"), "dead");
    EXPECT_EQ(environment().getVar("second", 0), 2);
}

TEST_P(ThrownByHostTest, CallByTheHostItselfFailsAndInsideAnotherHostCallItStopsThere)
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
    EXPECT_EQ(environment().getLastExecutionResult().message, GetParam().scriptText);
    EXPECT_EQ(environment().getLastExecutionResult().code, 5);
    run("outer() outer()");

    m_log.takeEntries();
    EXPECT_EQ(failures, 2);
}

using HostExceptionContextTest = OnValues<CallContextFixture, CALL_CONTEXT>;

VALUES(HostExceptionContextTest, ::testing::ValuesIn(allCallContexts()));

TEST_P(HostExceptionContextTest, ExceptionsUnderAMetamethodOfTheGlobalsAreContained)
{
    declare("throwInt", {}, [](const Parameters&) -> FunctionParameter { throw 7; });
    declare(
        "throwString", {}, [](const Parameters&) -> FunctionParameter { throw std::string("no"); });
    run("local throwInt, throwString = throwInt, throwString setmetatable(_G, {__index = "
        "function(_, name) if name == 'int' then throwInt() else throwString() end end})");

    int score = 0;
    performIn(GetParam(), [&] { score = environment().getVar("int", -1); });
    EXPECT_EQ(score, -1);
    expectLogged("C++ exception", "LuaEnvironment");
    performIn(GetParam(), [&] { score = environment().getVar("text", -2); });

    EXPECT_EQ(score, -2);
    expectLogged({{"no", "LuaFunction"}, {"no", "LuaEnvironment"}}); // by both sides
}

TEST_P(HostExceptionContextTest, ForeignExceptionUnderAnExecutionIsContained)
{
    declare("fail", {}, [](const Parameters&) -> FunctionParameter { throw 7; });

    bool hasSucceeded = true;
    performIn(GetParam(), [&] { hasSucceeded = runScript(environment(), "fail()", "round"); });

    EXPECT_FALSE(hasSucceeded);
    expectLogged("Error while executing script 'round' : C++ exception", "LuaEnvironment");
}

using HostExceptionTest = EnvironmentFixture;

TEST_F(HostExceptionTest, EmptyCallableIsAnErrorOfEachCall)
{
    declare("empty", {}, nullptr);

    run("works, text = pcall(empty)");

    EXPECT_FALSE(environment().getVar("works", true));
    EXPECT_EQ(environment().getVar("text", "none"), "C++ exception");
}

TEST_F(HostExceptionTest, NoexceptFunctionWithAWrongArgumentIsAScriptError)
{
    bool isCalled = false;
    declare(
        "take",
        {PARAM_TYPE_INT},
        [&isCalled](const Parameters&) noexcept
        {
            isCalled = true;
            return FunctionParameter();
        });

    run("\nworks, text = pcall(function() take({}) end)");

    EXPECT_FALSE(isCalled);
    EXPECT_EQ(
        environment().getVar("text", "none"),
        "Error l.2 while calling take. Expected int, got table.");
    expectLogged("Error l.2 while calling take. Expected int, got table.", "LuaFunction");
}

TEST_F(HostExceptionTest, MismatchWithoutCallingScriptHasNoLine)
{
    declare("take", {PARAM_TYPE_INT}, [](const Parameters&) { return FunctionParameter(1); });
    const ScriptObjectReference take = environment().getScriptFunction("take");
    const std::vector<FunctionParameter> inputs{FunctionParameter("text")};
    Parameters outputs;

    EXPECT_FALSE(environment().callScriptFunction(take, inputs, outputs));
    const std::string text = "Error l.-1 while calling take. Expected int, got string.";
    expectLogged({{text, "LuaFunction"}, {text, "LuaEnvironment"}});

    run("works, text = coroutine.resume(coroutine.create(take), {})");
    EXPECT_FALSE(environment().getVar("works", true));
    expectLogged("Error l.-1 while calling take. Expected int, got table.", "LuaFunction");
}

TEST_F(HostExceptionTest, ManyMismatchesLeaveNothingBehind)
{
    CountedObject::restart();
    declare(
        "take",
        {PARAM_TYPE_STRING, PARAM_TYPE_INT},
        [held = CountedObject()](const Parameters&) { return FunctionParameter(1); });
    const int living = CountedObject::getLiving();
    environment().setVar("tries", repetitions(10000));

    run("local text = string.rep('x', 10000)"
        "failures = 0 for i = 1, tries do"
        "  if not pcall(take, text, {}) then failures = failures + 1 end end");

    EXPECT_EQ(environment().getVar("failures", 0), repetitions(10000));
    EXPECT_EQ(CountedObject::getLiving(), living);
    EXPECT_EQ(m_log.takeEntries().size(), static_cast<std::size_t>(repetitions(10000)));
}

} // namespace tbScripts::test

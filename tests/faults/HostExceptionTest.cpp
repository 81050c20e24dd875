// Exceptions of host callables from wherever a host may call: nothing reaches the caller of the
// library.

#include "support/CallContextFixture.h"
#include "support/CountedObject.h"
#include "support/RowName.h"
#include "support/Sanitizers.h"

#include <string>

namespace tbScripts::test
{

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

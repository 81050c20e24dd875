// Carrying a value over may collect garbage, and a finaliser of a script may raise just then.

#include "support/LuaFunctionFixture.h"
#include "support/ReactingLogger.h"

namespace tbScripts::test
{

using ::testing::ElementsAre;

class HostFunctionFinaliserTest : public LuaFunctionFixture
{
protected:
    HostFunctionFinaliserTest()
    {
        declare(
            "collectSoon",
            [this](const Parameters&)
            {
                collectAtNextAllocation();
                return FunctionParameter::VOID;
            });
        // One finaliser only: nothing may raise outside of the call.
        run("collectgarbage() collectgarbage('stop')"
            " getmetatable(newproxy(true)).__gc = function() error('late', 0) end");
    }

    void collectAtNextAllocation()
    {
        lua_gc(state(), LUA_GCSETSTEPMUL, 1000000);
        lua_gc(state(), LUA_GCRESTART, 0);
    }
};

TEST_F(HostFunctionFinaliserTest, ErrorWhileAnArgumentIsReadIsAScriptError)
{
    bool isCalled = false;
    lua::LuaFunction& function =
        declare("take", [&isCalled](const Parameters&) { return isCalled = true; });
    function.addParameter(PARAM_TYPE_STRING); // a number becomes a text, which allocates

    run("collectSoon() isDone, message = pcall(take, 0.5)");

    EXPECT_EQ(global("message"), "late");
    EXPECT_FALSE(isCalled);
    EXPECT_EQ(function.getDefinition().runningCalls, 0U);
}

TEST_F(HostFunctionFinaliserTest, ErrorWhileTheResultIsPushedIsAScriptError)
{
    lua::LuaFunction& function = declare(
        "give",
        [this](const Parameters&)
        {
            collectAtNextAllocation();
            return FunctionParameter(std::string(1000, 'x'));
        });

    run("isDone, message = pcall(give)");

    EXPECT_EQ(global("message"), "late");
    EXPECT_EQ(function.getDefinition().runningCalls, 0U);
}

TEST_F(HostFunctionFinaliserTest, ErrorWhileAnInstanceIsPushedIsAScriptError)
{
    int object = 0;
    declareUserType("Enemy");
    lua::LuaFunction& function = declare(
        "give",
        [this, &object](const Parameters&)
        {
            collectAtNextAllocation();
            return FunctionParameter(&object, "Enemy", false);
        });

    run("isDone, message = pcall(give)");

    EXPECT_EQ(global("message"), "late");
    EXPECT_EQ(function.getDefinition().runningCalls, 0U);
}

TEST_F(HostFunctionFinaliserTest, ErrorWhileAMismatchIsRaisedIsAScriptError)
{
    lua::LuaFunction& function = declare("take", nullptr);
    function.addParameter(PARAM_TYPE_INT);
    ReactingLogger logger([this] { collectAtNextAllocation(); });

    run("isDone, message = pcall(take, 'x')");

    EXPECT_EQ(global("message"), "late");
    EXPECT_EQ(function.getDefinition().runningCalls, 0U);
    EXPECT_THAT(
        logger.takeEntries(),
        ElementsAre(
            LogEntry{"Error l.-1 while calling take. Expected int, got string.", "LuaFunction"}));
}

} // namespace tbScripts::test

// Carrying a value over may collect garbage, and a finaliser of a script may raise just then.

#include "support/LuaFunctionFixture.h"
#include "support/ReactingLogger.h"

namespace tbScripts::test
{

class HostFunctionFinaliserTest : public LuaFunctionFixture
{
protected:
    HostFunctionFinaliserTest()
    {
        declare("collectSoon", doing([this] { collectAtNextAllocation(); }));
        // One finaliser only: nothing may raise outside of the call.
        run("collectgarbage() collectgarbage('stop')"
            " getmetatable(newproxy(true)).__gc = function() error('late', 0) end");
    }

    void collectAtNextAllocation()
    {
        lua_gc(state(), LUA_GCSETSTEPMUL, 1000000);
        lua_gc(state(), LUA_GCRESTART, 0);
    }

    /// Declares `give`, which returns `value` and has the next allocation collect.
    lua::LuaFunction& declareGive(const FunctionParameter& value)
    {
        return declare(
            "give",
            [this, value](const Parameters&)
            {
                collectAtNextAllocation();
                return value;
            });
    }

    /// Runs `code`, which has to set `message` to what the finaliser raises.
    void expectLate(const lua::LuaFunction& function, const std::string& code)
    {
        run(code);
        EXPECT_EQ(global("message"), "late");
        EXPECT_EQ(function.getDefinition().runningCalls, 0U);
    }
};

TEST_F(HostFunctionFinaliserTest, ErrorWhileAnArgumentIsReadIsAScriptError)
{
    lua::LuaFunction& function = declare("take", uncallable());
    function.addParameter(PARAM_TYPE_STRING); // a number becomes a text, which allocates
    expectLate(function, "collectSoon() isDone, message = pcall(take, 0.5)");
}

TEST_F(HostFunctionFinaliserTest, ErrorWhileTheResultIsPushedIsAScriptError)
{
    expectLate(
        declareGive(FunctionParameter(std::string(1000, 'x'))), "isDone, message = pcall(give)");
}

TEST_F(HostFunctionFinaliserTest, ErrorWhileAnInstanceIsPushedIsAScriptError)
{
    int object = 0;
    declareUserType("Enemy");
    expectLate(
        declareGive(FunctionParameter(&object, "Enemy", false)), "isDone, message = pcall(give)");
}

TEST_F(HostFunctionFinaliserTest, ErrorWhileAMismatchIsRaisedIsAScriptError)
{
    lua::LuaFunction& function = declare("take", nullptr);
    function.addParameter(PARAM_TYPE_INT);
    ReactingLogger logger([this] { collectAtNextAllocation(); });
    expectLate(function, "isDone, message = pcall(take, 'x')");
    const std::vector<LogEntry> expected{
        {"Error l.-1 while calling take. Expected int, got string.", "LuaFunction"}};
    EXPECT_EQ(logger.takeEntries(), expected);
}

} // namespace tbScripts::test

#include "support/EnvironmentFixture.h"

#include <tbScripts/Bind.h>
#include <tbScripts/ScriptFunction.h>

#include <string>
#include <tuple>
#include <vector>

namespace tbScripts::test
{

namespace
{

struct Point
{
    int x = 0;
};

} // namespace

class ScriptFunctionTest : public EnvironmentFixture
{
protected:
    ScriptFunctionTest() { bindType<Point>(environment(), "Point").field<&Point::x>("x"); }
};

TEST_F(ScriptFunctionTest, PassesAndReturnsValues)
{
    run("function f(a, b) return a + #b end");
    const ScriptFunction<double(int, std::string)> function(environment(), "f");
    EXPECT_TRUE(function);
    EXPECT_DOUBLE_EQ(function(2, "abc"), 5);
    EXPECT_TRUE(function.getLastResult().success);
}

TEST_F(ScriptFunctionTest, ReturnsSeveralResults)
{
    run("function f(p) p.x = p.x + 1 return 'ok', p, {1, 2} end");
    Point point;
    const ScriptFunction<std::tuple<std::string, Point*, std::vector<int>>(Point&)> function(
        environment(), "f");
    const auto [text, object, list] = function(point);
    EXPECT_EQ(text, "ok");
    EXPECT_EQ(object, &point);
    EXPECT_EQ(list.size(), 2U);
    EXPECT_EQ(point.x, 1);
}

TEST_F(ScriptFunctionTest, PassesMoreValuesThanAStackHasRoomForUnasked)
{
    run("function count(...) return select('#', ...) end");
    using Thirty = ScriptFunction<int(
        double,
        double,
        double,
        double,
        double,
        double,
        double,
        double,
        double,
        double,
        double,
        double,
        double,
        double,
        double,
        double,
        double,
        double,
        double,
        double,
        double,
        double,
        double,
        double,
        double,
        double,
        double,
        double,
        double,
        double)>;
    const Thirty count(environment(), "count");
    const auto countThirty = [&count]
    {
        return count(
            1,
            2,
            3,
            4,
            5,
            6,
            7,
            8,
            9,
            10,
            1,
            2,
            3,
            4,
            5,
            6,
            7,
            8,
            9,
            10,
            1,
            2,
            3,
            4,
            5,
            6,
            7,
            8,
            9,
            10);
    };
    EXPECT_EQ(countThirty(), 30);
    bind(environment(), "countThirty", countThirty); // where scripts have filled the stack
    is("select(15, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, countThirty())", "30");
}

TEST_F(ScriptFunctionTest, MayBeDroppedWhileItRuns)
{
    ScriptFunction<int()> function;
    bind(
        environment(), "drop", [&function] { function.editReference() = ScriptObjectReference(); });
    run("function f() drop() f = nil collectgarbage() return 3 end");
    function = ScriptFunction<int()>(environment(), "f");
    EXPECT_EQ(function(), 3);
    EXPECT_FALSE(function);
}

TEST_F(ScriptFunctionTest, ErrorOfTheScriptIsLoggedAndReturnsADefault)
{
    run("function f() error('no way', 0) end");
    const ScriptFunction<int()> function(environment(), "f");
    EXPECT_EQ(function(), 0);
    EXPECT_EQ(function.getLastResult().code, EXECUTION_RUNTIME_ERROR);
    EXPECT_EQ(function.getLastResult().message, "no way");
    expectLogged("no way", "LuaEnvironment");

    run("function g() return 4 end");
    const ScriptFunction<int()> other(environment(), "g");
    EXPECT_EQ(other(), 4);
}

TEST_F(ScriptFunctionTest, ResultOfAnotherKindIsAnError)
{
    run("function f() return {} end");
    const ScriptFunction<int()> function(environment(), "f");
    EXPECT_EQ(function(), 0);
    expectLogged("Error l.-1 while calling callScript. Expected int, got table.", "LuaEnvironment");
}

TEST_F(ScriptFunctionTest, EmptyOneFails)
{
    const std::string message =
        "A script function is called that designates nothing, or whose environment is gone.";
    ScriptFunction<void()> function(environment(), "missing");
    EXPECT_FALSE(function);
    function();
    EXPECT_FALSE(function.getLastResult().success);
    expectLogged(message, "LuaEnvironment");

    run("function f() end");
    function = ScriptFunction<void()>(environment(), "f");
    destroyEnvironment();
    function();
    expectLogged(message, "LuaEnvironment");
}

TEST_F(ScriptFunctionTest, ArgumentOfATypeThatIsNotDeclaredIsAnError)
{
    struct Unknown
    {
    };

    Unknown unknown;
    run("called = false function f() called = true end");
    const ScriptFunction<void(Unknown&)> function(environment(), "f");
    function(unknown);
    EXPECT_FALSE(function.getLastResult().success);
    expectLogCount(1);
    is("tostring(called)", "false");
}

} // namespace tbScripts::test

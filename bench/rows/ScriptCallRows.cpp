#include "rows/Rows.h"
#include "rows/ScriptRow.h"
#include "rows/TwiceFunction.h"
#include "support/Failure.h"

#include <tbScripts/ScriptFunction.h>

#include <tuple>

namespace bench
{

namespace
{

using tbScripts::FunctionParameter;
using tbScripts::ScriptFunction;

using Outputs = tbMemory::BufferView<FunctionParameter>;

constexpr const char* SUBJECT = "Script functions called by the host";
constexpr double GOAL_OF_TYPED = 1.1;

// Reads a number that a call has given.
double resultAt(lua_State* state, int index)
{
    if (lua_isnumber(state, index) == 0)
        fail("a script gives no number");
    return lua_tonumber(state, index);
}

LibraryLoop callInLibrary(LibraryHost& host)
{
    const auto function = host.getEnvironment().getScriptFunction("step");
    return [function](LibraryHost& running, std::size_t n)
    {
        double sum = 0.0;
        FunctionParameter results[] = {0.0};
        Outputs outputs = results;
        for (std::size_t i = 0; i < n; ++i)
        {
            if (!running.getEnvironment().callScriptFunction(
                    function, {static_cast<double>(i)}, outputs))
                fail("step");
            sum += results[0].getDouble();
        }
        return sum;
    };
}

LuaLoop callByHand(LuaHost& host)
{
    const int function = host.refer("step");
    return [function](LuaHost& running, std::size_t n)
    {
        lua_State* const state = running.getState();
        double sum = 0.0;
        for (std::size_t i = 0; i < n; ++i)
        {
            lua_rawgeti(state, LUA_REGISTRYINDEX, function);
            lua_pushnumber(state, static_cast<double>(i));
            if (lua_pcall(state, 1, 1, 0) != 0)
                fail(lua_tostring(state, -1));
            sum += resultAt(state, -1);
            lua_pop(state, 1);
        }
        return sum;
    };
}

// A call that fails would be logged, which ends the program.
LibraryLoop callTyped(LibraryHost& host)
{
    const ScriptFunction<double(double)> step(host.getEnvironment(), "step");
    return [step](LibraryHost& /*running*/, std::size_t n)
    {
        double sum = 0.0;
        for (std::size_t i = 0; i < n; ++i)
            sum += step(static_cast<double>(i));
        return sum;
    };
}

LibraryLoop callEightInLibrary(LibraryHost& host)
{
    const auto function = host.getEnvironment().getScriptFunction("step");
    return [function](LibraryHost& running, std::size_t n)
    {
        double sum = 0.0;
        FunctionParameter results[] = {0.0};
        Outputs outputs = results;
        for (std::size_t i = 0; i < n; ++i)
        {
            const auto first = static_cast<double>(i);
            if (!running.getEnvironment().callScriptFunction(
                    function, {first, 2.0, 3.0, 4.0, 5.0, 6.0, 7.0, 8.0}, outputs))
                fail("step");
            sum += results[0].getDouble();
        }
        return sum;
    };
}

LuaLoop callEightByHand(LuaHost& host)
{
    const int function = host.refer("step");
    return [function](LuaHost& running, std::size_t n)
    {
        lua_State* const state = running.getState();
        double sum = 0.0;
        for (std::size_t i = 0; i < n; ++i)
        {
            lua_rawgeti(state, LUA_REGISTRYINDEX, function);
            lua_pushnumber(state, static_cast<double>(i));
            for (int argument = 2; argument <= 8; ++argument)
                lua_pushnumber(state, argument);
            if (lua_pcall(state, 8, 1, 0) != 0)
                fail(lua_tostring(state, -1));
            sum += resultAt(state, -1);
            lua_pop(state, 1);
        }
        return sum;
    };
}

LibraryLoop callEightTyped(LibraryHost& host)
{
    using Step =
        ScriptFunction<double(double, double, double, double, double, double, double, double)>;
    const Step step(host.getEnvironment(), "step");
    return [step](LibraryHost& /*running*/, std::size_t n)
    {
        double sum = 0.0;
        for (std::size_t i = 0; i < n; ++i)
            sum += step(static_cast<double>(i), 2.0, 3.0, 4.0, 5.0, 6.0, 7.0, 8.0);
        return sum;
    };
}

LibraryLoop callForThreeInLibrary(LibraryHost& host)
{
    const auto function = host.getEnvironment().getScriptFunction("step");
    return [function](LibraryHost& running, std::size_t n)
    {
        double sum = 0.0;
        FunctionParameter results[] = {0.0, 0.0, 0.0};
        Outputs outputs = results;
        for (std::size_t i = 0; i < n; ++i)
        {
            if (!running.getEnvironment().callScriptFunction(
                    function, {static_cast<double>(i)}, outputs))
                fail("step");
            sum += results[0].getDouble() + results[1].getDouble() + results[2].getDouble();
        }
        return sum;
    };
}

LuaLoop callForThreeByHand(LuaHost& host)
{
    const int function = host.refer("step");
    return [function](LuaHost& running, std::size_t n)
    {
        lua_State* const state = running.getState();
        double sum = 0.0;
        for (std::size_t i = 0; i < n; ++i)
        {
            lua_rawgeti(state, LUA_REGISTRYINDEX, function);
            lua_pushnumber(state, static_cast<double>(i));
            if (lua_pcall(state, 1, 3, 0) != 0)
                fail(lua_tostring(state, -1));
            sum += resultAt(state, -3) + resultAt(state, -2) + resultAt(state, -1);
            lua_pop(state, 3);
        }
        return sum;
    };
}

LibraryLoop callForThreeTyped(LibraryHost& host)
{
    using Step = ScriptFunction<std::tuple<double, double, double>(double)>;
    const Step step(host.getEnvironment(), "step");
    return [step](LibraryHost& /*running*/, std::size_t n)
    {
        double sum = 0.0;
        for (std::size_t i = 0; i < n; ++i)
        {
            const auto [first, second, third] = step(static_cast<double>(i));
            sum += first + second + third;
        }
        return sum;
    };
}

} // namespace

void addScriptCallRows(RowList& rows)
{
    rows.push_back(makeHostRow(
        {SUBJECT,
         "double f(double)",
         goals::DESCRIBED,
         "function step(x) return x * 2 end",
         &callInLibrary,
         &callByHand,
         MANY,
         &callTyped,
         {},
         GOAL_OF_TYPED}));
    rows.push_back(makeHostRow(
        {SUBJECT,
         "f with 8 parameters",
         goals::DESCRIBED,
         "function step(a, b, c, d, e, f, g, h) return a + b + c + d + e + f + g + h end",
         &callEightInLibrary,
         &callEightByHand,
         MANY,
         &callEightTyped,
         {},
         GOAL_OF_TYPED}));
    rows.push_back(makeHostRow(
        {SUBJECT,
         "f with 3 results",
         goals::DESCRIBED,
         "function step(x) return x, x + 1, x + 2 end",
         &callForThreeInLibrary,
         &callForThreeByHand,
         MANY,
         &callForThreeTyped,
         {},
         GOAL_OF_TYPED}));
    rows.push_back(makeHostRow(
        {SUBJECT,
         "callback: f calls double g(double) of the host",
         goals::DESCRIBED,
         "function step(x) return twice(x) end",
         [](LibraryHost& host)
         {
             declareTwice(host.getEnvironment().setFunc("twice"));
             return callInLibrary(host);
         },
         [](LuaHost& host)
         {
             declareTwiceByHand(host.getState());
             return callByHand(host);
         },
         MANY,
         [](LibraryHost& host)
         {
             bindTwice(host.getEnvironment());
             return callTyped(host);
         },
         [](LibraryHost& host)
         {
             bindTwiceAsLeaf(host.getEnvironment());
             return callTyped(host);
         },
         GOAL_OF_TYPED}));
}

} // namespace bench

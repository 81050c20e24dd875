#include "rows/Rows.h"
#include "rows/ScriptRow.h"
#include "rows/TwiceFunction.h"
#include "support/Workload.h"

#include <tbScripts/Bind.h>
#include <tbScripts/Namespace.h>
#include <tbScripts/ScriptFunction.h>

#include <string_view>

namespace bench
{

namespace
{

using tbScripts::Environment;
using tbScripts::FunctionParameter;
using tbScripts::ScriptFunction;

using tbScripts::bind;
using tbScripts::leaf;

using tbScripts::PARAM_TYPE_DOUBLE;
using tbScripts::PARAM_TYPE_SCRIPT_FUNCTION;
using tbScripts::PARAM_TYPE_STRING;

using Arguments = tbMemory::BufferView<FunctionParameter>;

constexpr const char* SUBJECT = "Host functions";

int trimmedByHand(lua_State* state)
{
    std::size_t size = 0;
    const char* const text = luaL_checklstring(state, 1, &size);
    const std::string_view result = trimmed(std::string_view(text, size));
    lua_pushlstring(state, result.data(), result.size());
    return 1;
}

int sumByHand(lua_State* state)
{
    lua_pushnumber(
        state,
        sumOfEight(
            luaL_checknumber(state, 1),
            luaL_checknumber(state, 2),
            luaL_checknumber(state, 3),
            luaL_checknumber(state, 4),
            luaL_checknumber(state, 5),
            luaL_checknumber(state, 6),
            luaL_checknumber(state, 7),
            luaL_checknumber(state, 8)));
    return 1;
}

FunctionParameter sumInLibrary(const Arguments& arguments)
{
    return sumOfEight(
        arguments[0].getDouble(),
        arguments[1].getDouble(),
        arguments[2].getDouble(),
        arguments[3].getDouble(),
        arguments[4].getDouble(),
        arguments[5].getDouble(),
        arguments[6].getDouble(),
        arguments[7].getDouble());
}

// Keeps the function as long as the call lasts.
int keepByHand(lua_State* state)
{
    luaL_checktype(state, 1, LUA_TFUNCTION);
    lua_pushvalue(state, 1);
    luaL_unref(state, LUA_REGISTRYINDEX, luaL_ref(state, LUA_REGISTRYINDEX));
    return 0;
}

Row makeNumberRow()
{
    return makeScriptRow(
        {SUBJECT,
         "double f(double)",
         goals::DESCRIBED,
         R"(local twice = twice
            function run(n)
                local sum = 0
                for i = 1, n do sum = sum + twice(i) end
                return sum
            end)",
         [](Environment& environment) { declareTwice(environment.setFunc("twice")); },
         &declareTwiceByHand,
         &bindTwice,
         &bindTwiceAsLeaf});
}

Row makeTextRow()
{
    return makeScriptRow(
        {SUBJECT,
         "text f(text)",
         goals::DESCRIBED,
         R"(local trimmed = trimmed
            function run(n)
                local sum = 0
                for i = 1, n do sum = sum + #trimmed(' entity 0042 ') end
                return sum
            end)",
         [](Environment& environment)
         {
             define(
                 environment.setFunc("trimmed"),
                 {PARAM_TYPE_STRING},
                 [](const Arguments& arguments)
                 {
                     const std::string_view result = trimmed(arguments[0].getString());
                     return FunctionParameter(tbMemory::StringView(result.data(), result.size()));
                 });
         },
         [](lua_State* state) { lua_register(state, "trimmed", &trimmedByHand); },
         [](Environment& environment) { bind<&trimmed>(environment, "trimmed"); },
         [](Environment& environment) { bind(environment, "trimmed", leaf<&trimmed>); }});
}

Row makeNamespaceRow()
{
    return makeScriptRow(
        {SUBJECT,
         "a::b::f(double)",
         goals::DESCRIBED,
         R"(function run(n)
                local sum = 0
                for i = 1, n do sum = sum + a.b.twice(i) end
                return sum
            end)",
         [](Environment& environment)
         { declareTwice(environment.setNamespace("a::b")->setFunction("twice")); },
         [](lua_State* state)
         {
             lua_newtable(state);
             lua_newtable(state);
             lua_pushcfunction(state, &twiceByHand);
             lua_setfield(state, -2, "twice");
             lua_setfield(state, -2, "b");
             lua_setglobal(state, "a");
         },
         [](Environment& environment) { bind<&twice>(*environment.setNamespace("a::b"), "twice"); },
         [](Environment& environment)
         { bind(*environment.setNamespace("a::b"), "twice", leaf<&twice>); }});
}

Row makeEightRow()
{
    return makeScriptRow(
        {SUBJECT,
         "f with 8 parameters",
         goals::DESCRIBED,
         R"(local sumOfEight = sumOfEight
            function run(n)
                local sum = 0
                for i = 1, n do sum = sum + sumOfEight(i, 2, 3, 4, 5, 6, 7, 8) end
                return sum
            end)",
         [](Environment& environment)
         {
             define(
                 environment.setFunc("sumOfEight"),
                 {PARAM_TYPE_DOUBLE,
                  PARAM_TYPE_DOUBLE,
                  PARAM_TYPE_DOUBLE,
                  PARAM_TYPE_DOUBLE,
                  PARAM_TYPE_DOUBLE,
                  PARAM_TYPE_DOUBLE,
                  PARAM_TYPE_DOUBLE,
                  PARAM_TYPE_DOUBLE},
                 &sumInLibrary);
         },
         [](lua_State* state) { lua_register(state, "sumOfEight", &sumByHand); },
         [](Environment& environment) { bind<&sumOfEight>(environment, "sumOfEight"); },
         [](Environment& environment) { bind(environment, "sumOfEight", leaf<&sumOfEight>); }});
}

Row makeCoroutineRow()
{
    return makeScriptRow(
        {SUBJECT,
         "double f(double) in a coroutine",
         goals::DESCRIBED,
         R"(local twice = twice
            function run(n)
                return coroutine.wrap(function()
                    local sum = 0
                    for i = 1, n do sum = sum + twice(i) end
                    return sum
                end)()
            end)",
         [](Environment& environment) { declareTwice(environment.setFunc("twice")); },
         &declareTwiceByHand,
         &bindTwice,
         &bindTwiceAsLeaf});
}

Row makeReferenceRow()
{
    return makeScriptRow(
        {SUBJECT,
         "f(script function)",
         goals::DESCRIBED,
         R"(local keep = keep
            function run(n)
                local function step() end
                for i = 1, n do keep(step) end
                return n
            end)",
         [](Environment& environment)
         {
             define(
                 environment.setFunc("keep"),
                 {PARAM_TYPE_SCRIPT_FUNCTION},
                 [](const Arguments&) { return FunctionParameter::VOID; });
         },
         [](lua_State* state) { lua_register(state, "keep", &keepByHand); },
         [](Environment& environment)
         { bind(environment, "keep", [](const ScriptFunction<void()>&) {}); }});
}

} // namespace

void addHostFunctionRows(RowList& rows)
{
    rows.push_back(makeNumberRow());
    rows.push_back(makeTextRow());
    rows.push_back(makeNamespaceRow());
    rows.push_back(makeEightRow());
    rows.push_back(makeCoroutineRow());
    rows.push_back(makeReferenceRow());
}

} // namespace bench

#include "rows/Rows.h"
#include "rows/ScriptRow.h"

#include <tbScripts/ScriptObjectReference.h>

namespace bench
{

namespace
{

constexpr const char* SUBJECT = "References";
constexpr const char* SOURCE = "function step() end settings = {}";

template <typename Take>
LibraryLoop loopInLibrary(Take take)
{
    return [take](LibraryHost& host, std::size_t n)
    {
        double kept = 0.0;
        for (std::size_t i = 0; i < n; ++i)
        {
            const tbScripts::ScriptObjectReference reference = take(host.getEnvironment());
            kept += reference.getType() == tbScripts::PARAM_TYPE_VOID ? 0.0 : 1.0;
        }
        return kept;
    };
}

LuaLoop loopByHand(const char* name, int type)
{
    return [name, type](LuaHost& host, std::size_t n)
    {
        lua_State* const state = host.getState();
        double kept = 0.0;
        for (std::size_t i = 0; i < n; ++i)
        {
            lua_getglobal(state, name);
            if (lua_type(state, -1) == type)
            {
                const int reference = luaL_ref(state, LUA_REGISTRYINDEX);
                kept += reference == LUA_NOREF ? 0.0 : 1.0;
                luaL_unref(state, LUA_REGISTRYINDEX, reference);
            }
            else
            {
                lua_pop(state, 1);
            }
        }
        return kept;
    };
}

} // namespace

void addReferenceRows(RowList& rows)
{
    rows.push_back(makeHostRow(
        {SUBJECT,
         "a script function taken and dropped",
         1.2,
         SOURCE,
         [](LibraryHost&)
         {
             return loopInLibrary([](tbScripts::Environment& environment)
                                  { return environment.getScriptFunction("step"); });
         },
         [](LuaHost&) { return loopByHand("step", LUA_TFUNCTION); }}));
    rows.push_back(makeHostRow(
        {SUBJECT,
         "a table taken and dropped",
         1.2,
         SOURCE,
         [](LibraryHost&)
         {
             return loopInLibrary([](tbScripts::Environment& environment)
                                  { return environment.getVar("settings"); });
         },
         [](LuaHost&) { return loopByHand("settings", LUA_TTABLE); }}));
}

} // namespace bench

#include "rows/Rows.h"

#include <tbScripts/Environment.h>

#include <lua.hpp>

namespace bench
{

namespace
{

constexpr std::size_t STARTS = 1000;
constexpr std::size_t STARTS_IN_SMOKE = 10;

double startInLibrary(std::size_t starts)
{
    double started = 0.0;
    for (std::size_t i = 0; i < starts; ++i)
    {
        tbScripts::Environment environment;
        environment.setEnvironmentFor(tbScripts::INTERPRETER_LUA);
        started += environment.isVarSet("print") ? 1.0 : 0.0;
    }
    return started;
}

double startBare(std::size_t starts)
{
    double started = 0.0;
    for (std::size_t i = 0; i < starts; ++i)
    {
        lua_State* const state = luaL_newstate();
        luaL_openlibs(state);
        lua_getglobal(state, "print");
        started += lua_isnil(state, -1) ? 0.0 : 1.0;
        lua_close(state);
    }
    return started;
}

} // namespace

void addEnvironmentRows(RowList& rows)
{
    rows.push_back(
        {"Environments",
         "start and end of an environment",
         {{RIVAL_KIND::LIMIT, "bare state with libraries", 0.0}},
         STARTS,
         STARTS_IN_SMOKE,
         [](std::size_t starts)
         {
             return std::vector<Variant>{
                 {[starts] { return startInLibrary(starts); }, {}},
                 {[starts] { return startBare(starts); }, {}}};
         }});
}

} // namespace bench

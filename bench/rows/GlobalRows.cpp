#include "rows/Rows.h"
#include "rows/ScriptRow.h"

#include <string_view>

namespace bench
{

namespace
{

using tbScripts::Environment;

constexpr const char* SUBJECT = "Globals";

// Makes the row from what is done once on each side.
template <typename InLibrary, typename ByHand>
Row makeGlobalRow(const char* name, double goal, InLibrary inLibrary, ByHand byHand)
{
    return makeHostRow(
        {SUBJECT,
         name,
         goal,
         "lives = 3 title = 'entity 0042'",
         [inLibrary](LibraryHost&) -> LibraryLoop
         {
             return [inLibrary](LibraryHost& host, std::size_t n)
             {
                 Environment& environment = host.getEnvironment();
                 double sum = 0.0;
                 for (std::size_t i = 0; i < n; ++i)
                     sum += inLibrary(environment, static_cast<double>(i));
                 return sum;
             };
         },
         [byHand](LuaHost&) -> LuaLoop
         {
             return [byHand](LuaHost& host, std::size_t n)
             {
                 lua_State* const state = host.getState();
                 double sum = 0.0;
                 for (std::size_t i = 0; i < n; ++i)
                     sum += byHand(state, static_cast<double>(i));
                 return sum;
             };
         }});
}

double getNumberByHand(lua_State* state, double /*i*/)
{
    lua_getglobal(state, "lives");
    const double value = lua_isnumber(state, -1) != 0 ? lua_tonumber(state, -1) : -1.0;
    lua_pop(state, 1);
    return value;
}

double setNumberByHand(lua_State* state, double i)
{
    lua_pushnumber(state, i);
    lua_setglobal(state, "lives");
    return i;
}

double getTextByHand(lua_State* state, double /*i*/)
{
    lua_getglobal(state, "title");
    std::string_view text = "none";
    if (lua_isstring(state, -1) != 0)
    {
        std::size_t size = 0;
        const char* const data = lua_tolstring(state, -1, &size);
        text = std::string_view(data, size);
    }
    lua_pop(state, 1);
    return static_cast<double>(text.size());
}

double setTextByHand(lua_State* state, double i)
{
    lua_pushstring(state, "entity 0043");
    lua_setglobal(state, "title");
    return i;
}

double isSetByHand(lua_State* state, double /*i*/)
{
    lua_getglobal(state, "lives");
    const bool isSet = !lua_isnil(state, -1);
    lua_pop(state, 1);
    return isSet ? 1.0 : 0.0;
}

} // namespace

void addGlobalRows(RowList& rows)
{
    rows.push_back(makeGlobalRow(
        "getVar of a number",
        1.2,
        [](const Environment& environment, double) { return environment.getVar("lives", -1.0); },
        &getNumberByHand));
    rows.push_back(makeGlobalRow(
        "setVar of a number",
        1.2,
        [](Environment& environment, double i)
        {
            environment.setVar("lives", i);
            return i;
        },
        &setNumberByHand));
    rows.push_back(makeGlobalRow(
        "getVar of a text",
        1.2,
        [](const Environment& environment, double)
        { return static_cast<double>(environment.getVar("title", "none").size()); },
        &getTextByHand));
    rows.push_back(makeGlobalRow(
        "setVar of a text",
        1.2,
        [](Environment& environment, double i)
        {
            environment.setVar("title", "entity 0043");
            return i;
        },
        &setTextByHand));
    rows.push_back(makeGlobalRow(
        "isVarSet",
        1.2,
        [](const Environment& environment, double)
        { return environment.isVarSet("lives") ? 1.0 : 0.0; },
        &isSetByHand));
}

} // namespace bench

#include "core/lua/LuaErrorText.h"

#include "core/lua/LuaText.h"

#include <array>
#include <cstdio>

namespace tbScripts::lua
{

namespace
{

// As the interpreter writes it. Its own conversion allocates, which may run a finaliser that
// raises.
std::string numberText(double number)
{
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.14g", number);
    return text.data();
}

} // namespace

std::string errorTextAt(lua_State* state, int index)
{
    switch (lua_type(state, index))
    {
    case LUA_TSTRING:
        return std::string(std::string_view(textAt(state, index)));
    case LUA_TNUMBER:
        return numberText(lua_tonumber(state, index));
    default:
        return std::string("(error object is a ") + luaL_typename(state, index) + " value)";
    }
}

} // namespace tbScripts::lua

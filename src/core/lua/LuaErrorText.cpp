#include "core/lua/LuaErrorText.h"

#include "core/lua/LuaText.h"

#include <array>
#include <charconv>
#include <cmath>

namespace tbScripts::lua
{

namespace
{

// Formats as the interpreter does, in any locale. The interpreter's own conversion allocates, which
// may run a finaliser that raises.
std::string numberText(double number)
{
    constexpr int DIGITS = 14;
    if (std::isnan(number))
        return "nan"; // without a sign
    std::array<char, 32> text{};
    const std::to_chars_result end = std::to_chars(
        text.data(), text.data() + text.size(), number, std::chars_format::general, DIGITS);
    return std::string(text.data(), end.ptr);
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

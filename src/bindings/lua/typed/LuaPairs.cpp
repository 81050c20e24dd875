#include "bindings/lua/typed/LuaPairs.h"

#include "core/lua/LuaText.h"

#include <cstring>
#include <string>
#include <string_view>

namespace tbScripts::lua
{

namespace
{

// The interpreter's own function looks at no metatable. A script function costs compiled code
// nothing: it becomes part of it.
constexpr const char* PAIRS = R"(
local pairs, next, type, walkOf = ...
return function(value, ...)
    if type(value) == 'userdata' then
        local walk = walkOf(value)
        if walk then return next, walk(value), nil end
    end
    return pairs(value, ...)
end
)";
constexpr const char* NAME_OF_PAIRS = "=pairs";

// The entry of a user type's table that makes a table of an instance; nil for other values.
int walkOf(lua_State* state)
{
    if (!lua_getmetatable(state, 1))
        return 0;
    lua_pushliteral(state, "__pairs");
    lua_rawget(state, -2);
    return 1;
}

} // namespace

void teachPairs(LuaStateSlot& slot, lua_State* state)
{
    const int top = lua_gettop(state);
    slot.pushGlobals(state);
    lua_pushliteral(state, "pairs");
    lua_rawget(state, -2);
    if (!lua_iscfunction(state, -1))
    {
        lua_settop(state, top); // replaced already, by us or by a script
        return;
    }
    if (luaL_loadbuffer(state, PAIRS, std::strlen(PAIRS), NAME_OF_PAIRS) != 0)
        throw std::string(std::string_view(textAt(state, -1))); // no memory
    lua_pushvalue(state, -2);
    lua_pushliteral(state, "next");
    lua_rawget(state, top + 1);
    slot.pushType(state);
    lua_pushcfunction(state, &walkOf);
    lua_call(state, 4, 1);
    lua_pushliteral(state, "pairs");
    lua_insert(state, -2);
    lua_rawset(state, top + 1);
    lua_settop(state, top);
}

} // namespace tbScripts::lua

// Twenty host functions, with a hand-written binding against the C interface of the interpreter.

#include "Game.h"

#include <lua.hpp>

namespace
{

int intAt(lua_State* state, int index)
{
    return static_cast<int>(luaL_checknumber(state, index));
}

std::string_view textAt(lua_State* state, int index)
{
    std::size_t size = 0;
    const char* const text = luaL_checklstring(state, index, &size);
    return std::string_view(text, size);
}

int pushText(lua_State* state, const std::string& text)
{
    lua_pushlstring(state, text.data(), text.size());
    return 1;
}

int spawn(lua_State* state)
{
    lua_pushinteger(state, bench::spawn(textAt(state, 1)));
    return 1;
}

int despawn(lua_State* state)
{
    bench::despawn(intAt(state, 1));
    return 0;
}

int exists(lua_State* state)
{
    lua_pushboolean(state, bench::exists(intAt(state, 1)) ? 1 : 0);
    return 1;
}

int countEntities(lua_State* state)
{
    lua_pushinteger(state, bench::countEntities());
    return 1;
}

int nameOf(lua_State* state)
{
    return pushText(state, bench::nameOf(intAt(state, 1)));
}

int rename(lua_State* state)
{
    bench::rename(intAt(state, 1), textAt(state, 2));
    return 0;
}

int lifeOf(lua_State* state)
{
    lua_pushnumber(state, bench::lifeOf(intAt(state, 1)));
    return 1;
}

int setLife(lua_State* state)
{
    bench::setLife(intAt(state, 1), luaL_checknumber(state, 2));
    return 0;
}

int heal(lua_State* state)
{
    bench::heal(intAt(state, 1), luaL_checknumber(state, 2));
    return 0;
}

int isHostile(lua_State* state)
{
    lua_pushboolean(state, bench::isHostile(intAt(state, 1), intAt(state, 2)) ? 1 : 0);
    return 1;
}

int heightOf(lua_State* state)
{
    lua_pushnumber(state, bench::positionOf(intAt(state, 1)).y);
    return 1;
}

int moveTo(lua_State* state)
{
    bench::moveTo(intAt(state, 1), luaL_checknumber(state, 2), luaL_checknumber(state, 3));
    return 0;
}

int distance(lua_State* state)
{
    lua_pushnumber(state, bench::distance(intAt(state, 1), intAt(state, 2)));
    return 1;
}

int nearest(lua_State* state)
{
    lua_pushinteger(state, bench::nearest(intAt(state, 1), luaL_checknumber(state, 2)));
    return 1;
}

int say(lua_State* state)
{
    bench::say(intAt(state, 1), textAt(state, 2));
    return 0;
}

int play(lua_State* state)
{
    bench::play(textAt(state, 1), luaL_checknumber(state, 2));
    return 0;
}

int setWeather(lua_State* state)
{
    bench::setWeather(textAt(state, 1), luaL_checknumber(state, 2), lua_toboolean(state, 3) != 0);
    return 0;
}

int timeOfDay(lua_State* state)
{
    lua_pushnumber(state, bench::timeOfDay());
    return 1;
}

int random(lua_State* state)
{
    lua_pushinteger(state, bench::random(intAt(state, 1), intAt(state, 2)));
    return 1;
}

int translate(lua_State* state)
{
    return pushText(state, bench::translate(textAt(state, 1)));
}

} // namespace

void bindGameByHand(lua_State* state)
{
    lua_register(state, "spawn", &spawn);
    lua_register(state, "despawn", &despawn);
    lua_register(state, "exists", &exists);
    lua_register(state, "countEntities", &countEntities);
    lua_register(state, "nameOf", &nameOf);
    lua_register(state, "rename", &rename);
    lua_register(state, "lifeOf", &lifeOf);
    lua_register(state, "setLife", &setLife);
    lua_register(state, "heal", &heal);
    lua_register(state, "isHostile", &isHostile);
    lua_register(state, "heightOf", &heightOf);
    lua_register(state, "moveTo", &moveTo);
    lua_register(state, "distance", &distance);
    lua_register(state, "nearest", &nearest);
    lua_register(state, "say", &say);
    lua_register(state, "play", &play);
    lua_register(state, "setWeather", &setWeather);
    lua_register(state, "timeOfDay", &timeOfDay);
    lua_register(state, "random", &random);
    lua_register(state, "translate", &translate);
}

// The same classes, with a hand-written binding against the C interface of the interpreter. A
// shared function, which is not part of the measurement, creates the tables that the lists
// describe.

#include "Units.h"

#include <lua.hpp>

void registerType(
    lua_State* state,
    const char* name,
    const luaL_Reg* methods,
    const luaL_Reg* readers,
    const luaL_Reg* writers);

namespace
{

int intAt(lua_State* state, int index)
{
    return static_cast<int>(luaL_checknumber(state, index));
}

bool boolAt(lua_State* state, int index)
{
    luaL_checktype(state, index, LUA_TBOOLEAN);
    return lua_toboolean(state, index) != 0;
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

int pushUnit(lua_State* state, void* unit, const char* typeName)
{
    *static_cast<void**>(lua_newuserdata(state, sizeof unit)) = unit;
    luaL_getmetatable(state, typeName);
    lua_setmetatable(state, -2);
    return 1;
}

// [each]
namespace unit0
{

bench::Unit0& self(lua_State* state)
{
    return **static_cast<bench::Unit0**>(luaL_checkudata(state, 1, "Unit0"));
}

int make(lua_State* state)
{
    return pushUnit(state, new bench::Unit0(), "Unit0");
}

int finalise(lua_State* state)
{
    delete &self(state);
    return 0;
}

int hurt(lua_State* state)
{
    self(state).hurt(luaL_checknumber(state, 2));
    return 0;
}

int heal(lua_State* state)
{
    self(state).heal(luaL_checknumber(state, 2));
    return 0;
}

int isAlive(lua_State* state)
{
    lua_pushboolean(state, self(state).isAlive() ? 1 : 0);
    return 1;
}

int distanceTo(lua_State* state)
{
    lua_pushnumber(
        state, self(state).distanceTo(luaL_checknumber(state, 2), luaL_checknumber(state, 3)));
    return 1;
}

int moveTo(lua_State* state)
{
    self(state).moveTo(luaL_checknumber(state, 2), luaL_checknumber(state, 3));
    return 0;
}

int countItems(lua_State* state)
{
    lua_pushinteger(state, self(state).countItems());
    return 1;
}

int addItem(lua_State* state)
{
    self(state).addItem(intAt(state, 2), intAt(state, 3));
    return 0;
}

int hasItem(lua_State* state)
{
    lua_pushboolean(state, self(state).hasItem(intAt(state, 2)) ? 1 : 0);
    return 1;
}

int getName(lua_State* state)
{
    return pushText(state, self(state).getName());
}

int setName(lua_State* state)
{
    self(state).setName(textAt(state, 2));
    return 0;
}

int say(lua_State* state)
{
    self(state).say(textAt(state, 2));
    return 0;
}

int damageAgainst(lua_State* state)
{
    lua_pushnumber(state, self(state).damageAgainst(intAt(state, 2), boolAt(state, 3)));
    return 1;
}

int wait(lua_State* state)
{
    self(state).wait(luaL_checknumber(state, 2));
    return 0;
}

int stop(lua_State* state)
{
    self(state).stop();
    return 0;
}

int rankAmong(lua_State* state)
{
    lua_pushinteger(state, self(state).rankAmong(intAt(state, 2)));
    return 1;
}

int canSee(lua_State* state)
{
    lua_pushboolean(
        state,
        self(state).canSee(
            luaL_checknumber(state, 2), luaL_checknumber(state, 3), luaL_checknumber(state, 4))
            ? 1
            : 0);
    return 1;
}

int rename(lua_State* state)
{
    self(state).rename(textAt(state, 2), boolAt(state, 3));
    return 0;
}

int readHealth(lua_State* state)
{
    lua_pushnumber(state, self(state).health);
    return 1;
}

int writeHealth(lua_State* state)
{
    self(state).health = luaL_checknumber(state, 2);
    return 0;
}

int readSpeed(lua_State* state)
{
    lua_pushnumber(state, self(state).speed);
    return 1;
}

int writeSpeed(lua_State* state)
{
    self(state).speed = luaL_checknumber(state, 2);
    return 0;
}

int readX(lua_State* state)
{
    lua_pushnumber(state, self(state).x);
    return 1;
}

int writeX(lua_State* state)
{
    self(state).x = luaL_checknumber(state, 2);
    return 0;
}

int readY(lua_State* state)
{
    lua_pushnumber(state, self(state).y);
    return 1;
}

int writeY(lua_State* state)
{
    self(state).y = luaL_checknumber(state, 2);
    return 0;
}

int readLevel(lua_State* state)
{
    lua_pushinteger(state, self(state).level);
    return 1;
}

int writeLevel(lua_State* state)
{
    self(state).level = intAt(state, 2);
    return 0;
}

int readGold(lua_State* state)
{
    lua_pushinteger(state, self(state).gold);
    return 1;
}

int writeGold(lua_State* state)
{
    self(state).gold = intAt(state, 2);
    return 0;
}

int readIsHostile(lua_State* state)
{
    lua_pushboolean(state, self(state).isHostile ? 1 : 0);
    return 1;
}

int writeIsHostile(lua_State* state)
{
    self(state).isHostile = boolAt(state, 2);
    return 0;
}

int readIsHidden(lua_State* state)
{
    lua_pushboolean(state, self(state).isHidden ? 1 : 0);
    return 1;
}

int writeIsHidden(lua_State* state)
{
    self(state).isHidden = boolAt(state, 2);
    return 0;
}

const luaL_Reg METHODS[] = {
    {"new", &make},
    {"__gc", &finalise},
    {"hurt", &hurt},
    {"heal", &heal},
    {"isAlive", &isAlive},
    {"distanceTo", &distanceTo},
    {"moveTo", &moveTo},
    {"countItems", &countItems},
    {"addItem", &addItem},
    {"hasItem", &hasItem},
    {"getName", &getName},
    {"setName", &setName},
    {"say", &say},
    {"damageAgainst", &damageAgainst},
    {"wait", &wait},
    {"stop", &stop},
    {"rankAmong", &rankAmong},
    {"canSee", &canSee},
    {"rename", &rename},
    {nullptr, nullptr}};
const luaL_Reg READERS[] = {
    {"health", &readHealth},
    {"speed", &readSpeed},
    {"x", &readX},
    {"y", &readY},
    {"level", &readLevel},
    {"gold", &readGold},
    {"isHostile", &readIsHostile},
    {"isHidden", &readIsHidden},
    {nullptr, nullptr}};
const luaL_Reg WRITERS[] = {
    {"health", &writeHealth},
    {"speed", &writeSpeed},
    {"x", &writeX},
    {"y", &writeY},
    {"level", &writeLevel},
    {"gold", &writeGold},
    {"isHostile", &writeIsHostile},
    {"isHidden", &writeIsHidden},
    {nullptr, nullptr}};

} // namespace unit0

// [/each]

} // namespace

void bindUnitsByHand(lua_State* state)
{
    // [each]
    registerType(state, "Unit0", unit0::METHODS, unit0::READERS, unit0::WRITERS);
    // [/each]
}

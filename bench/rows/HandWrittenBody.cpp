#include "rows/HandWrittenBody.h"

#include <cstring>

namespace bench
{

namespace
{

constexpr const char* TYPE_NAME = "Body";

struct BodyBox
{
    Body* object;
    bool isOwned;
};

int getValue(lua_State* state)
{
    lua_pushnumber(state, checkBody(state, 1).value);
    return 1;
}

int setValue(lua_State* state)
{
    checkBody(state, 1).value = luaL_checknumber(state, 2);
    return 0;
}

int makeBody(lua_State* state)
{
    pushBody(state, new Body(), true);
    return 1;
}

int collectBody(lua_State* state)
{
    auto* const box = static_cast<BodyBox*>(luaL_checkudata(state, 1, TYPE_NAME));
    if (box->isOwned)
        delete box->object;
    box->isOwned = false;
    return 0;
}

int addBodies(lua_State* state)
{
    const Body& left = checkBody(state, 1);
    const Body& right = checkBody(state, 2);
    pushBody(state, new Body(sumOf(left, right)), true);
    return 1;
}

int compareBodies(lua_State* state)
{
    lua_pushboolean(state, isLess(checkBody(state, 1), checkBody(state, 2)) ? 1 : 0);
    return 1;
}

// Elements by number, fields by name, methods from the table in the upvalue.
int readMember(lua_State* state)
{
    Body& body = checkBody(state, 1);
    if (lua_type(state, 2) == LUA_TNUMBER)
    {
        lua_pushnumber(state, elementOf(body, static_cast<int>(lua_tointeger(state, 2))));
        return 1;
    }
    const char* const name = luaL_checkstring(state, 2);
    if (std::strcmp(name, "var") == 0)
    {
        lua_pushnumber(state, body.value);
        return 1;
    }
    if (std::strcmp(name, "mass") == 0)
    {
        lua_pushnumber(state, body.mass);
        return 1;
    }
    lua_pushvalue(state, 2);
    lua_rawget(state, lua_upvalueindex(1));
    return 1;
}

int writeMember(lua_State* state)
{
    Body& body = checkBody(state, 1);
    if (lua_type(state, 2) == LUA_TNUMBER)
    {
        elementOf(body, static_cast<int>(lua_tointeger(state, 2))) = luaL_checknumber(state, 3);
        return 0;
    }
    const char* const name = luaL_checkstring(state, 2);
    if (std::strcmp(name, "var") == 0)
        body.value = luaL_checknumber(state, 3);
    else if (std::strcmp(name, "mass") == 0)
        body.mass = luaL_checknumber(state, 3);
    return 0;
}

constexpr luaL_Reg METHODS[] = {{"get", getValue}, {"set", setValue}, {nullptr, nullptr}};

constexpr luaL_Reg METAMETHODS[] = {
    {"__gc", collectBody},
    {"__add", addBodies},
    {"__lt", compareBodies},
    {"__newindex", writeMember},
    {nullptr, nullptr}};

} // namespace

void declareHandWrittenBody(lua_State* state)
{
    luaL_newmetatable(state, TYPE_NAME);
    luaL_setfuncs(state, METAMETHODS, 0);
    lua_newtable(state);
    luaL_setfuncs(state, METHODS, 0);
    lua_pushcclosure(state, &readMember, 1);
    lua_setfield(state, -2, "__index");
    lua_pop(state, 1);

    lua_newtable(state);
    lua_pushcfunction(state, &makeBody);
    lua_setfield(state, -2, "new");
    lua_setglobal(state, TYPE_NAME);
}

void pushBody(lua_State* state, Body* object, bool isOwned)
{
    auto* const box = static_cast<BodyBox*>(lua_newuserdata(state, sizeof(BodyBox)));
    box->object = object;
    box->isOwned = isOwned;
    luaL_setmetatable(state, TYPE_NAME);
}

Body& checkBody(lua_State* state, int index)
{
    return *static_cast<BodyBox*>(luaL_checkudata(state, index, TYPE_NAME))->object;
}

} // namespace bench

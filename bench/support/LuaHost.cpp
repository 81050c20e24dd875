#include "support/LuaHost.h"

#include "support/Failure.h"

namespace bench
{

LuaHost::LuaHost()
    : m_state(luaL_newstate())
{
    luaL_openlibs(m_state);
}

LuaHost::~LuaHost()
{
    lua_close(m_state);
}

void LuaHost::run(const std::string& source)
{
    const int status = luaL_loadbuffer(m_state, source.data(), source.size(), source.c_str());
    if (status != 0 || lua_pcall(m_state, 0, 0, 0) != 0)
        fail(lua_tostring(m_state, -1));
}

int LuaHost::refer(const char* name)
{
    lua_getglobal(m_state, name);
    return luaL_ref(m_state, LUA_REGISTRYINDEX);
}

double LuaHost::call(int reference, double argument)
{
    lua_rawgeti(m_state, LUA_REGISTRYINDEX, reference);
    lua_pushnumber(m_state, argument);
    if (lua_pcall(m_state, 1, 1, 0) != 0)
        fail(lua_tostring(m_state, -1));
    const double result = lua_tonumber(m_state, -1);
    lua_pop(m_state, 1);
    return result;
}

double LuaHost::callGlobal(const char* name, double argument)
{
    const int reference = refer(name);
    const double result = call(reference, argument);
    luaL_unref(m_state, LUA_REGISTRYINDEX, reference);
    return result;
}

void LuaHost::collect()
{
    lua_gc(m_state, LUA_GCCOLLECT, 0);
    lua_gc(m_state, LUA_GCCOLLECT, 0);
}

double LuaHost::countScriptBytes()
{
    collect();
    return lua_gc(m_state, LUA_GCCOUNT, 0) * 1024.0 + lua_gc(m_state, LUA_GCCOUNTB, 0);
}

} // namespace bench

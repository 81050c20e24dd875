#include "environments/lua/chunks/LuaChunkCache.h"

#include <utility>

namespace tbScripts::lua
{

void LuaChunkCache::pushFunction(
    lua_State* state, const LuaBytecode& bytecode, const char* chunkName)
{
    // A hook that a script has set would notice the call of the maker.
    if (lua_gethookmask(state) == 0 && _pushMaker(state, bytecode, chunkName))
    {
        lua_call(state, 0, 1);
        return;
    }
    luaL_loadbuffer(
        state,
        reinterpret_cast<const char*>(bytecode.code.data()),
        bytecode.code.size(),
        chunkName);
}

// Stack: +1 if there is a maker.
bool LuaChunkCache::_pushMaker(lua_State* state, const LuaBytecode& bytecode, const char* chunkName)
{
    const std::size_t index = bytecode.script % CAPACITY;
    Place& place = m_places[index];
    if (place.version != bytecode.version)
    {
        const Place before = std::exchange(place, {bytecode.version, false});
        if (before.hasMaker)
            _dropMaker(state, index);
        return false; // many scripts run only once
    }
    if (m_makersKey == LUA_NOREF)
    {
        lua_createtable(state, 0, 0);
        m_makersKey = luaL_ref(state, LUA_REGISTRYINDEX);
    }
    lua_rawgeti(state, LUA_REGISTRYINDEX, m_makersKey);
    if (lua_istable(state, -1)) // else a script has changed the registry
    {
        if (place.hasMaker)
            lua_rawgeti(state, -1, static_cast<int>(index) + 1);
        else
            place.hasMaker = _loadMaker(state, bytecode, chunkName);
        if (lua_isfunction(state, -1))
        {
            lua_remove(state, -2);
            return true;
        }
        lua_pop(state, 1);
    }
    lua_pop(state, 1);
    return false;
}

// Lets the collector free the chunk. Stack: +0.
void LuaChunkCache::_dropMaker(lua_State* state, std::size_t index) const
{
    lua_rawgeti(state, LUA_REGISTRYINDEX, m_makersKey);
    if (lua_istable(state, -1))
    {
        lua_pushnil(state);
        lua_rawseti(state, -2, static_cast<int>(index) + 1);
    }
    lua_pop(state, 1);
}

// Stack: the table of makers on top; +1, the new maker, or nil if there can be none.
bool LuaChunkCache::_loadMaker(lua_State* state, const LuaBytecode& bytecode, const char* chunkName)
{
    if (!m_maker.push(state, bytecode, chunkName))
    {
        lua_pushnil(state);
        return false;
    }
    lua_pushvalue(state, -1);
    lua_rawseti(state, -3, static_cast<int>(bytecode.script % CAPACITY) + 1);
    return true;
}

} // namespace tbScripts::lua

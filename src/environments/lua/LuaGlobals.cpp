#include "environments/lua/LuaGlobals.h"

#include "core/lua/LuaTables.h"

#include <array>

namespace tbScripts::lua
{

namespace
{

// Where the standard libraries keep modules and their loaders.
constexpr const char* LOADED_MODULES = "_LOADED";
constexpr const char* PRELOADED_MODULES = "_PRELOAD";

// Functions of the foreign function library whose environments are tables that the interpreter
// itself still uses.
constexpr std::array<const char*, 2> OWNERS_OF_FOREIGN_TABLES{"gc", "metatype"};

void clearRegistryTable(lua_State* state, const char* key)
{
    lua_pushstring(state, key);
    lua_rawget(state, LUA_REGISTRYINDEX);
    if (lua_istable(state, -1))
        clearTable(state);
    lua_pop(state, 1);
}

} // namespace

void keepForeignTables(lua_State* state)
{
    lua_gc(state, LUA_GCSTOP, 0); // as in clearAllGlobals
    lua_pushstring(state, LOADED_MODULES);
    lua_rawget(state, LUA_REGISTRYINDEX);
    if (lua_istable(state, -1))
    {
        lua_pushliteral(state, "ffi");
        lua_rawget(state, -2);
        for (const char* const name : OWNERS_OF_FOREIGN_TABLES)
        {
            if (!lua_istable(state, -1))
                break;
            lua_pushstring(state, name);
            lua_rawget(state, -2);
            if (lua_iscfunction(state, -1))
                luaL_ref(state, LUA_REGISTRYINDEX);
            else
                lua_pop(state, 1);
        }
        lua_pop(state, 1);
    }
    lua_pop(state, 1);
    lua_gc(state, LUA_GCRESTART, 0);
}

void clearAllGlobals(const LuaStateSlot& slot, lua_State* state)
{
    // Without the collector no finaliser can interrupt this half-way.
    lua_gc(state, LUA_GCSTOP, 0);
    slot.pushGlobals(state);
    clearTable(state);
    lua_pop(state, 1);
    clearRegistryTable(state, LOADED_MODULES);
    clearRegistryTable(state, PRELOADED_MODULES);
    lua_gc(state, LUA_GCRESTART, 0);
}

} // namespace tbScripts::lua

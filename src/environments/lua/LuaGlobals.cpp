#include "environments/lua/LuaGlobals.h"

#include "core/lua/LuaTables.h"

namespace tbScripts::lua
{

namespace
{

// Where the standard libraries keep modules and their loaders.
constexpr const char* LOADED_MODULES = "_LOADED";
constexpr const char* PRELOADED_MODULES = "_PRELOAD";

void clearRegistryTable(lua_State* state, const char* key)
{
    lua_pushstring(state, key);
    lua_rawget(state, LUA_REGISTRYINDEX);
    if (lua_istable(state, -1))
        clearTable(state);
    lua_pop(state, 1);
}

} // namespace

void clearAllGlobals(const LuaStateSlot& slot, lua_State* state)
{
    // Without the collector no finaliser can break this off half-way.
    lua_gc(state, LUA_GCSTOP, 0);
    pushGlobals(slot, state);
    clearTable(state);
    lua_pop(state, 1);
    clearRegistryTable(state, LOADED_MODULES);
    clearRegistryTable(state, PRELOADED_MODULES);
    lua_gc(state, LUA_GCRESTART, 0);
}

} // namespace tbScripts::lua

#include "core/lua/LuaStateHandle.h"

#include "core/ExceptionContainment.h"
#include "core/lua/calls/LuaBoundary.h"

#include <array>
#include <cstddef>
#include <utility>

namespace tbScripts::lua
{

namespace
{

// Makes the weak set of tables that are metatables of our user types. Weak, so that a type's table
// goes when nothing else refers to it.
int makeTypeTables(lua_State* state)
{
    lua_createtable(state, 0, 0);
    lua_createtable(state, 0, 1);
    lua_pushliteral(state, "k");
    lua_setfield(state, -2, "__mode");
    lua_setmetatable(state, -2);
    return luaL_ref(state, LUA_REGISTRYINDEX);
}

// Has the registry keep the first references in its array part: where memory ends while a table
// grows, the interpreter forgets whole-number keys in the other part until it grows again.
void reserveReferences(lua_State* state)
{
    constexpr std::size_t RESERVED = 64;
    std::array<int, RESERVED> keys{};
    for (int& key : keys)
    {
        lua_pushboolean(state, 1);
        key = luaL_ref(state, LUA_REGISTRYINDEX);
    }
    for (auto key = keys.rbegin(); key != keys.rend(); ++key) // the lowest will be taken first
        luaL_unref(state, LUA_REGISTRYINDEX, *key);
}

int furnishState(lua_State* state)
{
    LuaStateSlot& slot = *static_cast<LuaStateSlot*>(lua_touserdata(state, 1));
    luaL_openlibs(state);
    lua_pushthread(state);
    slot.mainThreadKey = luaL_ref(state, LUA_REGISTRYINDEX);
    lua_pushcfunction(state, &runProtectedWork);
    slot.trampolineKey = luaL_ref(state, LUA_REGISTRYINDEX);
    slot.typeTablesKey = makeTypeTables(state);
    lua_getglobal(state, "rawget"); // now: scripts may replace the globals
    slot.rawgetKey = luaL_ref(state, LUA_REGISTRYINDEX);
    lua_getglobal(state, "type");
    slot.typeKey = luaL_ref(state, LUA_REGISTRYINDEX);
    reserveReferences(state);
    return 0;
}

} // namespace

LuaStateHandle LuaStateHandle::open()
{
    LuaStateHandle handle(new LuaStateSlot); // first: a lone state would leak
    lua_State* const state = luaL_newstate();
    if (!state)
        return LuaStateHandle();
    if (lua_cpcall(state, &furnishState, handle.m_slot) != 0)
    {
        lua_close(state);
        return LuaStateHandle();
    }
    handle.m_slot->main = state;
    handle.m_slot->running = state;
    return handle;
}

void LuaStateHandle::close()
{
    if (!get())
        return;
    // Emptied before lua_close: finalisers that run inside it must already find no state.
    lua_State* const state = std::exchange(m_slot->main, nullptr);
    m_slot->running = nullptr;
    m_slot->isClosing = true;
    contain([state] { lua_close(state); }, [] {});
    m_slot->isClosing = false;
    while (std::shared_ptr<LuaKeptObject> kept = std::move(m_slot->firstKept))
        m_slot->firstKept = std::move(kept->nextKept); // one by one: a chain may be long
    runPutOff(*m_slot);
}

void LuaStateHandle::_deleteSlot()
{
    delete m_slot;
}

void runPutOff(LuaStateSlot& slot)
{
    const LuaStateHandle keepsSlot(&slot);
    while (!slot.putOff.empty())
    {
        std::vector<std::function<void()>> due = std::exchange(slot.putOff, {});
        for (std::function<void()>& action : due)
            action();
    }
}

void pushGlobals(const LuaStateSlot& slot, lua_State* state)
{
    if (state == slot.main)
    {
        lua_pushvalue(state, LUA_GLOBALSINDEX);
        return;
    }
    lua_rawgeti(state, LUA_REGISTRYINDEX, slot.mainThreadKey);
    lua_getfenv(state, -1);
    lua_remove(state, -2);
}

} // namespace tbScripts::lua

#include "core/lua/LuaStateSlot.h"

#include "core/ExceptionContainment.h"
#include "core/lua/LuaMetatableWord.h"
#include "core/lua/LuaStackWords.h"
#include "core/lua/LuaStateHandle.h"
#include "core/lua/calls/LuaBoundary.h"
#include "core/lua/calls/LuaStackGuards.h"
#include "port/StackBounds.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <utility>

namespace tbScripts::lua
{

namespace
{

// Creates the weak table of the tables of types and namespaces. It is weak in both directions, so
// that a type's table is collected when nothing else refers to it.
int refTypeTables(lua_State* state)
{
    lua_createtable(state, 0, 0);
    lua_createtable(state, 0, 1);
    lua_pushliteral(state, "kv");
    lua_setfield(state, -2, "__mode");
    lua_setmetatable(state, -2);
    return luaL_ref(state, LUA_REGISTRYINDEX);
}

// Scripts may replace the globals later.
int refGlobal(lua_State* state, const char* name)
{
    lua_getglobal(state, name);
    return luaL_ref(state, LUA_REGISTRYINDEX);
}

// Pre-grows the registry's array part to 64 slots. LuaJIT 2.1.0-beta3 loses integer keys of a
// table's hash part, until the next rehash, when a rehash runs out of memory.
void reserveReferences(lua_State* state)
{
    constexpr std::size_t RESERVED = 64;
    std::array<int, RESERVED> keys{};
    for (int& key : keys)
    {
        lua_pushboolean(state, 1);
        key = luaL_ref(state, LUA_REGISTRYINDEX);
    }
    for (auto key = keys.rbegin(); key != keys.rend(); ++key) // the lowest is taken first
        luaL_unref(state, LUA_REGISTRYINDEX, *key);
}

} // namespace

void LuaStateSlot::destroy(LuaStateSlot* slot) noexcept
{
    delete slot;
}

int LuaStateSlot::_furnish(lua_State* state)
{
    LuaStateSlot& slot = *static_cast<LuaStateSlot*>(lua_touserdata(state, 1));
    luaL_openlibs(state);
    guardLibraries(slot, state);
    LuaStackWords::probe(state);
    LuaMetatableWord::probe(state);
    // LuaJIT allocates when it meets the first light userdata of a range of addresses. The boundary
    // passes addresses on the stack, also when there is no memory left.
    lua_pushlightuserdata(state, &state);
    lua_pop(state, 1);
    lua_pushthread(state);
    slot.m_mainThreadKey = luaL_ref(state, LUA_REGISTRYINDEX);
    lua_pushcfunction(state, &runProtectedWork);
    slot.m_trampolineKey = luaL_ref(state, LUA_REGISTRYINDEX);
    slot.m_typeTablesKey = refTypeTables(state);
    slot.m_rawgetKey = refGlobal(state, "rawget");
    slot.m_typeKey = refGlobal(state, "type");
    reserveReferences(state);
    return 0;
}

bool LuaStateSlot::open()
{
    lua_State* const state = luaL_newstate();
    if (!state)
        return false;
    if (lua_cpcall(state, &_furnish, this) != 0)
    {
        lua_close(state);
        return false;
    }
    m_main = state;
    m_running = state;
    return true;
}

void LuaStateSlot::close()
{
    if (!isOpen())
        return;
    // Emptied before lua_close: finalisers that run inside it must already find no state.
    lua_State* const state = std::exchange(m_main, nullptr);
    m_running = nullptr;
    m_isClosing = true;
    m_places = {port::getPlaceOnStack(), port::getPlaceOnStack()}; // for finalisers of scripts
    contain([state] { lua_close(state); }, [] {});
    m_isClosing = false;
    m_kept.release();
    runDeferred();
}

void LuaStateSlot::runDeferred()
{
    const LuaStateHandle keepsSlot(this);
    while (!m_deferred.empty())
    {
        std::vector<std::function<void()>> due = std::exchange(m_deferred, {});
        for (std::function<void()>& action : due)
            action();
    }
}

bool LuaStateSlot::isEnumValue(const typed::TypeId& id, double value) const
{
    const auto known = m_enums.find(&id);
    if (known == m_enums.end())
        return true;
    const std::vector<double>& values = known->second;
    return std::find(values.begin(), values.end(), std::trunc(value)) != values.end();
}

void LuaStateSlot::pushGlobals(lua_State* state) const
{
    if (isMainThread(state))
    {
        lua_pushvalue(state, LUA_GLOBALSINDEX);
        return;
    }
    pushMainThread(state);
    lua_getfenv(state, -1);
    lua_remove(state, -2);
}

} // namespace tbScripts::lua

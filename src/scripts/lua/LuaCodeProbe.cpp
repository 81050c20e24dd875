#include "scripts/lua/LuaCodeProbe.h"

#include "core/lua/LuaApi.h"
#include "core/lua/LuaPrivateState.h"
#include "scripts/lua/LuaEmptySlots.h"

#include <atomic>
#include <new>
#include <string>

namespace tbScripts::lua
{

namespace
{

// Stores of each kind, and stores that look like those of constructors: which of them runs depends
// on what the code computes, or they stand behind the constructor. A key of a store that does not
// run must not be in the table. No value that is stored is false.
constexpr const char* SOURCES = R"(
local a, b = ...
local t = { 'c', a, x = a, n = { u = a, v = 1, w = b ~= a }, y = b and 'p' or 'q',
            [b and 'never' or 'k'] = a, z = a < 2 and a ~= 3, (function() return 1 end)() }
if b then t.never = a end
local s = { x = a, t, s = b or t }
if b then s.never = a end
return s, t, t.n
)";
constexpr int RESULTS = 3;

struct Probe
{
    std::string code;
    int status;
    bool isUnderstood;
};

int append(lua_State* /*state*/, const void* bytes, std::size_t size, void* target)
{
    static_cast<std::string*>(target)->append(static_cast<const char*>(bytes), size);
    return 0;
}

int compile(lua_State* state)
{
    Probe& probe = *static_cast<Probe*>(lua_touserdata(state, 1));
    probe.status = luaL_loadstring(state, SOURCES);
    if (probe.status == 0)
        probe.status = lua_dump(state, &append, &probe.code);
    return 0;
}

// Returns whether every value in the table on top was stored. Stack: +0.
bool isStored(lua_State* state)
{
    bool isStored = true;
    lua_pushnil(state);
    while (lua_next(state, -2) != 0)
    {
        isStored = isStored && lua_toboolean(state, -1) != 0;
        lua_pop(state, 1);
    }
    return isStored;
}

int run(lua_State* state)
{
    Probe& probe = *static_cast<Probe*>(lua_touserdata(state, 1));
    probe.status = luaL_loadbuffer(state, probe.code.data(), probe.code.size(), SOURCES);
    if (probe.status != 0)
        return 0;
    lua_pushinteger(state, 1);
    lua_call(state, 1, RESULTS);
    probe.isUnderstood = true;
    for (int i = 0; i < RESULTS; ++i)
    {
        if (!lua_istable(state, -1) || !isStored(state))
            probe.isUnderstood = false;
        lua_pop(state, 1);
    }
    return 0;
}

// Runs a step of the probe. Returns whether it worked.
bool perform(lua_State* state, lua_CFunction step, Probe& probe)
{
    const int status = lua_cpcall(state, step, &probe);
    if (status == LUA_ERRMEM || probe.status == LUA_ERRMEM)
        throw std::bad_alloc(); // another compilation may find out
    return status == 0 && probe.status == 0;
}

bool probeInterpreter()
{
    Probe probe{{}, 0, false};
    const LuaPrivateState state;
    if (!state.get())
        throw std::bad_alloc();
    if (!perform(state.get(), &compile, probe))
        return false;
    probe.code = withEmptySlots(probe.code);
    return !probe.code.empty() && perform(state.get(), &run, probe) && probe.isUnderstood;
}

enum class ANSWER
{
    UNKNOWN,
    YES,
    NO
};

} // namespace

bool isCodeUnderstood()
{
    // Threads that ask at the same time all find out.
    static std::atomic<ANSWER> known{ANSWER::UNKNOWN};
    ANSWER answer = known;
    if (answer == ANSWER::UNKNOWN)
    {
        answer = probeInterpreter() ? ANSWER::YES : ANSWER::NO;
        known = answer;
    }
    return answer == ANSWER::YES;
}

} // namespace tbScripts::lua

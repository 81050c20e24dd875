#include "core/lua/LuaTables.h"

#include "core/lua/calls/LuaHostCall.h"

namespace tbScripts::lua
{

namespace
{

// In kilobytes; more than any heap, so that a step goes on to the end of the cycle.
constexpr int WHOLE_CYCLE = 1 << 30;

// Each finaliser runs once whether or not it raises, so this ends. A script's hook may raise before
// a step is begun, and would do so again and again.
void finishCycle(LuaHostCall& call)
{
    bool isFinished = false;
    for (bool hasBegun = true; hasBegun && !isFinished;)
    {
        hasBegun = false;
        call.run(
            [&](lua_State* state)
            {
                hasBegun = true;
                isFinished = lua_gc(state, LUA_GCSTEP, WHOLE_CYCLE) != 0;
            });
    }
}

} // namespace

void clearTable(lua_State* state)
{
    lua_pushnil(state);
    while (lua_next(state, -2))
    {
        lua_pop(state, 1);
        lua_pushvalue(state, -1);
        lua_pushnil(state);
        lua_rawset(state, -4);
    }
}

void collectGarbageTwice(LuaHostCall& call)
{
    constexpr int ROUNDS = 2; // the second frees what the finalisers of the first let go
    for (int round = 0; round < ROUNDS; ++round)
    {
        if (call.run([](lua_State* state) { lua_gc(state, LUA_GCCOLLECT, 0); }))
            continue;
        if (!call.getState())
            return; // refused
        finishCycle(call);
    }
}

} // namespace tbScripts::lua

#include "core/lua/LuaTables.h"

#include "core/lua/calls/LuaHostCall.h"

namespace tbScripts::lua
{

namespace
{

// In kilobytes; more than any heap, so that one step finishes the cycle.
constexpr int WHOLE_CYCLE = 1 << 30;

// Terminates: each finaliser runs once, whether or not it raises, and the loop stops if a script's
// hook raises before a step begins, which that hook would do each time.
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
    constexpr int ROUNDS = 2; // the second frees what the finalisers of the first have released
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

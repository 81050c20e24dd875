#include "core/lua/LuaTables.h"

#include "core/lua/calls/LuaHostCall.h"

#include <string>

namespace tbScripts::lua
{

namespace
{

// In kilobytes; more than any heap, so that one step finishes the cycle.
constexpr int WHOLE_CYCLE = 1 << 30;

// The interpreter shrinks its table of strings as it collects. Where there is no memory for the
// smaller one, each step fails as the one before.
constexpr int MOST_STEPS_WITHOUT_MEMORY = 100;

// Terminates: each finaliser runs once, whether or not it raises, steps that run out of memory are
// counted, and the loop stops if a script's hook raises before a step begins, which that hook would
// do each time.
void finishCycle(LuaHostCall& call)
{
    bool isFinished = false;
    int stepsWithoutMemory = 0;
    for (bool hasBegun = true; hasBegun && !isFinished;)
    {
        hasBegun = false;
        std::string errorText;
        const bool isDone = call.run(
            [&](lua_State* state)
            {
                hasBegun = true;
                isFinished = lua_gc(state, LUA_GCSTEP, WHOLE_CYCLE) != 0;
            },
            errorText);
        if (isDone || call.isRefused())
            continue;
        LuaHostCall::logFailure(errorText);
        if (isOutOfMemory(errorText) && ++stepsWithoutMemory == MOST_STEPS_WITHOUT_MEMORY)
            return;
    }
}

void collect(lua_State* state)
{
    lua_gc(state, LUA_GCCOLLECT, 0);
}

} // namespace

void clearTable(lua_State* state)
{
    clearTableExcept(state, [](lua_State* /*state*/) { return false; });
}

void collectGarbageTwice(LuaHostCall& call)
{
    constexpr int ROUNDS = 2; // the second frees what the finalisers of the first have released
    for (int round = 0; round < ROUNDS; ++round)
    {
        if (call.run(&collect))
            continue;
        if (!call.getState())
            return; // refused
        finishCycle(call);
    }
}

void collectAfterLackOfMemory(LuaHostCall& call)
{
    std::string errorText;
    if (call.run(&collect, errorText) || call.isRefused() || isOutOfMemory(errorText))
        return; // nothing else to say than what is being reported
    LuaHostCall::logFailure(errorText);
    finishCycle(call);
}

} // namespace tbScripts::lua

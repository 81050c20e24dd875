#include "core/lua/calls/LuaCallOutcome.h"

#include "core/lua/LuaErrorText.h"

namespace tbScripts::lua
{

LuaCallOutcome outcomeOf(lua_State* state, int status)
{
    switch (status)
    {
    case LUA_ERRRUN:
        return {EXECUTION_RUNTIME_ERROR, errorTextAt(state, -1)};
    case LUA_ERRMEM:
        return {EXECUTION_OUT_OF_MEMORY, errorTextAt(state, -1)};
    case LUA_ERRERR:
        return {EXECUTION_ERROR_IN_ERROR_HANDLER, errorTextAt(state, -1)};
    default:
        return {};
    }
}

void setCodeOfError(LuaCallOutcome& outcome)
{
    outcome.code =
        isOutOfMemory(outcome.errorText) ? EXECUTION_OUT_OF_MEMORY : EXECUTION_RUNTIME_ERROR;
}

void completeFailure(LuaHostCall& call, bool isDone, LuaCallOutcome& outcome)
{
    if (!isDone)
        setCodeOfError(outcome);
    // By its message: a script may have caught the error and raised it again.
    if (isOutOfMemory(outcome.errorText))
        call.recoverMemory();
}

} // namespace tbScripts::lua

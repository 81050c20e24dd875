#pragma once

#include "core/lua/LuaApi.h"
#include "core/lua/calls/LuaHostCall.h"

#include "tbScripts/ResultCodes.h"

#include <cstdint>
#include <string>

namespace tbScripts::lua
{

/// How a run or a call ended.
struct LuaCallOutcome
{
    std::int32_t code = EXECUTION_SUCCESS;
    std::string errorText; // the interpreter's message, empty on success
};

/// Returns the outcome of a protected call of that status. Stack: the error value of a failed call
/// stays.
LuaCallOutcome outcomeOf(lua_State* state, int status);

/// Gives an outcome the code of its message, for errors outside of the interpreter's own protected
/// call, which then returns no status.
void setCodeOfError(LuaCallOutcome& outcome);

/// Does the work of `completeOutcome` for a call that failed.
void completeFailure(LuaHostCall& call, bool isDone, LuaCallOutcome& outcome);

/// Completes the outcome of contained work, which completed if `isDone`. Collects garbage if memory
/// has run out.
inline void completeOutcome(LuaHostCall& call, bool isDone, LuaCallOutcome& outcome)
{
    if (!isDone || outcome.code != EXECUTION_SUCCESS)
        completeFailure(call, isDone, outcome);
}

} // namespace tbScripts::lua

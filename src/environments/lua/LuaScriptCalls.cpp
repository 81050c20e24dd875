#include "environments/lua/LuaScriptCalls.h"

#include "bindings/lua/values/LuaCallBridge.h"
#include "core/lua/LuaErrorText.h"
#include "core/lua/calls/LuaCallbackScope.h"
#include "core/lua/references/LuaScriptObjectInterpreterReference.h"

#include <algorithm>

namespace tbScripts::lua
{

namespace
{

// Stack: the error value of a failed call stays.
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

// For errors outside of the interpreter's own protected call, which then returns no status.
std::int32_t codeOf(const std::string& errorText)
{
    return isOutOfMemory(errorText) ? EXECUTION_OUT_OF_MEMORY : EXECUTION_RUNTIME_ERROR;
}

// Completes the outcome of contained work, which completed if `isDone`.
void completeOutcome(LuaHostCall& call, bool isDone, LuaCallOutcome& outcome)
{
    if (!isDone)
        outcome.code = codeOf(outcome.errorText);
    // By its message: a script may have caught the error and raised it again.
    if (outcome.code != EXECUTION_SUCCESS && isOutOfMemory(outcome.errorText))
        call.recoverMemory();
}

// Reads the topmost `count` values into `outputs`. Returns how many of them fit.
std::size_t readOutputs(
    const LuaCallBridge& bridge,
    int firstIndex,
    std::size_t count,
    tbMemory::BufferView<FunctionParameter>& outputs)
{
    for (std::size_t i = 0; i < count; ++i)
    {
        if (!bridge.readIfAccepted(outputs[i], firstIndex + static_cast<int>(i)))
            return i;
    }
    return count;
}

} // namespace

LuaCallOutcome LuaScriptCalls::runChunk(
    LuaHostCall& call, const LuaBytecode& bytecode, const tbMemory::String& chunkName)
{
    LuaCallOutcome outcome;
    const bool isDone = call.run(
        [&](lua_State* state)
        {
            // A failed load leaves its message on the stack, and the call of that string fails.
            m_chunks.pushFunction(state, bytecode, chunkName.c_str());
            if (lua_isfunction(state, -1))
            {
                // The main thread's: a coroutine may have another global table, which is not the
                // script's.
                m_handle.getSlot()->pushGlobals(state);
                lua_setfenv(state, -2);
            }
            if (const int status = lua_pcall(state, 0, LUA_MULTRET, 0))
                outcome = outcomeOf(state, status);
        },
        outcome.errorText);
    completeOutcome(call, isDone, outcome);
    return outcome;
}

LuaCallOutcome LuaScriptCalls::callFunction(
    LuaHostCall& call,
    const ScriptObjectReference& function,
    const tbMemory::BufferView<FunctionParameter>& inputs,
    tbMemory::BufferView<FunctionParameter>& outputs,
    std::size_t& mismatch) const
{
    LuaCallOutcome outcome;
    if (!call.admit(outcome.errorText))
    {
        outcome.code = codeOf(outcome.errorText);
        return outcome;
    }

    LuaCallbackScope scope(*m_handle.getSlot(), call.getState());
    const LuaCallBridge bridge(scope, m_nameOfCall);
    mismatch = outputs.size();
    const bool isDone = call.runAdmitted(
        [&](lua_State* state, int top)
        {
            pushReferenced(state, function, m_handle);
            int pushed = 0;
            for (const FunctionParameter& input : inputs)
                pushed += bridge.pushParameter(input);
            if (const int status = lua_pcall(state, pushed, LUA_MULTRET, 0))
            {
                outcome = outcomeOf(state, status);
                return;
            }
            const auto results = static_cast<std::size_t>(lua_gettop(state) - top);
            const std::size_t wanted = std::min(results, outputs.size());
            const std::size_t read = readOutputs(bridge, top + 1, wanted, outputs);
            if (read < wanted)
                mismatch = read;
        },
        outcome.errorText);
    completeOutcome(call, isDone, outcome);
    return outcome;
}

} // namespace tbScripts::lua

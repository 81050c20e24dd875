#include "environments/lua/LuaScriptCalls.h"

#include "bindings/lua/values/LuaCallBridge.h"
#include "core/lua/calls/LuaCallbackScope.h"
#include "core/lua/references/LuaScriptObjectInterpreterReference.h"

#include <algorithm>

namespace tbScripts::lua
{

namespace
{

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
        setCodeOfError(outcome);
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

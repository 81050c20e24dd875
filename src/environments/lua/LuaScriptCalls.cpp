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

constexpr std::int32_t CODE_ERROR_IN_ERROR_HANDLER = 1;
constexpr std::int32_t CODE_RUNTIME_ERROR = 5;
constexpr std::int32_t CODE_NO_MEMORY = 6;

constexpr const char* TEXT_OF_NO_MEMORY = "not enough memory"; // the interpreter's own

// Names the call in messages of the bridge.
const tbMemory::String& contextOfCall()
{
    static const tbMemory::String CONTEXT("callScript");
    return CONTEXT;
}

// Stack: the error value of a failed call stays.
LuaCallOutcome outcomeOf(lua_State* state, int status)
{
    switch (status)
    {
    case LUA_ERRRUN:
        return {CODE_RUNTIME_ERROR, errorTextAt(state, -1)};
    case LUA_ERRMEM:
        return {CODE_NO_MEMORY, errorTextAt(state, -1)};
    case LUA_ERRERR:
        return {CODE_ERROR_IN_ERROR_HANDLER, errorTextAt(state, -1)};
    default:
        return {};
    }
}

// For what was raised outside of the interpreter's own protected call, where it gives no status.
std::int32_t codeOf(const std::string& errorText)
{
    return errorText == TEXT_OF_NO_MEMORY ? CODE_NO_MEMORY : CODE_RUNTIME_ERROR;
}

// Reads the topmost `count` values into `outputs`. Returns how many fitted.
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

LuaCallOutcome runChunk(
    LuaHostCall& call,
    const LuaStateHandle& handle,
    LuaChunkCache& cache,
    const LuaBytecode& bytecode,
    const tbMemory::String& chunkName)
{
    LuaCallOutcome outcome;
    const bool isDone = call.run(
        [&](lua_State* state)
        {
            // A failed load leaves its message, and calling a text is the error that is reported.
            cache.pushFunction(state, bytecode, chunkName.c_str());
            if (lua_isfunction(state, -1))
            {
                // That of the main thread: a coroutine may have a global table of its own, which is
                // not the script's.
                pushGlobals(*handle.getSlot(), state);
                lua_setfenv(state, -2);
            }
            if (const int status = lua_pcall(state, 0, LUA_MULTRET, 0))
                outcome = outcomeOf(state, status);
        },
        outcome.errorText);
    if (!isDone)
        outcome.code = codeOf(outcome.errorText);
    return outcome;
}

LuaCallOutcome callFunction(
    LuaHostCall& call,
    const LuaStateHandle& handle,
    const ScriptObjectReference& function,
    const tbMemory::BufferView<FunctionParameter>& inputs,
    tbMemory::BufferView<FunctionParameter>& outputs,
    std::size_t& mismatch)
{
    LuaCallOutcome outcome;
    if (!call.admit(outcome.errorText))
    {
        outcome.code = codeOf(outcome.errorText);
        return outcome;
    }

    LuaCallbackScope scope(*handle.getSlot(), call.getState());
    const LuaCallBridge bridge(scope, contextOfCall());
    mismatch = outputs.size();
    const bool isDone = call.runAdmitted(
        [&](lua_State* state, int top)
        {
            pushReferenced(state, function, handle);
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
    if (!isDone)
        outcome.code = codeOf(outcome.errorText);
    return outcome;
}

} // namespace tbScripts::lua

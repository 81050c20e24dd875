#include "bindings/lua/typed/LuaTypedCallStrategy.h"

#include "bindings/BindingMessages.h"
#include "bindings/lua/typed/LuaTypedCall.h"
#include "core/LogSources.h"
#include "core/lua/calls/LuaCallOutcome.h"
#include "core/lua/calls/LuaHostCall.h"
#include "core/lua/references/LuaScriptObjectInterpreterReference.h"

#include "tbScripts/LogManager.h"

#include <exception>

namespace tbScripts::lua
{

namespace
{

constexpr typed::Signature NO_PARAMETERS{nullptr, nullptr, 0, nullptr};

bool fail(ExecutionResult& result, const LuaCallOutcome& outcome)
{
    LogManager::getInstance()->log(outcome.errorText, LOG_SOURCE_LUA_ENVIRONMENT);
    result.message = outcome.errorText;
    result.code = outcome.code;
    result.success = false;
    return false;
}

// What the host's values throw, or their types, becomes the outcome.
template <typename Work>
bool runCatching(LuaCallOutcome& outcome, Work&& work)
{
    try
    {
        work();
        return true;
    }
    catch (const std::string& thrown)
    {
        outcome = {EXECUTION_RUNTIME_ERROR, thrown};
    }
    catch (const std::exception& exception)
    {
        outcome = {EXECUTION_RUNTIME_ERROR, exception.what()};
    }
    return false;
}

LuaCallOutcome
run(LuaHostCall& call,
    const ScriptObjectReference& function,
    const LuaStateHandle& handle,
    const typed::OutgoingCall& outgoing)
{
    LuaCallOutcome outcome;
    if (!call.admit(outcome.errorText))
    {
        setCodeOfError(outcome);
        return outcome;
    }
    LuaCallbackScope scope(call.getSlot(), call.getState());
    LuaTypedCall values(scope, NO_PARAMETERS, nullptr);
    const bool isDone = call.runAdmitted(
        [&](lua_State* state, int top)
        {
            pushReferenced(state, function, handle);
            int pushed = 0;
            if (!runCatching(outcome, [&] { pushed = outgoing.push(values, outgoing.arguments); }))
                return;
            if (const int status = lua_pcall(state, pushed, LUA_MULTRET, 0))
                outcome = outcomeOf(state, status);
            else
                runCatching(outcome, [&] { outgoing.read(values, top + 1, outgoing.result); });
        },
        outcome.errorText);
    completeOutcome(call, isDone, outcome);
    return outcome;
}

} // namespace

bool callTyped(
    const ScriptObjectReference& function,
    const typed::OutgoingCall& outgoing,
    ExecutionResult& result)
{
    const LuaStateHandle handle = LuaScriptObjectInterpreterReference::handleOf(function);
    LuaHostCall call(handle);
    if (call.isRefused())
        return fail(result, {EXECUTION_NO_INTERPRETER, messages::NO_SCRIPT_FUNCTION});
    const LuaCallOutcome outcome = run(call, function, handle, outgoing);
    if (outcome.code != EXECUTION_SUCCESS)
        return fail(result, outcome);
    if (!result.success)
        result = ExecutionResult();
    return true;
}

} // namespace tbScripts::lua

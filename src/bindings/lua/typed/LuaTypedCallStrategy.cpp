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

constexpr int ROOM_AT_BOTTOM = LUA_MINSTACK - 1; // the function that is called has a place too

constexpr typed::Signature NO_PARAMETERS{nullptr, nullptr, 0, nullptr};

bool fail(ExecutionResult& result, const LuaCallOutcome& outcome)
{
    LogManager::getInstance()->log(outcome.errorText, LOG_SOURCE_LUA_ENVIRONMENT);
    result.message = outcome.errorText;
    result.code = outcome.code;
    result.success = false;
    return false;
}

bool failWithoutFunction(ExecutionResult& result)
{
    return fail(result, {EXECUTION_NO_INTERPRETER, messages::NO_SCRIPT_FUNCTION});
}

// Pushes the arguments, calls the function below them and reads the results from index `first` on.
// Returns the status of the interpreter's call. What the host's values throw, or their types,
// becomes the outcome.
int callBetween(
    LuaTypedCall& values, int first, const typed::OutgoingCall& outgoing, LuaCallOutcome& outcome)
{
    try
    {
        const int pushed = outgoing.push(values, outgoing.arguments);
        const int status = lua_pcall(values.state, pushed, LUA_MULTRET, 0);
        if (status == 0)
            outgoing.read(values, first, outgoing.result);
        return status;
    }
    catch (const std::string& thrown)
    {
        outcome = {EXECUTION_RUNTIME_ERROR, thrown};
    }
    catch (const std::exception& exception)
    {
        outcome = {EXECUTION_RUNTIME_ERROR, exception.what()};
    }
    return 0;
}

void run(
    LuaHostCall& call,
    const LuaScriptObjectInterpreterReference& function,
    const typed::OutgoingCall& outgoing,
    LuaCallOutcome& outcome)
{
    if (!call.admit(outcome.errorText))
    {
        setCodeOfError(outcome);
        return;
    }
    LuaCallbackScope scope(call.getSlot(), call.getState());
    LuaTypedCall values(scope, NO_PARAMETERS, nullptr);
    if (call.getSlot().isInOutermostHostCall()) // so nothing is on the stack
        values.roomLeft = ROOM_AT_BOTTOM;
    const bool isDone = call.runAdmitted(
        [&](lua_State* state, int top)
        {
            function.push(state);
            if (const int status = callBetween(values, top + 1, outgoing, outcome))
                outcome = outcomeOf(state, status);
        },
        outcome.errorText);
    completeOutcome(call, isDone, outcome);
}

} // namespace

bool callTyped(
    const ScriptObjectReference& function,
    const typed::OutgoingCall& outgoing,
    ExecutionResult& result)
{
    const auto* const designated = LuaScriptObjectInterpreterReference::find(function);
    if (!designated)
        return failWithoutFunction(result);
    LuaHostCall call(designated->getHandle());
    if (call.isRefused())
        return failWithoutFunction(result);
    LuaCallOutcome outcome;
    run(call, *designated, outgoing, outcome); // which may destroy what `designated` points to
    if (outcome.code != EXECUTION_SUCCESS)
        return fail(result, outcome);
    if (!result.success)
        result = ExecutionResult();
    return true;
}

} // namespace tbScripts::lua

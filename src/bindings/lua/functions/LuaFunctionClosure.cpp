#include "bindings/lua/functions/LuaFunctionClosure.h"

#include "bindings/BindingMessages.h"
#include "bindings/lua/LuaRaise.h"
#include "bindings/lua/functions/LuaFunction.h"
#include "bindings/lua/typed/LuaTypedRun.h"
#include "bindings/lua/values/LuaCallBridge.h"
#include "core/LogSources.h"
#include "core/lua/calls/LuaCallbackScope.h"

#include "tbScripts/LogManager.h"

#include <exception>
#include <memory>
#include <string>
#include <vector>

namespace tbScripts::lua
{

namespace
{

using HostFunctionCall = DefinitionCall<FunctionDefinition>;

// Reads the arguments, calls the host and pushes its result; returns the number of results.
int runHostFunction(LuaCallbackScope& scope, const HostFunctionCall& call)
{
    const LuaCallBridge bridge(scope, call.getName());
    std::vector<FunctionParameter>& parameters = call.getParameters();
    int stackIndex = 0;
    for (FunctionParameter& parameter : parameters)
        bridge.readParameter(parameter, ++stackIndex);

    const FunctionParameter result =
        call.getCallable()(tbMemory::BufferView<FunctionParameter>(parameters));
    return bridge.pushParameter(result);
}

// Returns the number of results, or RAISE_MESSAGE_ON_TOP with the message in `errorText`, which is
// null until then: a string from the beginning would cost every call.
int runCatchingHostErrors(
    LuaCallbackScope& scope, const HostFunctionCall& call, std::unique_ptr<std::string>& errorText)
{
    try
    {
        return runHostFunction(scope, call);
    }
    catch (const std::string& thrown)
    {
        errorText = std::make_unique<std::string>(thrown);
    }
    catch (const std::exception& exception)
    {
        if (!call.getCallable())
            throw; // an empty callable throws this; the interpreter reports it
        errorText = std::make_unique<std::string>(exception.what());
    }
    return RAISE_MESSAGE_ON_TOP;
}

// The callable may destroy `function`; the call holds the definition, which it still needs.
int callLivingFunction(LuaFunction& function, lua_State* state)
{
    LuaCallbackScope scope(*function.getHandle().getSlot(), state);
    const HostFunctionCall call(function.getDefinition());
    std::unique_ptr<std::string> errorText;
    const int results = runCatchingHostErrors(scope, call, errorText);
    if (results != RAISE_MESSAGE_ON_TOP)
        return results;
    LogManager::getInstance()->log(*errorText, LOG_SOURCE_LUA_FUNCTION);
    return raiseText(state, errorText->c_str());
}

int reportDeadFunction(const LuaFunctionAnchor* anchor, lua_State* state)
{
    const tbMemory::StringView name = anchor ? anchor->getName() : tbMemory::StringView();
    return raiseText(state, messages::functionIsGone(name).c_str());
}

int runAnchoredFunction(lua_State* state)
{
    const auto* const anchor = static_cast<const LuaFunctionAnchor*>(firstUpvalueOf(state));
    return anchor && anchor->function ? callLivingFunction(*anchor->function, state)
                                      : reportDeadFunction(anchor, state);
}

[[gnu::noinline]] int callDescribedFunction(lua_State* state)
{
    return closureOf<&runAnchoredFunction>(state);
}

} // namespace

int callHostFunction(lua_State* state)
{
    // Typed callables first, in a frame of its own: they need much less of the stack.
    const auto* const anchor = static_cast<const LuaFunctionAnchor*>(firstUpvalueOf(state));
    if (!anchor || !anchor->function || !anchor->function->getDefinition().typed)
        return callDescribedFunction(state);
    return finishClosure(state, runTypedFunction(*anchor->function, state));
}

} // namespace tbScripts::lua

#include "bindings/lua/LuaFunctionClosure.h"

#include "bindings/BindingMessages.h"
#include "bindings/lua/LuaCallBridge.h"
#include "bindings/lua/LuaFunction.h"
#include "core/LogSources.h"
#include "core/lua/LuaCallbackScope.h"

#include "tbScripts/LogManager.h"

#include <exception>
#include <string>
#include <vector>

namespace tbScripts::lua
{

namespace
{

constexpr int RAISE_MESSAGE_ON_TOP = -1;

// Reads the arguments, calls the host and pushes its result; returns the number of results.
int runHostFunction(LuaCallbackScope& scope, const FunctionCall& call)
{
    const LuaCallBridge bridge(scope);
    std::vector<FunctionParameter>& parameters = call.getParameters();
    int stackIndex = 0;
    for (FunctionParameter& parameter : parameters)
        bridge.readParameter(parameter, ++stackIndex, call.getName());

    const FunctionParameter result =
        call.getCallable()(tbMemory::BufferView<FunctionParameter>(parameters));
    return bridge.pushParameter(result, call.getName());
}

// Returns the number of results, or RAISE_MESSAGE_ON_TOP with the message in `errorText`.
int runCatchingHostErrors(LuaCallbackScope& scope, const FunctionCall& call, std::string& errorText)
{
    try
    {
        return runHostFunction(scope, call);
    }
    catch (const std::string& thrown)
    {
        errorText = thrown;
    }
    catch (const std::exception& exception)
    {
        if (!call.getCallable())
            throw; // not the host's: what an empty callable throws is left to the interpreter
        errorText = exception.what();
    }
    return RAISE_MESSAGE_ON_TOP;
}

int pushMessage(lua_State* state, const char* text)
{
    lua_pushstring(state, text);
    return RAISE_MESSAGE_ON_TOP;
}

// May own whatever it likes: this frame is gone before the error is raised. `function` may be gone
// too once the callable has run; the call keeps what is needed.
int callLivingFunction(LuaFunction& function, lua_State* state)
{
    LuaCallbackScope scope(*function.getHandle().getSlot(), state);
    const FunctionCall call(function.getDefinition());
    std::string errorText;
    const int results = runCatchingHostErrors(scope, call, errorText);
    if (results != RAISE_MESSAGE_ON_TOP)
        return results;
    LogManager::getInstance()->log(errorText, LOG_SOURCE_LUA_FUNCTION);
    return pushMessage(state, errorText.c_str());
}

int reportDeadFunction(const LuaFunctionAnchor* anchor, lua_State* state)
{
    const tbMemory::StringView name = anchor ? anchor->getName() : tbMemory::StringView();
    return pushMessage(state, messages::functionIsGone(name).c_str());
}

} // namespace

// Owns nothing, so that leaving it through lua_error skips no destructor.
int callHostFunction(lua_State* state)
{
    const auto* const anchor =
        static_cast<const LuaFunctionAnchor*>(lua_touserdata(state, lua_upvalueindex(1)));
    const int results = anchor && anchor->function ? callLivingFunction(*anchor->function, state)
                                                   : reportDeadFunction(anchor, state);
    return results == RAISE_MESSAGE_ON_TOP ? lua_error(state) : results;
}

} // namespace tbScripts::lua

#include "bindings/lua/typed/LuaTypedCallStrategy.h"

#include "tbScripts/Environment.h"
#include "tbScripts/ScriptFunction.h"

namespace tbScripts::typed
{

bool callScript(
    const ScriptObjectReference& function, const OutgoingCall& call, ExecutionResult& result)
{
    return lua::callTyped(function, call, result);
}

ScriptObjectReference findScriptFunction(Environment& environment, const char* name)
{
    return environment.getScriptFunction(name);
}

} // namespace tbScripts::typed

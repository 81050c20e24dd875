#include "support/Interpreter.h"

#include "support/Require.h"

#include <tbScripts/Script.h>

#include <array>

namespace tbScripts::fuzz
{

bool runScript(Environment& environment, const std::string& sources)
{
    Script script;
    script.setTargetInterpreter(INTERPRETER_LUA);
    script.setSources(sources);
    return script.load() && environment.execute(script);
}

bool askScript(
    Environment& environment,
    const char* name,
    const ScriptObjectReference& left,
    const ScriptObjectReference& right)
{
    const std::array<FunctionParameter, 2> inputs{left, right};
    std::array<FunctionParameter, 1> outputs{false};
    tbMemory::BufferView<FunctionParameter> view = outputs;
    const bool isDone =
        environment.callScriptFunction(environment.getScriptFunction(name), inputs, view);
    require(isDone, "a script of the fuzzer itself does not fail");
    return outputs[0].getBool();
}

} // namespace tbScripts::fuzz

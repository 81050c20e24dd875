// The code of docs/guide/values-as-bytes.md.

#include <tbScripts/ContentLoader.h>
#include <tbScripts/Environment.h>
#include <tbScripts/Script.h>

#include <array>
#include <iostream>

using namespace tbScripts;
using Parameters = tbMemory::BufferView<FunctionParameter>;

namespace
{

// [shown]
tbMemory::Buffer takeState(Environment& environment, const ScriptObjectReference& getState)
{
    tbMemory::Buffer bytes;
    {
        std::array<FunctionParameter, 1> results{
            FunctionParameter::ofType(PARAM_TYPE_SCRIPT_OBJECT)};
        Parameters outputs = results;
        environment.callScriptFunction(getState, {}, outputs);
        bytes = environment.serializeScriptObject(results[0].getScriptObject(), true);
    }                                       // destroys the last reference to the table
    environment.requestGarbageCollection(); // collects the old instances
    return bytes;
}

// [/shown]

} // namespace

int main()
{
    Script script;
    script.setTargetInterpreter(INTERPRETER_LUA);
    script.setSources(ContentLoader::inputDataStr("state.lua"));
    script.load();

    Environment environment;
    environment.setEnvironmentFor(INTERPRETER_LUA);
    environment.execute(script);
    Script setting;
    setting.setTargetInterpreter(INTERPRETER_LUA);
    setting.setSources("state = {gate = 'open', guards = {'Anna', 'Bert'}}");
    setting.load();
    environment.execute(setting);

    // [shown]
    Environment other;
    other.setEnvironmentFor(INTERPRETER_LUA);

    const ScriptObjectReference state = environment.getVar("state");
    const tbMemory::Buffer bytes = environment.serializeScriptObject(state, false);
    const ScriptObjectReference copy = other.deserializeScriptObject(bytes);
    other.setVar("state", copy);
    // [/shown]

    other.execute(script);
    // [shown]
    const tbMemory::Buffer taken =
        takeState(environment, environment.getScriptFunction("getState"));
    const ScriptObjectReference given = other.deserializeScriptObject(taken);

    std::array<FunctionParameter, 3> results{0, false, ""};
    Parameters outputs = results;
    other.callScriptFunction(other.getScriptFunction("describe"), {given}, outputs);
    std::cout << "gate " << results[0].getInt() << ", greet is " << results[2].getString() << '\n';
    // [/shown]
}

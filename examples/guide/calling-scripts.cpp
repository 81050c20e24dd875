// The code of docs/guide/calling-scripts.md.

#include <tbScripts/ContentLoader.h>
#include <tbScripts/Environment.h>
#include <tbScripts/Function.h>
#include <tbScripts/Script.h>

#include <array>
#include <iostream>
#include <vector>

using namespace tbScripts;
using Parameters = tbMemory::BufferView<FunctionParameter>;

int main()
{
    Environment environment;
    environment.setEnvironmentFor(INTERPRETER_LUA);
    Function* const print = environment.setFunc("print");
    print->addParameter(PARAM_TYPE_STRING);
    print->setFunction(
        [](const Parameters& arguments)
        {
            std::cout << arguments[0].getString() << '\n';
            return FunctionParameter::VOID;
        });

    // [shown]
    std::vector<ScriptObjectReference> listeners;
    Function* const onEvent = environment.setFunc("onEvent");
    onEvent->addParameter(PARAM_TYPE_SCRIPT_FUNCTION);
    onEvent->setFunction(
        [&listeners](const Parameters& arguments)
        {
            listeners.push_back(arguments[0].getScriptObject());
            return FunctionParameter::VOID;
        });
    // [/shown]

    Script script;
    script.setTargetInterpreter(INTERPRETER_LUA);
    script.setSources(ContentLoader::inputDataStr("decide.lua"));
    script.load();
    environment.execute(script);

    // [shown]
    const ScriptObjectReference decide = environment.getScriptFunction("decide"); // once

    std::array<FunctionParameter, 3> results{"rest", 0.0, 0.0};
    Parameters outputs = results;
    if (environment.callScriptFunction(decide, {7, 1.5, true}, outputs))
        std::cout << results[0].getString() << ' ' << results[1].getDouble() << '\n';
    // [/shown]

    // [shown]
    Parameters noResults;
    for (const ScriptObjectReference& listener : listeners)
    {
        environment.callScriptFunction(listener, {"sunrise"}, noResults);
        environment.callScriptFunction(listener, {"sunset"}, noResults);
    }
    // [/shown]
}

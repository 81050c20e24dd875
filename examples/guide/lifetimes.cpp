// The code of docs/guide/lifetimes.md.

#include <tbScripts/Environment.h>
#include <tbScripts/Function.h>
#include <tbScripts/Script.h>

#include <iostream>

using namespace tbScripts;
using Parameters = tbMemory::BufferView<FunctionParameter>;

int main()
{
    // [shown]
    ScriptObjectReference greet;
    Script script;
    script.setTargetInterpreter(INTERPRETER_LUA);
    script.setSources("function greet() return 'hello' end");
    script.load();

    FunctionParameter results[] = {"nothing"};
    Parameters outputs = results;
    {
        Environment environment;
        environment.setEnvironmentFor(INTERPRETER_LUA);
        environment.execute(script);
        greet = environment.getScriptFunction("greet");
        environment.callScriptFunction(greet, {}, outputs);
        std::cout << results[0].getString() << '\n';
    } // the interpreter closes; reference and script still exist

    Environment next;
    next.setEnvironmentFor(INTERPRETER_LUA);
    if (!next.callScriptFunction(greet, {}, outputs)) // no function of this environment
        std::cout << next.getLastExecutionResult().message << '\n';
    next.execute(script); // the compiled form is still valid
    next.callScriptFunction(next.getScriptFunction("greet"), {}, outputs);
    std::cout << results[0].getString() << '\n';
    // [/shown]
}

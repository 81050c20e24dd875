#include <tbScripts/Environment.h>
#include <tbScripts/Function.h>
#include <tbScripts/Script.h>

#include <iostream>

using namespace tbScripts;

int main()
{
    Environment environment;
    environment.setEnvironmentFor(INTERPRETER_LUA);
    Function* const say = environment.setFunc("say"); // a host function
    say->addParameter(PARAM_TYPE_STRING);
    say->setFunction(
        [](const auto& arguments)
        {
            std::cout << arguments[0].getString() << '\n';
            return FunctionParameter::VOID;
        });
    Script script;
    script.setTargetInterpreter(INTERPRETER_LUA);
    script.setSources("say('hello') function halve(n) return n / 2 end say(nil)");
    if (script.load() && !environment.execute(script)) // prints: hello, and why it stopped
        std::cout << environment.getLastExecutionResult().message << '\n';
    FunctionParameter results[] = {0.0}; // the kind that is expected
    tbMemory::BufferView<FunctionParameter> outputs = results;
    environment.callScriptFunction(environment.getScriptFunction("halve"), {7}, outputs);
    std::cout << results[0].getDouble() << '\n'; // prints: 3.5
}

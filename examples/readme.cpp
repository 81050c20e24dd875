#include <tbScripts/Environment.h>
#include <tbScripts/Function.h>
#include <tbScripts/Script.h>

#include <array>
#include <iostream>

using namespace tbScripts;

int main()
{
    Environment environment;
    environment.setEnvironmentFor(INTERPRETER_LUA);

    Function* const say = environment.setFunc("say"); // a host function
    say->addParameter(PARAM_TYPE_STRING);
    say->setFunction(
        [](const tbMemory::BufferView<FunctionParameter>& arguments)
        {
            std::cout << arguments[0].getString() << '\n';
            return FunctionParameter::VOID;
        });

    Script script;
    script.setName("first");
    script.setTargetInterpreter(INTERPRETER_LUA);
    script.setSources("say('hello'); lives = 3; function halve(n) return n / 2, n % 2 == 0 end");
    if (!script.load() || !environment.execute(script)) // prints: hello
        return 1;

    std::array<FunctionParameter, 2> results{0.0, false}; // the kinds that are expected
    tbMemory::BufferView<FunctionParameter> outputs = results;
    if (!environment.callScriptFunction(environment.getScriptFunction("halve"), {7}, outputs))
        return 1;
    std::cout << results[0].getDouble() << '\n';         // prints: 3.5
    std::cout << environment.getVar("lives", 0) << '\n'; // prints: 3

    script.setSources("say(nil)");
    if (script.load() && !environment.execute(script)) // prints: ... Expected string, got nil.
        std::cout << environment.getLastExecutionResult().message << '\n';
}

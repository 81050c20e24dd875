#include <tbScripts/Bind.h>
#include <tbScripts/Environment.h>
#include <tbScripts/Script.h>
#include <tbScripts/ScriptFunction.h>

#include <iostream>
#include <string>

using namespace tbScripts;

int main()
{
    Environment environment;
    environment.setEnvironmentFor(INTERPRETER_LUA);
    bind(environment, "say", [](const std::string& text) { std::cout << text << '\n'; });
    Script script;
    script.setTargetInterpreter(INTERPRETER_LUA);
    script.setSources("say('hello') function halve(n) return n / 2 end say(nil)");
    if (script.load() && !environment.execute(script)) // prints: hello, and why it stopped
        std::cout << environment.getLastExecutionResult().message << '\n';
    const ScriptFunction<double(double)> halve(environment, "halve");
    std::cout << halve(7) << '\n'; // prints: 3.5
}

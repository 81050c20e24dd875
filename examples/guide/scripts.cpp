// The code of docs/guide/scripts.md.

#include <tbScripts/ContentLoader.h>
#include <tbScripts/Environment.h>
#include <tbScripts/Script.h>

#include <iostream>

using namespace tbScripts;

int main()
{
    // [shown]
    Script script;
    script.setName("patrol.lua");
    script.setTargetInterpreter(INTERPRETER_LUA);
    script.setSources(ContentLoader::inputDataStr("patrol.lua"));
    if (!script.load())
        std::cout << script.getLastCompilationResult().message << '\n';
    // [/shown]

    // [shown]
    Environment environment;
    environment.setEnvironmentFor(INTERPRETER_LUA);
    if (!environment.execute(script))
        std::cout << environment.getLastExecutionResult().message << '\n';
    // [/shown]

    // [shown]
    Script broken(script);
    broken.setTargetInterpreter(INTERPRETER_LUA); // a compiled form of its own
    broken.setSources("-- patrol.lua\nfunction patrol(distance return distance end\n");
    broken.load();
    std::cout << broken.getLastCompilationResult().errorCode << ": "
              << broken.getLastCompilationResult().message << '\n';

    broken.setSources("-- patrol.lua\nposition = position + step\n");
    broken.load();
    environment.execute(broken);
    std::cout << environment.getLastExecutionResult().code << ": "
              << environment.getLastExecutionResult().message << '\n';
    // [/shown]
}

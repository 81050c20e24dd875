// The code of docs/guide/environments.md.

#include <tbScripts/ContentLoader.h>
#include <tbScripts/Environment.h>
#include <tbScripts/Script.h>

#include <iostream>

using namespace tbScripts;

int main()
{
    Script script;
    script.setTargetInterpreter(INTERPRETER_LUA);
    script.setSources("speed = difficulty / 2  guard = {name = 'Anna', strength = 7}");
    script.load();

    // [shown]
    Environment environment;
    environment.setName("level 1");
    environment.setEnvironmentFor(INTERPRETER_LUA);
    environment.setVar("difficulty", 3);
    environment.execute(script);
    const double speed = environment.getVar("speed", 1.0);
    const double armour = environment.getVar("armour", 1.0); // the script has set none
    std::cout << speed << ' ' << armour << '\n';
    // [/shown]

    Script fields;
    fields.setTargetInterpreter(INTERPRETER_LUA);
    fields.setSources(ContentLoader::inputDataStr("fields.lua"));
    fields.load();

    // [shown]
    environment.execute(fields);
    const ScriptObjectReference field = environment.getScriptFunction("field");
    const ScriptObjectReference guard = environment.getVar("guard"); // the table
    FunctionParameter results[] = {"nobody"};
    tbMemory::BufferView<FunctionParameter> outputs = results;
    environment.callScriptFunction(field, {guard, "name"}, outputs);
    std::cout << results[0].getString() << '\n';
    // [/shown]
}

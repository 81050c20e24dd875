// The code of docs/guide/values.md.

#include <tbScripts/Environment.h>
#include <tbScripts/Function.h>
#include <tbScripts/Script.h>

#include <iostream>

using namespace tbScripts;
using Parameters = tbMemory::BufferView<FunctionParameter>;

int main()
{
    // [shown]
    const FunctionParameter five = 5;
    std::cout << five.getInt() << ' ' << five.getDouble() << '\n'; // nothing is converted
    // [/shown]

    Environment environment;
    environment.setEnvironmentFor(INTERPRETER_LUA);

    // [shown]
    Function* const show = environment.setFunc("show");
    show->addParameter(PARAM_TYPE_INT);
    show->setFunction(
        [](const Parameters& arguments)
        {
            std::cout << arguments[0].getInt() << '\n';
            return FunctionParameter::VOID;
        });

    Script script;
    script.setTargetInterpreter(INTERPRETER_LUA);
    script.setSources("show(-2.9) show('0x10') show(4294967297) show(0 / 0) big = 4294967297");
    script.load();
    environment.execute(script);
    std::cout << "as a global " << environment.getVar("big", 0) << '\n';
    // [/shown]
}

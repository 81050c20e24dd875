// The code of docs/guide/host-functions.md.

#include <tbScripts/Environment.h>
#include <tbScripts/Function.h>
#include <tbScripts/Script.h>

#include <iostream>
#include <string>

using namespace tbScripts;

// [shown]
using Parameters = tbMemory::BufferView<FunctionParameter>;

// [/shown]

namespace
{

// [shown]
struct World
{
    double health[3] = {10.0, 4.0, 0.0};

    bool isAlive(int unit) const { return unit >= 0 && unit < 3 && health[unit] > 0.0; }

    double heal(int unit, double amount) { return health[unit] += amount; }
};

// [/shown]

void run(Environment& environment, const char* sources)
{
    Script script;
    script.setName("heal.lua");
    script.setTargetInterpreter(INTERPRETER_LUA);
    script.setSources(sources);
    script.load();
    if (!environment.execute(script))
        std::cout << environment.getLastExecutionResult().message << '\n';
}

} // namespace

int main()
{
    // [shown]
    World world; // declared before the environment, so it is destroyed after it
    Environment environment;
    environment.setEnvironmentFor(INTERPRETER_LUA);

    Function* const heal = environment.setFunc("heal");
    heal->addParameter(PARAM_TYPE_INT);
    heal->addParameter(PARAM_TYPE_DOUBLE);
    heal->setFunction(
        [&world](const Parameters& arguments)
        {
            if (!world.isAlive(arguments[0].getInt()))
                throw std::string("heal: there is no such unit");
            return world.heal(arguments[0].getInt(), arguments[1].getDouble());
        });

    Function* const print = environment.setFunc("print");
    print->addParameter(PARAM_TYPE_STRING);
    print->setFunction(
        [](const Parameters& arguments)
        {
            std::cout << arguments[0].getString() << '\n';
            return FunctionParameter::VOID;
        });
    // [/shown]

    // [shown]
    run(environment, "print(heal(1, 2.5))");
    run(environment, "heal(1, 'much')");
    run(environment, "heal(7, 1)");
    run(environment, "print(select(2, pcall(heal, 7, 1)))");
    // [/shown]
}

// The code of docs/guide/namespaces.md.

#include <tbScripts/ContentLoader.h>
#include <tbScripts/Environment.h>
#include <tbScripts/Function.h>
#include <tbScripts/Namespace.h>
#include <tbScripts/Script.h>
#include <tbScripts/UserType.h>

#include <iostream>

using namespace tbScripts;
using Parameters = tbMemory::BufferView<FunctionParameter>;

namespace
{

struct Point
{
    double x;
    double y;
};

struct World
{
    static void rain() { std::cout << "it rains" << std::endl; }
};

} // namespace

int main()
{
    World world;
    Point home{3.0, 4.0};
    Environment environment;
    environment.setEnvironmentFor(INTERPRETER_LUA);
    environment.setUserType("Point");

    // [shown]
    Namespace* const sky = environment.setNamespace("world::sky"); // declares world as well
    sky->setVar("height", 80.0);
    sky->setVar("highest", "Point", &home);
    sky->setFunction("rain")->setFunction(
        [&world](const Parameters&)
        {
            world.rain();
            return FunctionParameter::VOID;
        });

    UserType* const cloud = environment.setUserType("world::sky::Cloud");
    std::cout << cloud->getName() << " is " << cloud->getFullName() << std::endl;
    // [/shown]

    Script script;
    script.setTargetInterpreter(INTERPRETER_LUA);
    script.setSources(ContentLoader::inputDataStr("sky.lua"));
    script.load();
    environment.execute(script);
}

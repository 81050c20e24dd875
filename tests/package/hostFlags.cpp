// A host with a reference class of its own. What it prints shows that library and host agree, also
// if the host is built without type information.
#include <tbScripts/Environment.h>
#include <tbScripts/ScriptObjectInterpreterReference.h>
#include <tbScripts/ScriptObjectReference.h>

#include <iostream>

namespace
{

class OwnReference : public tbScripts::ScriptObjectInterpreterReference
{
public:
    OwnReference()
        : ScriptObjectInterpreterReference(tbScripts::PARAM_TYPE_SCRIPT_OBJECT)
    {
    }
};

} // namespace

int main()
{
    tbScripts::Environment environment;
    environment.setEnvironmentFor(tbScripts::INTERPRETER_LUA);
    environment.setVar("own", 7);
    environment.setVar("own", tbScripts::ScriptObjectReference(new OwnReference));
    std::cout << "own is " << (environment.isVarSet("own") ? "set" : "nil") << '\n';
    return 0;
}

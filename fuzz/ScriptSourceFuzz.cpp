// Texts that are compiled and run, in an environment with a few bindings. Then the host uses what
// the script has left behind.
//
// A script has all that the interpreter offers, and much of that can end a process. So a script
// that runs first takes away what does so by design: the C interface, the debug library, compiled
// code, processes and files, coroutines in each other without end. It also limits how long a script
// runs.

#include "sources/Bindings.h"
#include "support/Interpreter.h"
#include "support/Require.h"

#include <tbScripts/Environment.h>

#include <array>
#include <cstddef>
#include <cstdint>

namespace tbScripts::fuzz
{

namespace
{

using Parameters = tbMemory::BufferView<FunctionParameter>;

constexpr std::array NAMES{"main", "state", "home", "world", "Vec", "x"};

// Looks at everything that a script may have left under the names that it knows.
void useGlobals(Environment& environment)
{
    for (const char* const name : NAMES)
    {
        environment.isVarSet(name);
        environment.getVar(name, false);
        environment.getVar(name, 0);
        environment.getVar(name, 0.0);
        environment.getVar(name, "");
        environment.getObject(name, "Vec");
        const ScriptObjectReference value = environment.getVar(name);
        const tbMemory::Buffer bytes = environment.serializeScriptObject(value, false);
        environment.setVar("copy", environment.deserializeScriptObject(bytes));
    }
}

void callMain(Environment& environment, Bindings& bindings)
{
    const ScriptObjectReference main = environment.getScriptFunction("main");
    const std::array<FunctionParameter, 4> inputs{
        1.5, "text", environment.getVar("state"), bindings.makeOwnedInstance()};
    std::array<FunctionParameter, 3> outputs{
        0, FunctionParameter::ofType(PARAM_TYPE_USER_TYPE, "Vec"), ""};
    Parameters view = outputs;
    environment.callScriptFunction(main, inputs, view);
}

void runAndUse(const std::string& sources)
{
    Bindings bindings;
    {
        Environment environment;
        environment.setEnvironmentFor(INTERPRETER_LUA);
        bindings.declareIn(environment);
        require(runScript(environment, Bindings::PRELUDE), "the prelude is a correct script");
        runScript(environment, sources);
        useGlobals(environment);
        callMain(environment, bindings);
        environment.requestGarbageCollection();
        bindings.dropReferences();
    }
    bindings.check();
}

} // namespace

} // namespace tbScripts::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    tbScripts::fuzz::runAndUse(std::string(reinterpret_cast<const char*>(data), size));
    return 0;
}

#include "environments/EnvironmentBindings.h"
#include "environments/EnvironmentStrategy.h"

#include <utility>

namespace tbScripts
{

namespace
{

// Deletes the functions one by one; each has left the list before it goes, since the end of its
// callable may run code of the host.
void deleteFunctions(EnvironmentBindings& bindings)
{
    std::vector<std::unique_ptr<Function>> functions = std::move(bindings.functions);
    bindings.functions.clear();
    for (std::unique_ptr<Function>& function : functions)
        function.reset();
}

// The order is fixed: functions go while the globals that show them are still there, what scripts
// hold is collected before its bindings go, and the interpreter closes last.
void tearDown(EnvironmentStrategy& strategy, EnvironmentBindings& bindings)
{
    strategy.beginTeardown();
    deleteFunctions(bindings);           // 1
    strategy.clearGlobals();             // 2
    strategy.requestGarbageCollection(); // 3
    strategy.shutDown();                 // 4
}

} // namespace

void releaseShares(
    EnvironmentStrategy& strategy,
    bool isLastOfStrategy,
    std::shared_ptr<EnvironmentBindings> bindings)
{
    if (bindings.use_count() == 1)
        tearDown(strategy, *bindings);
    else if (isLastOfStrategy)
        strategy.shutDown();
}

} // namespace tbScripts

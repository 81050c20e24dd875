#include "core/ExceptionContainment.h"
#include "environments/EnvironmentBindings.h"
#include "environments/EnvironmentStrategy.h"

#include <utility>

namespace tbScripts
{

namespace
{

// Deletes the objects one by one; each has left the list before it is destroyed, because its
// destructor may run code of the host.
template <typename T>
void deleteAll(std::vector<std::unique_ptr<T>>& list)
{
    std::vector<std::unique_ptr<T>> objects = std::exchange(list, {});
    for (std::unique_ptr<T>& object : objects)
        object.reset();
}

// Takes one step. If the step fails for lack of memory, for a message perhaps, the others still
// run.
template <typename Step>
void take(Step&& step)
{
    contain(step, [] {});
}

// The order is fixed: functions are destroyed while the globals that show them still exist,
// instances are collected before the types that destroy their objects, and the interpreter closes
// last.
void tearDown(EnvironmentStrategy& strategy, EnvironmentBindings& bindings)
{
    strategy.beginTeardown();
    deleteAll(bindings.functions);          // 1
    take([&] { strategy.clearGlobals(); }); // 2
    for (const std::unique_ptr<Namespace>& scope : bindings.namespaces)
        take([&] { scope->release(); }); // 3
    for (const std::unique_ptr<UserType>& type : bindings.userTypes)
        take([&] { type->clear(); });                   // 4
    take([&] { strategy.requestGarbageCollection(); }); // 5
    deleteAll(bindings.namespaces);                     // 6
    deleteAll(bindings.userTypes);
    take([&] { strategy.shutDown(); }); // 7
}

} // namespace

void releaseShares(
    EnvironmentStrategy& strategy,
    // NOLINTNEXTLINE(performance-unnecessary-value-param): the share ends with this call
    std::shared_ptr<EnvironmentBindings> bindings)
{
    if (bindings.use_count() == 1)
        tearDown(strategy, *bindings);
    else if (!strategy.isServing())
        strategy.shutDown();
}

} // namespace tbScripts

#pragma once

#include "tbScripts/Function.h"
#include "tbScripts/Namespace.h"
#include "tbScripts/UserType.h"

#include <memory>
#include <vector>

namespace tbScripts
{

class EnvironmentStrategy;

/// The host bindings of an environment, in the order of their declaration. Copies of an environment
/// share them; the registries of each copy only refer to them.
struct EnvironmentBindings
{
    std::vector<std::unique_ptr<Function>> functions;
    std::vector<std::unique_ptr<UserType>> userTypes;
    std::vector<std::unique_ptr<Namespace>> namespaces;
};

/// Tears down the shares that one environment releases: all bindings and the interpreter, in order,
/// if `bindings` is the last share; else only the interpreter, if it serves no other environment.
///
/// Requires: the caller holds `strategy`, which no longer serves the environment.
void releaseShares(EnvironmentStrategy& strategy, std::shared_ptr<EnvironmentBindings> bindings);

} // namespace tbScripts

#pragma once

#include "tbScripts/Function.h"

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
};

/// Gives up one environment's share of its interpreter and bindings, and empties both pointers.
///
/// The last share of the bindings takes everything down, in its order; a last share of only the
/// interpreter closes that.
void releaseShares(
    std::shared_ptr<EnvironmentStrategy>& strategy, std::shared_ptr<EnvironmentBindings>& bindings);

} // namespace tbScripts

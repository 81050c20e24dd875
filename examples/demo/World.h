#pragma once

#include "demo/Arena.h"
#include "demo/VecStore.h"

#include <tbScripts/Environment.h>

namespace demo
{

/// Declares what scripts know as `world`:
///
///     world.types     the types Vec and Entity
///     world.field     the entities, and the size of the field
///     world.chance    random numbers
///
/// Requires: `arena` and `vecs` outlive `environment`.
void declareWorld(tbScripts::Environment& environment, Arena& arena, VecStore& vecs);

} // namespace demo

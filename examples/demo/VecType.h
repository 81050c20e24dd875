#pragma once

#include "demo/VecStore.h"

#include <tbScripts/Environment.h>

namespace demo
{

/// Full name of the type. Scripts reach it as the field of that name: `world.types.Vec`.
constexpr const char* VEC_TYPE = "world::types::Vec";

/// Declares the type whose objects belong to scripts: they create them, and their collector decides
/// when one is destroyed.
///
/// Requires: `vecs` outlives `environment`, whose destructor still destroys vectors.
void declareVec(tbScripts::Environment& environment, VecStore& vecs);

/// Returns a new vector for a script to own.
tbScripts::FunctionParameter newVec(VecStore& vecs, const Vec& value);

/// Returns the vector in `parameter`; throws a string, which becomes a script error, if there is
/// none.
Vec& vecIn(const VecStore& vecs, const tbScripts::FunctionParameter& parameter);

} // namespace demo

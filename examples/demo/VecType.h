#pragma once

#include "demo/VecStore.h"

#include <tbScripts/Environment.h>

namespace demo
{

/// Full name of the type. Scripts reach it as the field of that name: `world.types.Vec`.
constexpr const char* VEC_TYPE = "world::types::Vec";

/// Declares the type whose objects belong to scripts: they make them, and their collector says when
/// one is destroyed.
///
/// Requires: `vecs` outlives `environment`, whose end still destroys vectors.
void declareVec(tbScripts::Environment& environment, VecStore& vecs);

/// Returns a new vector for a script to own.
tbScripts::FunctionParameter newVec(VecStore& vecs, const Vec& value);

/// Returns the vector in `parameter`; throws a text, which becomes a script error, if there is
/// none.
Vec& vecIn(const VecStore& vecs, const tbScripts::FunctionParameter& parameter);

} // namespace demo

#pragma once

#include "demo/Arena.h"
#include "demo/VecStore.h"

#include <tbScripts/Environment.h>

namespace demo
{

constexpr const char* ENTITY_TYPE = "world::types::Entity";

/// Declares the type whose objects belong to the host: scripts cannot create any, and their
/// collector destroys none, because the type has neither constructor nor destructor.
///
/// Requires: `arena` and `vecs` outlive `environment`.
void declareEntity(tbScripts::Environment& environment, Arena& arena, VecStore& vecs);

/// Returns `entity` as scripts see it, nil if it is null. Scripts may hold it as long as they like:
/// the arena never moves or removes one.
tbScripts::FunctionParameter toScript(Entity* entity);

/// Returns the entity in `parameter`; throws a string, which becomes a script error, if there is
/// none.
Entity& entityIn(const tbScripts::FunctionParameter& parameter);

} // namespace demo

#pragma once

#include "support/Workload.h"

#include <lua.hpp>

namespace bench
{

/// Declares the global type `Body` as hand-written code does: one metatable, functions that check
/// their arguments, and a box with a pointer, because the host has objects that scripts only see.
void declareHandWrittenBody(lua_State* state);

/// Stack: +1, an instance that shows `object`; the script owns it if `isOwned`.
void pushBody(lua_State* state, Body* object, bool isOwned);

/// Returns the object of the instance at `index`; raises an error for any other value.
Body& checkBody(lua_State* state, int index);

} // namespace bench

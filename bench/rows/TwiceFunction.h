#pragma once

#include <tbScripts/Environment.h>
#include <tbScripts/Function.h>

#include <lua.hpp>

namespace bench
{

// The plainest host function, which several rows call: twice(x), a number from a number.

int twiceByHand(lua_State* state);

/// Declares it as a global.
void declareTwiceByHand(lua_State* state);

void declareTwice(tbScripts::Function* function);

// The same by its type, and as a leaf.

void bindTwice(tbScripts::Environment& environment);
void bindTwiceAsLeaf(tbScripts::Environment& environment);

} // namespace bench

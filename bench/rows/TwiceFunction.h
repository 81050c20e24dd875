#pragma once

#include <tbScripts/Function.h>

#include <lua.hpp>

namespace bench
{

// The plainest host function, which several rows call: twice(x), a number from a number.

int twiceByHand(lua_State* state);

/// Declares it as a global.
void declareTwiceByHand(lua_State* state);

void declareTwice(tbScripts::Function* function);

} // namespace bench

#pragma once

// Tells leaves whether the code that calls them is being compiled. Uncompiled code is to call the C
// function around which a leaf is put, because the interpreter takes a microsecond for a call by
// the foreign function interface, which compiled code makes in three nanoseconds.
//
// Script code asks in two steps, `if fast and compiles(true) then`:
//
// - `fast` is an upvalue that no script assigns. So the compiler takes it for a constant. The
//   library sets it from outside as soon as the compiler looks at any instruction.
// - `compiles` is a function object that the compiler knows and compiles to its argument, and to
//   nothing for a constant. The C function in it is one of ours, which uncompiled code calls. It
//   returns true only if the compiler has just looked at this very call; else nothing is compiled
//   any more, and it resets `fast`.
//
// So uncompiled code looks at one upvalue, and compiled code at nothing. Neither the flag nor the
// function decides what is right: both ways have the same results.
//
// Why: docs/decisions/0034-compiled-leaves.md

#include "core/lua/LuaApi.h"

namespace tbScripts::lua
{

/// The upvalue of the function that `attachToCompiler` gets.
constexpr int FAST_UPVALUE = 1;

/// Pushes `compiles`. Returns false, and pushes nothing, if this interpreter does not allow it.
bool pushCompiles(lua_State* state);

/// Has the first upvalue of the function on top of the stack be `fast` from here on. Returns false
/// if that cannot be, or if somebody watches the compiler already: only one can. Stack: +0.
/// `interfaceIndex` as for `pushOwnFunction`.
bool attachToCompiler(lua_State* state, int interfaceIndex);

} // namespace tbScripts::lua

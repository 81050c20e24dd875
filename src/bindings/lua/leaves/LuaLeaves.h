#pragma once

// Script functions that call a host function by themselves, or read and write a member of an
// object, in such a way that the interpreter compiles this into the code of the script.
//
// Such a function is put around the C function that serves the binding otherwise. It looks at its
// arguments, and passes everything that it cannot take to the C function, with whose results and
// messages it returns. It also does so where it runs uncompiled: only compiled code is faster.
//
// Why: docs/decisions/0034-compiled-leaves.md

#include "core/lua/LuaApi.h"
#include "core/lua/LuaStateSlot.h"

#include "tbScripts/typed/Call.h"

namespace tbScripts::lua
{

/// Replaces the C function on top of the stack by a script function that calls the leaf of
/// `signature`. Returns false, and leaves the stack as it is, if the signature or the interpreter
/// does not allow this.
///
/// The leaf is called only while `*living` is not null; a null pointer means always. Requires: the
/// C function keeps the block of the interpreter alive in which `living` points.
///
/// May raise: there may be no memory.
bool wrapLeaf(
    LuaStateSlot& slot,
    lua_State* state,
    const typed::Signature& signature,
    const void* const* living);

/// The same for a function that gets an instance of `type` and returns its member.
bool wrapReader(
    LuaStateSlot& slot,
    lua_State* state,
    const typed::TypeId& type,
    const typed::Member& member,
    const void* const* living);

/// The same for a function that gets an instance and a value, and writes it.
bool wrapWriter(
    LuaStateSlot& slot,
    lua_State* state,
    const typed::TypeId& type,
    const typed::Member& member,
    const void* const* living);

/// Returns whether the function at `index` is one that these have made, or a script has named
/// its code like that of one. Stack: +0.
bool isLeaf(lua_State* state, int index);

} // namespace tbScripts::lua

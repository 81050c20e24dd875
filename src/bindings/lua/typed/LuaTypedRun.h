#pragma once

#include "bindings/TypedCallable.h"
#include "bindings/lua/types/LuaTypeCore.h"
#include "core/lua/LuaApi.h"
#include "core/lua/LuaStateSlot.h"

#include <tbMemory/String.h>

namespace tbScripts::lua
{

class LuaFunction;

/// Runs the typed callable of `function` for the script that has called a closure of `state`, and
/// returns what a closure's body returns. The callable may destroy `function`. Requires: there is
/// one.
///
/// A `std::string` or `std::exception` that the host throws becomes a script error, which is logged
/// (tag "LuaFunction").
int runTypedFunction(const LuaFunction& function, lua_State* state);

/// The same for accesses to a field or an element, whose errors are not logged, as those of others
/// are not. The caller holds the callable.
int runTypedAccess(
    LuaStateSlot& slot,
    lua_State* state,
    const TypedCallable& callable,
    const tbMemory::String& name);

/// The same for `new` of the type `core`, whose table is at `tableIndex`.
int runTypedConstructor(
    lua_State* state, const LuaTypeCore& core, const TypedCallable& callable, int tableIndex);

/// Pushes the member of `object`. Returns the number of results.
int pushMember(lua_State* state, const void* object, const typed::Member& member);

/// Sets the member of `object` to the value at `index`, unless that does not fit: then it throws
/// the message.
void writeMember(
    lua_State* state,
    void* object,
    const typed::Member& member,
    int index,
    const tbMemory::StringView& name);

} // namespace tbScripts::lua

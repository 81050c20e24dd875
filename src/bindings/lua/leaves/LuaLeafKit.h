#pragma once

// What all leaves of a state share: functions of the interpreter, the check of an instance, and the
// flag that says whether code is being compiled. A private table of the interpreter holds it, and
// the shapes of leaves (see LuaLeaves.cpp).
//
// Why: docs/decisions/0034-compiled-leaves.md

#include "core/lua/LuaApi.h"
#include "core/lua/LuaStateSlot.h"

namespace tbScripts::lua
{

/// The kit of a state. `kitIndex` is where its table is on the stack.
///
/// All may raise: there may be no memory.
class LuaLeafKit
{
public:
    /// Stack: +1, the kit, which is created if this is the first leaf. Pushes nothing and returns
    /// false if this state cannot have leaves.
    static bool push(LuaStateSlot& slot, lua_State* state);

    /// Has upvalue `number` of the function at `functionIndex` be the kit's `name`.
    static void
    joinUpvalue(lua_State* state, int kitIndex, const char* name, int functionIndex, int number);

    /// Stack: +1, the type of the interface that is written so.
    static void pushType(lua_State* state, int kitIndex, const char* type);

    /// Replaces the type of the interface on top of the stack by `address` as a value of that type.
    static void castOnTop(lua_State* state, int kitIndex, const void* address);

    /// Stack: +1, a pointer to a word.
    static void pushWord(lua_State* state, int kitIndex, const void* word);

    /// The same for a word that stays as long as the state. One pointer serves all leaves.
    static void pushSharedWord(lua_State* state, int kitIndex, const void* word);
};

} // namespace tbScripts::lua

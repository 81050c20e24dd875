#pragma once

#include "bindings/lua/LuaNamedTables.h"
#include "bindings/lua/types/LuaTypeCore.h"
#include "core/lua/LuaApi.h"
#include "core/lua/LuaStateHandle.h"

#include <tbMemory/StringView.h>

#include <memory>

namespace tbScripts::lua
{

/// The interpreter's side of a user type: its table, which is the metatable of instances and what
/// scripts reach by the type's name, and the tables that decide what a read or write means.
///
/// Reads and writes go through two small script functions over these tables, which the
/// interpreter's compiler can see through; a C function in their place costs half as much again.
/// The tables stay the same as long as the type does. All operations work on the thread given and
/// may raise; they expect `parts` on top of the stack, and leave it there.
class LuaTypeTable
{
public:
    /// Stack: +1, the parts of a new type: its table, made or taken over, with all entries of a
    /// type without declarations. Registers the table under the type's full name.
    ///
    /// Returns what the registry held under that name; if it was something foreign, which stays,
    /// there is nil in the place of the parts.
    static NAMED_TABLE
    pushParts(LuaStateSlot& slot, lua_State* state, const std::shared_ptr<LuaTypeCore>& core);

    /// Forgets what a table that was taken over held before. Allocates nothing.
    static void forgetFormer(lua_State* state);

    /// Gives a table that was taken over back to the type that had it before, if there is one: it
    /// holds what it held then.
    static void restoreFormer(lua_State* state);

    /// Stack: +1, the type's table.
    static void pushTable(lua_State* state);

    static void publishFactory(lua_State* state);
    static void publishFinaliser(lua_State* state);

    /// Has reads and writes of `name` go to `field`. Names that read as a number are not reached:
    /// those index the instance.
    static void
    publishGetter(lua_State* state, const tbMemory::StringView& name, LuaTypeField& field);
    static void
    publishSetter(lua_State* state, const tbMemory::StringView& name, LuaTypeField& field);

    /// Has no read and no write go to a field any more. Allocates nothing.
    static void forgetFields(lua_State* state);
};

} // namespace tbScripts::lua

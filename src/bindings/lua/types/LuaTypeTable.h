#pragma once

#include "bindings/lua/LuaNamedTables.h"
#include "bindings/lua/types/LuaTypeCore.h"
#include "core/lua/LuaApi.h"
#include "core/lua/LuaStateHandle.h"

#include <tbMemory/StringView.h>

#include <memory>

namespace tbScripts::lua
{

enum class ELEMENT_ACCESS
{
    READ,
    WRITE
};

/// The interpreter's side of a user type: its table, which scripts reach by the type's name and
/// which is the metatable of instances, and the tables that decide what a read or write means.
///
/// Reads and writes go through two small script functions over these tables, which the
/// interpreter's compiler can inline; a C function in their place costs half as much again. The
/// tables stay the same as long as the type exists. All operations work on the given coroutine and
/// may raise; they expect `parts` on top of the stack, and leave it there.
///
/// Why: docs/decisions/0008-dispatch-by-script-closures.md, 0018-two-types-of-one-name.md
class LuaTypeTable
{
public:
    /// Stack: +1, the parts of a new type: its table, which is created or taken over from another
    /// type, with the entries of a type without declarations. Registers the table under the type's
    /// full name.
    ///
    /// Returns what the registry held under that name. A foreign value stays there; nil is on the
    /// stack then, instead of the parts.
    static NAMED_TABLE
    pushParts(LuaStateSlot& slot, lua_State* state, const std::shared_ptr<LuaTypeCore>& core);

    /// Drops the former entries of a table that was taken over. Allocates nothing.
    static void forgetFormer(lua_State* state);

    /// Returns a table that was taken over to the type that had it before, if that type still
    /// exists, with its former entries.
    static void restoreFormer(lua_State* state);

    /// Clears the table on top of the stack, as `clearTable`. A table that a user type shares with
    /// a namespace keeps the type's finaliser: instances that scripts own have no other way to
    /// their destructor (docs/decisions/0021-clearing-keeps-finalisers.md). Never raises. Stack:
    /// +0.
    static void clearShared(const LuaStateSlot& slot, lua_State* state);

    /// Stack: +1, the type's table.
    static void pushTable(lua_State* state);

    /// Makes the type the one that its name designates. Stack: +0, the parts are needed.
    static void replaceEarlier(const LuaTypeCore& core, lua_State* state);

    /// Puts the type's finaliser back if a script has removed or replaced it.
    static void restoreFinaliser(lua_State* state);

    /// The same for all existing types, before the host collects garbage: what scripts stored must
    /// not run on its behalf. Stack: +0; no parts are needed.
    static void restoreFinalisers(const LuaStateSlot& slot, lua_State* state);

    /// Stack: +1, the anchor of the type whose parts have that registry slot; nil if they are not
    /// there. No parts are needed.
    static void pushAnchor(lua_State* state, int partsKey);

    /// Stack: +1, the writers of the type whose parts have that registry slot. No parts are needed.
    static void pushWriters(lua_State* state, int partsKey);

    /// Gives the type the operators of the base class, whose table is on top of the stack, that it
    /// has not got itself. The parts are below. Stack: -1.
    static void inheritOperators(lua_State* state);

    static void publishFactory(lua_State* state);
    static void publishFinaliser(lua_State* state);

    /// Routes reads and writes of `name` to `field`. Names that read as a number are never routed:
    /// they index the instance.
    static void
    publishGetter(lua_State* state, const tbMemory::StringView& name, LuaTypeField& field);
    static void
    publishSetter(lua_State* state, const tbMemory::StringView& name, LuaTypeField& field);

    /// Has elements be read or written by the leaf of `signature`, as long as the result exists;
    /// null if that is not possible. The leaf gets the instance, the index, and the value that is
    /// to be written.
    static std::unique_ptr<CompiledLeaf> publishElementLeaf(
        const LuaStateHandle& handle,
        lua_State* state,
        ELEMENT_ACCESS access,
        const typed::Signature& signature);

    /// Routes no read and no write to a field any more. Allocates nothing.
    static void forgetFields(lua_State* state);
};

} // namespace tbScripts::lua

#pragma once

#include "core/lua/LuaApi.h"
#include "core/lua/LuaMetatableWord.h"
#include "core/lua/LuaStackWords.h"
#include "core/lua/LuaStateHandle.h"

#include <tbMemory/StringView.h>

#include <array>
#include <cstddef>

namespace tbScripts::lua
{

/// The userdata block that stands for a host object in the interpreter.
///
/// The library recognises a block by its size and by a metatable of a user type, never by a field
/// that a script can write, such as "__name".
struct LuaInstanceBox
{
    void* object;     // the host object; null in a box that is being created
    bool gcEnabled;   // the script owns the object: collecting the box destroys it
    bool isDestroyed; // the object was destroyed, and the box is no instance any more
    std::array<unsigned char, 6> spare; // zero
};

constexpr std::size_t INSTANCE_BOX_SIZE = 16;
static_assert(sizeof(LuaInstanceBox) == INSTANCE_BOX_SIZE || sizeof(void*) != 8);

/// Returns whether the flags of a block of that size can be those of a box. `debug.setmetatable`
/// can give a metatable of a user type to any block, and file handles have the same size. Handles
/// of the standard streams have other bytes there; those of other files cannot be distinguished.
inline bool hasFlagsOfABox(const void* block)
{
    const auto* const bytes = static_cast<const unsigned char*>(block);
    return bytes[offsetof(LuaInstanceBox, gcEnabled)] <= 1 &&
           bytes[offsetof(LuaInstanceBox, isDestroyed)] <= 1;
}

/// Returns the userdata block at `index` if it has the size of a box, else null. Also null for
/// light userdata, whose size is 0.
inline void* boxSizedBlockAt(lua_State* state, int index)
{
    if (index > 0 && LuaStackWords::isKnown())
    {
        void* const block = LuaStackWords::readBlock(state, index);
        return block && LuaStackWords::readSize(block) == INSTANCE_BOX_SIZE ? block : nullptr;
    }
    void* const block = lua_touserdata(state, index);
    return block && lua_objlen(state, index) == INSTANCE_BOX_SIZE ? block : nullptr;
}

/// A box on the stack that a user type created.
struct LuaInstance
{
    LuaInstanceBox* box;           // null if the value is no instance
    tbMemory::StringView typeName; // the full name of the type; valid while its table exists

    // A type of this name was declared after the release of the instance's own type, which is
    // another one (docs/decisions/0032-replaced-types.md).
    bool isOfReplacedType = false;

    /// Returns whether the object may be used.
    bool isUsable() const { return box && !box->isDestroyed && !isOfReplacedType; }
};

/// Registers the table on top of the stack as the metatable of the user type `fullName`.
/// Stack: +0.
void registerTypeTable(
    const LuaStateSlot& slot, lua_State* state, const tbMemory::StringView& fullName);

/// Makes the table on top of the stack the one that `fullName` designates. From here on instances
/// of the type that had the name before are those of a replaced type. Stack: +0.
void replaceEarlierType(LuaStateSlot& slot, lua_State* state, const tbMemory::StringView& fullName);

/// Returns the box `block` at `index` if it has the metatable of a user type, also of a destroyed
/// one. Never raises.
LuaInstance boxOfAnyType(const LuaStateSlot& slot, lua_State* state, int index, void* block);

/// Returns the existing type whose metatable the box-sized `block` at `index` has, else null.
inline const LuaTypeIdentity*
livingIdentityAt(const LuaStateSlot& slot, lua_State* state, int index, const void* block)
{
    const void* const table = metatableOf(state, index, block);
    return table ? slot.findIdentity(table) : nullptr;
}

/// Returns its name.
inline const tbMemory::String*
livingTypeAt(const LuaStateSlot& slot, lua_State* state, int index, const void* block)
{
    const LuaTypeIdentity* const type = livingIdentityAt(slot, state, index, block);
    return type ? &type->fullName : nullptr;
}

/// Returns the box at `index`, also if its object was destroyed; without box if the value is no
/// instance. Never raises.
inline LuaInstance boxAt(const LuaStateSlot& slot, lua_State* state, int index)
{
    void* const block = boxSizedBlockAt(state, index);
    if (!block || !hasFlagsOfABox(block))
        return {nullptr, tbMemory::StringView()};
    if (const tbMemory::String* const name = livingTypeAt(slot, state, index, block))
        return {static_cast<LuaInstanceBox*>(block), *name};
    return boxOfAnyType(slot, state, index, block);
}

/// Returns the instance at `index`; without box if the value is no instance, or if its object may
/// not be used. Never raises.
inline LuaInstance instanceAt(const LuaStateSlot& slot, lua_State* state, int index)
{
    const LuaInstance instance = boxAt(slot, state, index);
    return instance.isUsable() ? instance : LuaInstance{nullptr, tbMemory::StringView()};
}

/// Stack: +1, a new box for `object`. Returns false if `typeName` names no user type; the box then
/// has no metatable.
bool pushInstance(
    const LuaStateSlot& slot,
    lua_State* state,
    void* object,
    bool gcEnabled,
    const tbMemory::StringView& typeName);

/// Stack: +1, an instance for `object`, which the host continues to own; nil if `object` is null.
void pushHostObject(
    const LuaStateSlot& slot, lua_State* state, void* object, const tbMemory::StringView& typeName);

/// Returns the pointer at the start of any userdata block at `index`; null for light userdata, for
/// blocks that are too small, and for instances whose object may not be used.
void* untypedObjectAt(const LuaStateSlot& slot, lua_State* state, int index);

} // namespace tbScripts::lua

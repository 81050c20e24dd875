#pragma once

#include "bindings/CallDefinition.h"
#include "bindings/lua/functions/LuaFunction.h"
#include "bindings/lua/values/LuaInstanceBox.h"
#include "core/NameRegistry.h"
#include "core/lua/LuaApi.h"
#include "core/lua/LuaStateHandle.h"

#include "tbScripts/UserType.h"

#include <tbMemory/String.h>
#include <tbMemory/StringView.h>

#include <cstddef>
#include <memory>
#include <string>
#include <unordered_map>

namespace tbScripts::lua
{

using GetterDefinition = CallDefinition<decltype(UserTypeFieldDescriptor::getter)>;
using SetterDefinition = CallDefinition<decltype(UserTypeFieldDescriptor::setter)>;
using ConstructorDefinition = CallDefinition<UserType::Constructor>;
using DestructorDefinition = CallDefinition<UserType::Destructor>;

/// The host's declaration of one field. Either part may be empty.
struct LuaTypeField
{
    Counted<GetterDefinition> getter;
    Counted<SetterDefinition> setter; // prepared parameters: instance, value, ...
};

/// The declarations of a user type, which its closures use. The core outlives its type as long as
/// instances exist, because the last of them still needs the destructor
/// (docs/decisions/0009-type-cores-outlive-types.md).
struct LuaTypeCore : LuaKeptObject
{
    LuaTypeCore(const LuaStateHandle& stateHandle, const tbMemory::StringView& name);

    LuaTypeCore(const LuaTypeCore&) = delete;
    LuaTypeCore& operator=(const LuaTypeCore&) = delete;

    ~LuaTypeCore();

    /// Makes this the core of the type with that table. Types that share a table share its
    /// identity, and so the objects that their instances own.
    void setTable(const void* typeTable);

    /// Destroys the objects that scripts owned through instances that were collected without being
    /// finalised, because scripts had removed the finaliser. Does nothing if another type shares
    /// the table.
    ///
    /// Requires: all instances of the table are gone.
    void destroyLeftObjects() noexcept;

    /// Returns the box at `index`, counted from the bottom, if it is one of this type, also if its
    /// object was destroyed; else null.
    ///
    /// Stack: may leave the metatable there, which closures leave behind their results.
    LuaInstanceBox* boxAt(lua_State* state, int index) const
    {
        void* const block = boxSizedBlockAt(state, index);
        const void* const metatable = block ? pushMetatable(state, index) : nullptr;
        const bool isOurs = metatable && metatable == table && hasFlagsOfABox(block);
        return isOurs ? static_cast<LuaInstanceBox*>(block) : nullptr;
    }

    /// Returns the box at `index` if it is an instance of this type whose object exists, else null.
    LuaInstanceBox* instanceAt(lua_State* state, int index) const
    {
        LuaInstanceBox* const box = boxAt(state, index);
        return box && !box->isDestroyed ? box : nullptr;
    }

    LuaStateHandle handle;
    tbMemory::String fullName;
    bool isAlive = true;                       // false after the type was destroyed
    std::shared_ptr<LuaTypeIdentity> identity; // null before `setTable`
    const void* table = nullptr;               // of the identity
    Counted<ConstructorDefinition> constructor;
    Counted<DestructorDefinition> destructor; // never empty
    bool hasOwnDestructor = false;            // whether the host has set one

    // By name. Entries keep their addresses and are never removed, because closures point at them.
    std::unordered_map<std::string, LuaTypeField> fields;

    // By name: methods, static methods, operators and "__arrayRead".
    OwningRegistry<LuaFunction> methods;
    LuaFunction* arrayRead = nullptr;   // among the methods
    LuaTypeField* arrayWrite = nullptr; // among the fields
};

/// The block of the interpreter through which the closures of a type reach its core, and which
/// holds the core for them. The type's name follows the block.
///
/// The block is older than every instance, and closures of the type's table keep it alive, so the
/// interpreter finalises the block after the last instance. The block keeps the table alive in
/// turn: as long as a closure of the type can run, no other table gets the address by which it
/// recognises instances.
struct LuaTypeAnchor
{
    LuaTypeCore* core; // null after the core may have been destroyed
    std::shared_ptr<LuaTypeCore> hold;
    std::size_t nameSize;

    tbMemory::StringView getName() const
    {
        return tbMemory::StringView(reinterpret_cast<const char*>(this + 1), nameSize);
    }
};

/// What the closures of a field reach through one upvalue
/// (docs/decisions/0017-checks-that-a-call-can-skip.md). A second upvalue keeps the anchor alive.
struct LuaFieldLink
{
    const LuaTypeAnchor* anchor;
    const LuaTypeField* field; // part of the anchor's core, valid as long as the core
};

/// Stack: +1, a new anchor of `core`, which keeps the table at `tableIndex` alive.
void pushTypeAnchor(lua_State* state, const std::shared_ptr<LuaTypeCore>& core, int tableIndex);

} // namespace tbScripts::lua

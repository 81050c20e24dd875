#pragma once

#include "bindings/CallDefinition.h"
#include "bindings/lua/functions/LuaFunction.h"
#include "bindings/lua/values/LuaInstanceBox.h"
#include "core/NameRegistry.h"
#include "core/lua/LuaApi.h"
#include "core/lua/LuaStateHandle.h"
#include "core/lua/LuaTypeIdentity.h"

#include "tbScripts/UserType.h"

#include <tbMemory/String.h>
#include <tbMemory/StringView.h>

#include <cstddef>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

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

    // A plain data member, which the typed layer has declared in place of getter or setter.
    typed::Member member{};
    tbMemory::String memberName; // of one that is written directly, for messages
    bool isReadDirectly = false;
    bool isWrittenDirectly = false;
};

/// A share of an object that others own too.
struct LuaHolder
{
    void* holder;
    const typed::TypeId* type; // of the holder
    const void* object;        // what the instance showed when it got the share
    void (*release)(void* holder);
};

/// Shares by the boxes that hold them. Gives up those of instances whose finaliser a script has
/// taken away.
struct LuaHolders : std::unordered_map<const LuaInstanceBox*, LuaHolder>
{
    LuaHolders() = default;

    LuaHolders(const LuaHolders&) = delete;
    LuaHolders& operator=(const LuaHolders&) = delete;

    ~LuaHolders()
    {
        for (const auto& [box, share] : *this)
            share.release(share.holder);
    }
};

/// The declarations of a user type, which its closures use. The core outlives its type as long as
/// instances exist, because the last of them still needs the destructor
/// (docs/decisions/0009-type-cores-outlive-types.md).
struct LuaTypeCore : LuaKeptObject, LuaTypeIdentity, std::enable_shared_from_this<LuaTypeCore>
{
    LuaTypeCore(const LuaStateHandle& stateHandle, const tbMemory::StringView& name);

    LuaTypeCore(const LuaTypeCore&) = delete;
    LuaTypeCore& operator=(const LuaTypeCore&) = delete;

    ~LuaTypeCore();

    /// Registers `typeTable` as the type's table, by which the library recognises its instances.
    void setTable(const void* typeTable);

    /// Unregisters the table: it may be collected before the closures, and another table may get
    /// its address.
    void forgetTable();

    /// Returns the box at `index`, counted from the bottom, if it is one of this existing type,
    /// also if its object was destroyed; else null.
    LuaInstanceBox* boxAt(lua_State* state, int index) const;

    /// Returns the box at `index` if it is an instance of this type whose object exists, else null.
    LuaInstanceBox* instanceAt(lua_State* state, int index) const;

    /// Returns one more share of this core.
    std::shared_ptr<LuaTypeCore> getShared() const
    {
        return std::const_pointer_cast<LuaTypeCore>(shared_from_this());
    }

    /// Makes objects of the host's type `id` instances of this type.
    void bindTo(const typed::TypeId& id);

    /// Stack: +1, the type's table. Requires: the type exists.
    void pushTable(lua_State* state) const;

    /// Notes that `box` holds a share of its object, which `release(holder)` gives up. May throw;
    /// the share is then the caller's still.
    void addHolder(const LuaInstanceBox& box, const LuaHolder& holder);

    /// Returns the share that `box` holds, null if it has none.
    const LuaHolder* findHolder(const LuaInstanceBox& box) const;

    /// Gives up the share that `box` holds, if it has one. Returns whether it had.
    bool releaseHolder(LuaInstanceBox& box);

    bool hasFurtherReads() const { return readByName || !baseCores.empty(); }

    bool hasFurtherWrites() const { return writeByName || !baseCores.empty(); }

    LuaStateHandle handle;
    bool isAlive = true;         // false after the type was destroyed
    const void* table = nullptr; // identity of the type's table; null after `forgetTable`
    Counted<ConstructorDefinition> constructor;
    Counted<DestructorDefinition> destructor; // never empty
    bool hasOwnDestructor = false;            // whether the host has set one

    // By name. Entries keep their addresses and are never removed, because closures point at them.
    std::unordered_map<std::string, LuaTypeField> fields;

    // By name: methods, static methods, operators and "__arrayRead".
    OwningRegistry<LuaFunction> methods;
    LuaFunction* arrayRead = nullptr;   // among the methods
    LuaTypeField* arrayWrite = nullptr; // among the fields
    int partsKey = LUA_NOREF;           // registry slot of the table's parts while the type exists

    // The shares of instances that the typed layer made of shared pointers. Types that share a
    // table share these too.
    std::shared_ptr<LuaHolders> holders = std::make_shared<LuaHolders>();

    // The host's look-up of names that are neither fields nor methods; either may be empty.
    Counted<TypedCallable> readByName;
    Counted<TypedCallable> writeByName;

    // The types of base classes that were declared, whose fields these instances have too.
    std::vector<std::shared_ptr<LuaTypeCore>> baseCores;
};

/// The block of the interpreter through which the closures of a type reach its core, and which
/// holds the core for them. The type's name follows the block.
///
/// The block is older than every instance, and closures of the type's table keep it alive, so the
/// interpreter finalises the block after the last instance.
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
    const LuaTypeField* field; // part of the anchor's core, or of a base's that this holds

    // The host's type whose field it is, if that is a base class; else null.
    const typed::TypeId* base;
};

/// Stack: +1, a new anchor of `core`.
void pushTypeAnchor(lua_State* state, const std::shared_ptr<LuaTypeCore>& core);

} // namespace tbScripts::lua

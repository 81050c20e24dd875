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

/// What the host says about one field. Empty where it says nothing.
struct LuaTypeField
{
    Counted<GetterDefinition> getter;
    Counted<SetterDefinition> setter; // prepared parameters: instance, value, ...
};

/// What the closures of a user type work with. It outlives its type as long as instances do, since
/// the last of them still needs the destructor.
struct LuaTypeCore : LuaKeptObject
{
    LuaTypeCore(const LuaStateHandle& stateHandle, const tbMemory::StringView& name);

    LuaTypeCore(const LuaTypeCore&) = delete;
    LuaTypeCore& operator=(const LuaTypeCore&) = delete;

    ~LuaTypeCore();

    /// Notes `typeTable` as the type's table, by which its instances are recognised.
    void setTable(const void* typeTable);

    /// Forgets it: it may go before the closures do, and another one lie in its place.
    void forgetTable();

    /// Returns the box at `index`, counted from the bottom, if it is one of this type, whether or
    /// not its object lives; else null. An instance of an earlier type of this name counts.
    ///
    /// Stack: may leave the metatable there, which closures leave behind their results.
    LuaInstanceBox* boxAt(lua_State* state, int index) const;

    /// Returns the box at `index` if it is a living instance of this type, else null.
    LuaInstanceBox* instanceAt(lua_State* state, int index) const;

    LuaStateHandle handle;
    tbMemory::String fullName;
    bool isAlive = true;         // false once the type is gone
    const void* table = nullptr; // identity of the type's table; null once it is gone
    Counted<ConstructorDefinition> constructor;
    Counted<DestructorDefinition> destructor; // never empty
    bool hasOwnDestructor = false;            // the host has set one

    // Entries stay where they are and are never removed: closures point at them. By name.
    std::unordered_map<std::string, LuaTypeField> fields;

    // By name: methods, static methods, operators and "__arrayRead".
    OwningRegistry<LuaFunction> methods;
    LuaFunction* arrayRead = nullptr;   // among the methods
    LuaTypeField* arrayWrite = nullptr; // among the fields
};

/// The block of the interpreter through which the closures of a type reach its core, and which
/// keeps the core for them. The type's name follows the block.
///
/// It is older than every instance, and closures of the type's table keep it: the interpreter
/// finalises it after the last instance.
struct LuaTypeAnchor
{
    LuaTypeCore* core; // null once the core may be gone
    std::shared_ptr<LuaTypeCore> hold;
    std::size_t nameSize;

    tbMemory::StringView getName() const
    {
        return tbMemory::StringView(reinterpret_cast<const char*>(this + 1), nameSize);
    }
};

/// What the closures of a field get at by one upvalue. Another one keeps the anchor for them.
struct LuaFieldLink
{
    const LuaTypeAnchor* anchor;
    const LuaTypeField* field; // part of the anchor's core, and good as long as that
};

/// Stack: +1, a new anchor of `core`.
void pushTypeAnchor(lua_State* state, const std::shared_ptr<LuaTypeCore>& core);

} // namespace tbScripts::lua

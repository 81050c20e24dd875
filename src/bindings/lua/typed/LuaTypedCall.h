#pragma once

#include "bindings/TypedCallable.h"
#include "bindings/lua/types/LuaTypeCore.h"
#include "core/lua/LuaApi.h"
#include "core/lua/calls/LuaCallbackScope.h"

#include <tbMemory/String.h>

#include <utility>

namespace tbScripts::lua
{

/// The services of typed calls.
extern const typed::Services TYPED_SERVICES;

/// A running call of a typed callable, as the services see it
/// (docs/decisions/0035-typed-bindings.md).
struct LuaTypedCall : typed::Call
{
    LuaTypedCall(
        LuaCallbackScope& callbackScope,
        const typed::Signature& callSignature,
        const tbMemory::String* functionName)
        : typed::Call{TYPED_SERVICES, &callSignature}
        , scope(callbackScope)
        , state(callbackScope.getThread())
        , name(functionName)
    {
    }

    LuaCallbackScope& scope;
    lua_State* state;
    const tbMemory::String* name; // of the function, in messages; null for a script's

    const LuaTypeCore* constructed = nullptr; // the type whose `new` this is
    int constructedTable = 0;                 // and the stack index of its table
    int constructorArguments = 0;             // how many the script has passed to it

    int roomLeft = 0; // for how many values there is known to be room

    tbMemory::StringView getName() const;

    LuaStateSlot& getSlot() const { return scope.getSlot(); }
};

/// While this exists, no leaf runs. The interpreter may collect garbage as it makes a string out of
/// a leaf's argument or result, and what the finalisers call promised nothing.
class LeafPause
{
public:
    explicit LeafPause(const LuaTypedCall& call)
        : m_guard(call.getSlot().getLeafGuard())
        , m_running(std::exchange(m_guard.running, 0))
    {
    }

    LeafPause(const LeafPause&) = delete;
    LeafPause& operator=(const LeafPause&) = delete;

    ~LeafPause() { m_guard.running = m_running; }

private:
    typed::LeafGuard& m_guard;
    int m_running;
};

/// Returns the instance at `index`, if it may be used and its type exists; else null.
struct LuaBoundInstance
{
    LuaInstanceBox* box;
    const LuaTypeIdentity* type;
};

LuaBoundInstance boundInstanceAt(const LuaStateSlot& slot, lua_State* state, int index);

/// Returns the object of the instance at `index` as one of the host's type `wanted`, which is that
/// of the instance or a base class. Null if it is neither.
void* boundObjectAt(
    const LuaStateSlot& slot, lua_State* state, int index, const typed::TypeId& wanted);

/// Makes room for that many values, or throws the message of the interpreter's own overflow.
void makeRoom(lua_State* state, int count);

/// Returns whether the value at `index` can be read as `parameter` says.
bool acceptsTyped(LuaTypedCall& call, const typed::Parameter& parameter, int index);

/// Throws the message for the first argument of the call that does not fit; if all do, for the
/// value at `index`, which is not what is `expected`.
[[noreturn]] void refuseTyped(LuaTypedCall& call, int index, const tbMemory::StringView& expected);

/// What the messages call a value of that kind.
tbMemory::StringView
nameOfExpected(const LuaStateSlot& slot, typed::KIND kind, const typed::TypeId* type);

} // namespace tbScripts::lua

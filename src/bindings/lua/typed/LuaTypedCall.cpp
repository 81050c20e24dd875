#include "bindings/lua/typed/LuaTypedCall.h"

#include "bindings/lua/values/LuaCallBridge.h"

#include <string>
#include <string_view>

namespace tbScripts::lua
{

namespace
{

using typed::KIND;

// Returns `object`, an instance of `type`, as one of the base class `wanted`; null if it has none.
void* castToBase(
    const LuaStateSlot& slot,
    const LuaTypeIdentity& type,
    const typed::TypeId& wanted,
    void* object)
{
    for (const LuaTypeBase& base : type.bases)
    {
        void* const asBase = base.toBase(object);
        if (base.type == &wanted)
            return asBase;
        const LuaTypeIdentity* const further = slot.findBoundType(*base.type);
        if (void* const found = further ? castToBase(slot, *further, wanted, asBase) : nullptr)
            return found;
    }
    return nullptr;
}

bool isInstanceOf(LuaTypedCall& call, int index, const typed::TypeId& type)
{
    return boundObjectAt(call.getSlot(), call.state, index, type) != nullptr;
}

[[noreturn]] void
throwMismatch(const LuaTypedCall& call, int index, const tbMemory::StringView& expected)
{
    lua_Debug activation;
    throw std::string(std::string_view(LuaCallBridge::buildTypeMismatchMessage(
        call.state, activation, lua_type(call.state, index), expected, call.getName())));
}

} // namespace

LuaBoundInstance boundInstanceAt(const LuaStateSlot& slot, lua_State* state, int index)
{
    auto* const box = static_cast<LuaInstanceBox*>(boxSizedBlockAt(state, index));
    const LuaTypeIdentity* const type = box ? livingIdentityAt(slot, state, index, box) : nullptr;
    if (!type || !hasFlagsOfABox(box) || box->isDestroyed)
        return {nullptr, nullptr};
    return {box, type};
}

void* boundObjectAt(
    const LuaStateSlot& slot, lua_State* state, int index, const typed::TypeId& wanted)
{
    const LuaBoundInstance instance = boundInstanceAt(slot, state, index);
    if (!instance.box)
        return nullptr;
    if (instance.type->type == &wanted)
        return instance.box->object;
    return instance.box->object && !instance.type->bases.empty()
               ? castToBase(slot, *instance.type, wanted, instance.box->object)
               : nullptr;
}

void makeRoom(lua_State* state, int count)
{
    if (lua_checkstack(state, count) == 0)
        throw std::string("stack overflow");
}

tbMemory::StringView LuaTypedCall::getName() const
{
    return name ? tbMemory::StringView(*name) : tbMemory::StringView("callScript");
}

bool acceptsTyped(LuaTypedCall& call, const typed::Parameter& parameter, int index)
{
    if (parameter.isOptional && lua_isnoneornil(call.state, index))
        return true;
    switch (parameter.kind)
    {
    case KIND::NOTHING:
        return false;
    case KIND::BOOL:
    case KIND::REST:
        return true;
    case KIND::INT:
    case KIND::FLOAT:
    case KIND::DOUBLE:
        return lua_isnumber(call.state, index) != 0;
    case KIND::TEXT:
        return lua_isstring(call.state, index) != 0;
    case KIND::OBJECT:
        return isInstanceOf(call, index, *parameter.type);
    case KIND::OBJECT_OR_NIL:
        return lua_isnil(call.state, index) || isInstanceOf(call, index, *parameter.type);
    case KIND::FUNCTION:
        return lua_isfunction(call.state, index);
    case KIND::REFERENCE:
        return lua_isfunction(call.state, index) || lua_istable(call.state, index);
    case KIND::OTHER:
        return parameter.accepts(call, index, false);
    }
    return false;
}

tbMemory::StringView
nameOfExpected(const LuaStateSlot& slot, typed::KIND kind, const typed::TypeId* type)
{
    switch (kind)
    {
    case KIND::INT:
        return "int";
    case KIND::FLOAT:
        return "float";
    case KIND::DOUBLE:
        return "double";
    case KIND::TEXT:
        return "string";
    case KIND::FUNCTION:
        return "lua function";
    case KIND::REFERENCE:
        return "lua object";
    case KIND::OBJECT:
    case KIND::OBJECT_OR_NIL:
    {
        const LuaTypeIdentity* const bound = slot.findBoundType(*type);
        return bound ? tbMemory::StringView(bound->fullName)
                     : tbMemory::StringView("a user type that is not declared");
    }
    case KIND::NOTHING:
    case KIND::BOOL:
    case KIND::REST:
    case KIND::OTHER:
        break;
    }
    return "";
}

void refuseTyped(LuaTypedCall& call, int index, const tbMemory::StringView& expected)
{
    const typed::Signature& signature = *call.signature;
    for (int i = 1; i <= signature.count; ++i)
    {
        const typed::Parameter& parameter = signature.parameters[i];
        if (acceptsTyped(call, parameter, i))
            continue;
        throwMismatch(
            call,
            i,
            parameter.expected ? tbMemory::StringView(parameter.expected)
                               : nameOfExpected(call.getSlot(), parameter.kind, parameter.type));
    }
    throwMismatch(call, index, expected);
}

} // namespace tbScripts::lua

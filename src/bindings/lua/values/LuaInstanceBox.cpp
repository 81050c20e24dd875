#include "bindings/lua/values/LuaInstanceBox.h"

#include "core/lua/LuaText.h"

#include <cstring>

namespace tbScripts::lua
{

namespace
{

// Stack: +1, the table of the user type `typeName`, which is returned; or nil and null if there is
// no such type.
LuaTypeIdentity*
pushTypeTable(const LuaStateSlot& slot, lua_State* state, const tbMemory::StringView& typeName)
{
    pushName(state, typeName);
    lua_rawget(state, LUA_REGISTRYINDEX);
    if (LuaTypeIdentity* const type = slot.findType(lua_topointer(state, -1)))
        return type;
    lua_pop(state, 1);
    lua_pushnil(state);
    return nullptr;
}

} // namespace

void own(const LuaInstance& instance)
{
    LuaInstanceBox& box = *instance.box;
    if (box.gcEnabled)
        return;
    instance.type->owned.reserve(&box);
    instance.type->owned.own(&box, box.object);
    box.gcEnabled = true;
}

void disown(const LuaInstance& instance)
{
    LuaInstanceBox& box = *instance.box;
    instance.type->owned.remove(&box);
    box.gcEnabled = false;
}

bool pushInstance(
    const LuaStateSlot& slot,
    lua_State* state,
    void* object,
    bool gcEnabled,
    const tbMemory::StringView& typeName)
{
    void* const block = lua_newuserdata(state, INSTANCE_BOX_SIZE);
    std::memset(block, 0, INSTANCE_BOX_SIZE);
    auto* const box = static_cast<LuaInstanceBox*>(block);
    box->object = object;
    LuaTypeIdentity* const type = pushTypeTable(slot, state, typeName);
    if (gcEnabled && type)
        own({box, type});
    else
        box->gcEnabled = gcEnabled;
    lua_setmetatable(state, -2);
    return type != nullptr;
}

void pushHostObject(
    const LuaStateSlot& slot, lua_State* state, void* object, const tbMemory::StringView& typeName)
{
    if (object)
        pushInstance(slot, state, object, false, typeName);
    else
        lua_pushnil(state);
}

void* untypedObjectAt(const LuaStateSlot& slot, lua_State* state, int index)
{
    if (lua_type(state, index) != LUA_TUSERDATA || lua_objlen(state, index) < sizeof(void*))
        return nullptr;
    const LuaInstance instance = boxAt(slot, state, index);
    if (instance && !instance.isUsable())
        return nullptr;
    void* object = nullptr;
    std::memcpy(&object, lua_touserdata(state, index), sizeof(object));
    return object;
}

} // namespace tbScripts::lua

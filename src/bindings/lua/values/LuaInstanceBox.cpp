#include "bindings/lua/values/LuaInstanceBox.h"

#include "core/lua/LuaText.h"

#include <cstring>

namespace tbScripts::lua
{

namespace
{

// Returns whether the value on top of the stack is the table of a user type, also of a destroyed
// one.
bool isTypeTable(const LuaStateSlot& slot, lua_State* state)
{
    if (slot.findType(lua_topointer(state, -1)))
        return true;
    if (!lua_istable(state, -1))
        return false;
    slot.pushTypeTables(state);
    lua_pushvalue(state, -2);
    lua_rawget(state, -2);
    const bool isType = lua_type(state, -1) == LUA_TSTRING;
    lua_pop(state, 2);
    return isType;
}

// Stack: +1, the table of the user type `typeName`, or nil and false if there is no such type.
bool pushTypeTable(const LuaStateSlot& slot, lua_State* state, const tbMemory::StringView& typeName)
{
    pushName(state, typeName);
    lua_rawget(state, LUA_REGISTRYINDEX);
    if (isTypeTable(slot, state))
        return true;
    lua_pop(state, 1);
    lua_pushnil(state);
    return false;
}

} // namespace

void registerTypeTable(
    const LuaStateSlot& slot, lua_State* state, const tbMemory::StringView& fullName)
{
    slot.pushTypeTables(state);
    lua_pushvalue(state, -2);
    lua_pushlstring(state, fullName.empty() ? "" : fullName.data(), fullName.size());
    lua_rawset(state, -3);
    lua_pop(state, 1);
}

void replaceEarlierType(LuaStateSlot& slot, lua_State* state, const tbMemory::StringView& fullName)
{
    const int tableIndex = lua_gettop(state);
    slot.pushTypeTables(state);
    lua_pushlstring(state, fullName.empty() ? "" : fullName.data(), fullName.size());
    lua_pushvalue(state, -1);
    lua_rawget(state, -3);
    const void* const former = lua_topointer(state, -1);
    lua_pop(state, 1);
    lua_pushvalue(state, tableIndex);
    lua_rawset(state, -3);
    // The type may exist still, if another one of its name has removed that from the registry.
    if (former && former != lua_topointer(state, tableIndex))
        slot.forgetType(former);
    lua_settop(state, tableIndex);
}

LuaInstance boxOfAnyType(const LuaStateSlot& slot, lua_State* state, int index, void* block)
{
    LuaInstance instance{nullptr, tbMemory::StringView()};
    if (!lua_getmetatable(state, index))
        return instance;
    slot.pushTypeTables(state);
    lua_pushvalue(state, -2);
    lua_rawget(state, -2);
    if (lua_type(state, -1) == LUA_TSTRING)
    {
        instance.box = static_cast<LuaInstanceBox*>(block);
        instance.typeName = textAt(state, -1);
        lua_rawget(state, -2); // the table that the name designates
        instance.isOfReplacedType = lua_rawequal(state, -1, -3) == 0;
    }
    lua_pop(state, 3);
    return instance;
}

bool pushInstance(
    const LuaStateSlot& slot,
    lua_State* state,
    void* object,
    bool gcEnabled,
    const tbMemory::StringView& typeName)
{
    void* const block = lua_newuserdata(state, INSTANCE_BOX_SIZE);
    const LuaInstanceBox box{object, gcEnabled, false, {}};
    std::memset(block, 0, INSTANCE_BOX_SIZE);
    std::memcpy(block, &box, sizeof(box));
    const bool isTyped = pushTypeTable(slot, state, typeName);
    lua_setmetatable(state, -2);
    return isTyped;
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
    if (instance.box && !instance.isUsable())
        return nullptr;
    void* object = nullptr;
    std::memcpy(&object, lua_touserdata(state, index), sizeof(object));
    return object;
}

} // namespace tbScripts::lua

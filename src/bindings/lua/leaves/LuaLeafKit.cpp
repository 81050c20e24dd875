// Why: docs/decisions/0034-compiled-leaves.md

#include "bindings/lua/leaves/LuaLeafKit.h"

#include "bindings/lua/leaves/LuaCompilation.h"
#include "bindings/lua/leaves/LuaForeignInterface.h"
#include "bindings/lua/values/LuaInstanceBox.h"
#include "core/lua/LuaLeafTypes.h"
#include "core/lua/references/LuaRegistry.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

namespace tbScripts::lua
{

namespace
{

// In front of the block of a userdata the interpreter keeps the metatable's address and the block's
// size; 2 and 6 are where LuaJIT keeps them on machines of 64 bits, which is tried first. A file
// handle and a string buffer, which `cast` takes for what they manage, may be null.
//
// All light userdata have one metatable. As long as that is none, what has a metatable is a block.
constexpr const char* KIT = R"(
local cast, typeof, string, getmetatable, select, compiles, type, light, guard = ...
local fast = false
local int_t, pair_t, word_t = typeof 'int32_t *', typeof 'uint16_t *', typeof 'const uint64_t *'
local object_t = typeof 'void *const *'
local float_t, double_t, byte_t = typeof 'float *', typeof 'double *', typeof 'uint8_t *'
local out_t = typeof 'struct { const char *data; int32_t size, rest; }'
local out = out_t()
guard = cast('void *', guard)
local function object(value, expected)
    if type(value) == 'userdata' and getmetatable(light) == nil and getmetatable(value) ~= nil then
        local block = cast(word_t, value)
        if block ~= nil and block[-2] == expected[0] and cast(int_t, block)[-6] == 16
            and cast(pair_t, block)[4] <= 1 then
            local found = cast(object_t, block)[0]
            if found ~= nil then return found end
        end
    end
end
local function shared()
    return fast, compiles, guard, object, type, select, string, cast, out,
        int_t, float_t, double_t, byte_t, pair_t
end
return shared, typeof, cast, word_t, object
)";

// Indices of the parts.
constexpr int PART_SHARED = 1; // a function with the shared upvalues
constexpr int PART_TYPEOF = 2;
constexpr int PART_CAST = 3;
constexpr int PART_WORD = 4; // the type of a pointer to a word
constexpr int PARTS = 5;

const char light = 0;

// Returns whether blocks of userdata, and boxes in them, look as the kit expects. Stack: +0.
bool areBlocksAsExpected(lua_State* state)
{
    constexpr std::array<std::size_t, 3> SIZES{INSTANCE_BOX_SIZE, 24, 400};
    constexpr std::size_t METATABLE_DISTANCE = 16;
    constexpr std::size_t SIZE_DISTANCE = 24;
    constexpr std::size_t FLAGS_PLACE = 8;
    if (sizeof(void*) != sizeof(std::uint64_t) || sizeof(LuaInstanceBox) != INSTANCE_BOX_SIZE)
        return false;
    const int top = lua_gettop(state);
    bool isAsExpected = true;
    for (const std::size_t size : SIZES)
    {
        auto* const block = static_cast<unsigned char*>(lua_newuserdata(state, size));
        lua_createtable(state, 0, 0);
        const void* const table = lua_topointer(state, -1);
        lua_setmetatable(state, -2);
        const void* foundTable = nullptr;
        std::memcpy(&foundTable, block - METATABLE_DISTANCE, sizeof(foundTable));
        std::int32_t foundSize = 0;
        std::memcpy(&foundSize, block - SIZE_DISTANCE, sizeof(foundSize));
        LuaInstanceBox box{nullptr, true, false, {}};
        std::memcpy(block, &box, sizeof(box));
        std::uint16_t owned = 0;
        std::memcpy(&owned, block + FLAGS_PLACE, sizeof(owned));
        box.isDestroyed = true;
        std::memcpy(block, &box, sizeof(box));
        std::uint16_t destroyed = 0;
        std::memcpy(&destroyed, block + FLAGS_PLACE, sizeof(destroyed));
        isAsExpected = isAsExpected && foundTable == table &&
                       foundSize == static_cast<std::int32_t>(size) && owned == 1 && destroyed > 1;
        lua_settop(state, top);
    }
    return isAsExpected;
}

// Stack: +5, the results of the kit's chunk; returns false if something is missing for it.
bool runKit(LuaStateSlot& slot, lua_State* state, int interfaceIndex)
{
    constexpr int ARGUMENTS = 9;
    if (luaL_loadbuffer(state, KIT, std::strlen(KIT), "=leaf") != 0)
        throw std::string(lua_tostring(state, -1)); // no memory
    for (const LUA_OWN_FUNCTION function :
         {LUA_OWN_FUNCTION::FFI_CAST,
          LUA_OWN_FUNCTION::FFI_TYPEOF,
          LUA_OWN_FUNCTION::FFI_STRING,
          LUA_OWN_FUNCTION::GETMETATABLE})
    {
        if (!pushOwnFunction(state, interfaceIndex, function))
            return false;
    }
    if (!pushOwnFunction(state, interfaceIndex, LUA_OWN_FUNCTION::SELECT))
        lua_pushnil(state); // the sources can do without
    if (!pushCompiles(state))
        return false;
    slot.pushType(state);
    lua_pushlightuserdata(state, const_cast<char*>(&light));
    lua_pushlightuserdata(state, &slot.getLeafGuard());
    lua_call(state, ARGUMENTS, PARTS);
    return true;
}

// Stack: +1, the kit; or +0 and false.
bool pushNewKit(LuaStateSlot& slot, lua_State* state)
{
    const int top = lua_gettop(state);
    const int interfaceIndex = top + 1;
    const int kitIndex = top + 2;
    bool isDone = areBlocksAsExpected(state) && pushForeignInterface(state) &&
                  runKit(slot, state, interfaceIndex);
    if (isDone)
    {
        lua_createtable(state, PARTS, 0);
        lua_insert(state, kitIndex);
        for (int part = PARTS; part >= 1; --part)
            lua_rawseti(state, kitIndex, part);
        lua_rawgeti(state, kitIndex, PART_SHARED);
        isDone = attachToCompiler(state, interfaceIndex);
    }
    lua_settop(state, isDone ? kitIndex : top);
    if (isDone)
        lua_remove(state, interfaceIndex);
    return isDone;
}

} // namespace

bool LuaLeafKit::push(LuaStateSlot& slot, lua_State* state)
{
    if (slot.getLeafKey() == LUA_NOREF)
    {
        slot.getLeafKey() = LUA_REFNIL; // no second attempt, also if this one lacks memory
        if (!pushNewKit(slot, state))
            return false;
        lua_pushvalue(state, -1);
        slot.getLeafKey() = luaL_ref(state, LUA_REGISTRYINDEX);
        return true;
    }
    if (slot.getLeafKey() == LUA_REFNIL)
        return false;
    lua_rawgeti(state, LUA_REGISTRYINDEX, slot.getLeafKey());
    return true;
}

void LuaLeafKit::joinUpvalue(
    lua_State* state, int kitIndex, const char* name, int functionIndex, int number)
{
    lua_rawgeti(state, kitIndex, PART_SHARED);
    const int sharedIndex = lua_gettop(state);
    int shared = 1;
    while (const char* const known = lua_getupvalue(state, sharedIndex, shared))
    {
        lua_pop(state, 1);
        if (std::strcmp(known, name) == 0)
            lua_upvaluejoin(state, functionIndex, number, sharedIndex, shared);
        ++shared;
    }
    lua_pop(state, 1);
}

void LuaLeafKit::pushType(lua_State* state, int kitIndex, const char* type)
{
    lua_rawgeti(state, kitIndex, PART_TYPEOF);
    lua_pushstring(state, type);
    lua_call(state, 1, 1);
}

void LuaLeafKit::castOnTop(lua_State* state, int kitIndex, const void* address)
{
    lua_rawgeti(state, kitIndex, PART_CAST);
    lua_insert(state, -2);
    lua_pushlightuserdata(state, const_cast<void*>(address));
    lua_call(state, 2, 1);
}

void LuaLeafKit::pushWord(lua_State* state, int kitIndex, const void* word)
{
    lua_rawgeti(state, kitIndex, PART_WORD);
    castOnTop(state, kitIndex, word);
}

void LuaLeafKit::pushSharedWord(lua_State* state, int kitIndex, const void* word)
{
    lua_pushlightuserdata(state, const_cast<void*>(word));
    lua_rawget(state, kitIndex);
    if (!lua_isnil(state, -1))
        return;
    lua_pop(state, 1);
    pushWord(state, kitIndex, word);
    lua_pushlightuserdata(state, const_cast<void*>(word));
    lua_pushvalue(state, -2);
    lua_rawset(state, kitIndex);
}

} // namespace tbScripts::lua

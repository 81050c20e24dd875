// Why: docs/decisions/0034-compiled-leaves.md

#include "bindings/lua/leaves/LuaLeaves.h"

#include "bindings/lua/leaves/LuaLeafKit.h"
#include "bindings/lua/leaves/LuaLeafSource.h"

#include <cstdint>
#include <cstring>
#include <string>

namespace tbScripts::lua
{

namespace
{

constexpr const char* NAME_OF_LEAVES = "=leaf";

using typed::KIND;

// Indices of the parts of a shape.
constexpr int SHAPE_MODEL = 1; // a function of this shape, with what all leaves share
constexpr int SHAPE_BYTES = 2; // its bytecode
constexpr int SHAPE_ROLES = 3; // for each upvalue one of these characters
constexpr int SHAPE_TYPE = 4;  // of the C function

constexpr char ROLE_SHARED = 'c';
constexpr char ROLE_SLOW = 's';
constexpr char ROLE_ENTRY = 'e';
constexpr char ROLE_WORD = 'w';
constexpr char ROLE_PLACE = 'p';
constexpr char ROLE_TOP = 't';
constexpr char ROLE_TABLE = '0'; // and the number of the parameter

/// What one leaf has for itself.
struct OwnValues
{
    void (*entry)() = nullptr;
    const void* const* living = nullptr;
    const typed::Parameter* parameters = nullptr; // the result's first
    double place = 0;
    double top = 0;
};

char roleOf(const std::string& name)
{
    if (name == OWN_SLOW)
        return ROLE_SLOW;
    if (name == OWN_ENTRY)
        return ROLE_ENTRY;
    if (name == OWN_WORD)
        return ROLE_WORD;
    if (name == OWN_PLACE)
        return ROLE_PLACE;
    if (name == OWN_TOP)
        return ROLE_TOP;
    return name[0] == OWN_TABLE ? static_cast<char>(ROLE_TABLE + std::stoi(name.substr(1)))
                                : ROLE_SHARED;
}

int appendBytes(lua_State* /*state*/, const void* bytes, std::size_t size, void* text)
{
    static_cast<std::string*>(text)->append(static_cast<const char*>(bytes), size);
    return 0;
}

// Sets the upvalues that all leaves share to those of the kit; returns the roles of all. The model
// is on top of the stack.
std::string shareUpvalues(lua_State* state, int kitIndex)
{
    const int modelIndex = lua_gettop(state);
    std::string roles;
    int number = 1;
    while (const char* const name = lua_getupvalue(state, modelIndex, number))
    {
        lua_pop(state, 1);
        roles += roleOf(name);
        if (roles.back() == ROLE_SHARED)
            LuaLeafKit::joinUpvalue(state, kitIndex, name, modelIndex, number);
        ++number;
    }
    return roles;
}

// Stack: +1, a new shape.
void pushNewShape(lua_State* state, int kitIndex, const LuaLeafSource& source)
{
    constexpr int PARTS = 4;
    lua_createtable(state, PARTS, 0);
    const int shapeIndex = lua_gettop(state);
    if (luaL_loadbuffer(state, source.text.data(), source.text.size(), NAME_OF_LEAVES) != 0)
        throw std::string(lua_tostring(state, -1)); // no memory
    lua_call(state, 0, 1);
    const std::string roles = shareUpvalues(state, kitIndex);
    std::string bytes;
    lua_dump(state, &appendBytes, &bytes);
    lua_rawseti(state, shapeIndex, SHAPE_MODEL);
    lua_pushlstring(state, bytes.data(), bytes.size());
    lua_rawseti(state, shapeIndex, SHAPE_BYTES);
    lua_pushlstring(state, roles.data(), roles.size());
    lua_rawseti(state, shapeIndex, SHAPE_ROLES);
    if (source.type.empty())
        return;
    LuaLeafKit::pushType(state, kitIndex, source.type.c_str());
    lua_rawseti(state, shapeIndex, SHAPE_TYPE);
}

// Stack: +1, the shape, which is created with the first leaf that has it.
void pushShape(lua_State* state, int kitIndex, const LuaLeafSource& source)
{
    lua_pushlstring(state, source.key.data(), source.key.size());
    lua_rawget(state, kitIndex);
    if (!lua_isnil(state, -1))
        return;
    lua_pop(state, 1);
    pushNewShape(state, kitIndex, source);
    lua_pushlstring(state, source.key.data(), source.key.size());
    lua_pushvalue(state, -2);
    lua_rawset(state, kitIndex);
}

// Stack: +1, what the upvalue of this role gets.
void pushOwnValue(
    LuaStateSlot& slot,
    lua_State* state,
    int kitIndex,
    int shapeIndex,
    int slowIndex,
    char role,
    const OwnValues& own)
{
    switch (role)
    {
    case ROLE_SLOW:
        lua_pushvalue(state, slowIndex);
        return;
    case ROLE_ENTRY:
        lua_rawgeti(state, shapeIndex, SHAPE_TYPE);
        LuaLeafKit::castOnTop(state, kitIndex, reinterpret_cast<void*>(own.entry));
        return;
    case ROLE_WORD:
        LuaLeafKit::pushWord(state, kitIndex, own.living);
        return;
    case ROLE_PLACE:
        lua_pushnumber(state, own.place);
        return;
    case ROLE_TOP:
        lua_pushnumber(state, own.top);
        return;
    default:
        break;
    }
    const typed::TypeId& type = *own.parameters[role - ROLE_TABLE].type;
    LuaLeafKit::pushSharedWord(state, kitIndex, slot.getLeafTypes().findWord(type));
}

// Stack: +0; replaces the value on top by a function of this shape around it.
void wrapTop(
    LuaStateSlot& slot,
    lua_State* state,
    int kitIndex,
    const LuaLeafSource& source,
    const OwnValues& own)
{
    const int slowIndex = kitIndex - 1;
    pushShape(state, kitIndex, source);
    const int shapeIndex = lua_gettop(state);
    lua_rawgeti(state, shapeIndex, SHAPE_MODEL);
    lua_rawgeti(state, shapeIndex, SHAPE_ROLES);
    lua_rawgeti(state, shapeIndex, SHAPE_BYTES);
    const int modelIndex = shapeIndex + 1;
    std::size_t count = 0;
    const char* const roles = lua_tolstring(state, shapeIndex + 2, &count);
    std::size_t size = 0;
    const char* const bytes = lua_tolstring(state, shapeIndex + 3, &size);
    // Loaded for each leaf: the compiler treats upvalues as constants only in functions that have
    // their bytecode for themselves.
    if (luaL_loadbuffer(state, bytes, size, NAME_OF_LEAVES) != 0)
        throw std::string(lua_tostring(state, -1)); // no memory
    const int leafIndex = lua_gettop(state);
    for (int i = 0; i < static_cast<int>(count); ++i)
    {
        if (roles[i] == ROLE_SHARED)
        {
            lua_upvaluejoin(state, leafIndex, i + 1, modelIndex, i + 1);
            continue;
        }
        pushOwnValue(slot, state, kitIndex, shapeIndex, slowIndex, roles[i], own);
        lua_setupvalue(state, leafIndex, i + 1);
    }
    lua_replace(state, slowIndex);
    lua_settop(state, slowIndex);
}

bool wrap(LuaStateSlot& slot, lua_State* state, const LuaLeafSource& source, const OwnValues& own)
{
    constexpr int ROOM = 16;
    if (source.key.empty() || lua_type(state, -1) != LUA_TFUNCTION)
        return false;
    if (!lua_checkstack(state, ROOM) || !LuaLeafKit::push(slot, state))
        return false;
    wrapTop(slot, state, lua_gettop(state), source, own);
    return true;
}

typed::Size sizeOf(KIND kind)
{
    if (kind == KIND::BOOL)
        return sizeof(bool);
    if (kind == KIND::INT)
        return sizeof(int);
    return kind == KIND::FLOAT ? sizeof(float) : sizeof(double);
}

bool wrapMember(
    LuaStateSlot& slot,
    lua_State* state,
    const typed::TypeId& type,
    const typed::Member& member,
    const void* const* living,
    LuaLeafSource (*describe)(KIND kind, bool hasWord))
{
    const typed::Size size = sizeOf(member.kind);
    // So high an offset might not fit into the index that the interpreter computes with.
    constexpr typed::Size HIGHEST = 1U << 30U;
    if (member.offset % size != 0 || member.offset > HIGHEST)
        return false;
    const typed::Parameter parameters[] = {{member.kind}, {KIND::OBJECT, false, &type}};
    OwnValues own;
    own.living = living;
    own.parameters = parameters;
    const typed::Size place = member.offset / size; // both are indices
    const typed::Size top = (member.offset + size) / 2 - 1;
    own.place = static_cast<double>(place);
    own.top = static_cast<double>(top);
    return wrap(slot, state, describe(member.kind, living != nullptr), own);
}

} // namespace

bool isLeaf(lua_State* state, int index)
{
    if (!lua_isfunction(state, index))
        return false;
    lua_Debug function;
    lua_pushvalue(state, index);
    return lua_getinfo(state, ">S", &function) != 0 &&
           std::strcmp(function.source, NAME_OF_LEAVES) == 0;
}

bool wrapLeaf(
    LuaStateSlot& slot,
    lua_State* state,
    const typed::Signature& signature,
    const void* const* living)
{
    if (!signature.leaf || !signature.leaf->entry)
        return false;
    OwnValues own;
    own.entry = signature.leaf->entry;
    own.living = living;
    own.parameters = signature.parameters;
    return wrap(slot, state, describeLeaf(signature, living != nullptr), own);
}

bool wrapReader(
    LuaStateSlot& slot,
    lua_State* state,
    const typed::TypeId& type,
    const typed::Member& member,
    const void* const* living)
{
    return wrapMember(slot, state, type, member, living, &describeReader);
}

bool wrapWriter(
    LuaStateSlot& slot,
    lua_State* state,
    const typed::TypeId& type,
    const typed::Member& member,
    const void* const* living)
{
    return !member.isReadOnly && wrapMember(slot, state, type, member, living, &describeWriter);
}

} // namespace tbScripts::lua

// Why: docs/decisions/0034-compiled-leaves.md

#include "bindings/lua/leaves/LuaForeignInterface.h"

#include "core/lua/LuaFunctionObject.h"
#include "core/lua/LuaPrivateState.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <cstring>

namespace tbScripts::lua
{

namespace
{

struct OwnFunction
{
    const char* library;
    const char* name;
};

// In the order of LUA_OWN_FUNCTION.
constexpr std::array OWN_FUNCTIONS{
    OwnFunction{"ffi", "cast"},
    OwnFunction{"ffi", "typeof"},
    OwnFunction{"ffi", "string"},
    OwnFunction{"debug", "getmetatable"},
    OwnFunction{"jit", "attach"},
    OwnFunction{"_G", "select"}};

constexpr const char* FFI = "ffi";

// What the interpreter loads the interface for by itself, if it has not yet.
constexpr const char* NEEDS_THE_INTERFACE = "return 1LL";

// The C functions behind those, and the one that opens the interface. All states of a process have
// the same, and scripts cannot create function objects that have them.
std::array<std::atomic<lua_CFunction>, OWN_FUNCTIONS.size()> knownFunctions{};
std::atomic<lua_CFunction> knownOpener{};
std::atomic<lua_CFunction> knownMaker{}; // of function objects "table.clear"

// Its address is the key of the interface in the registry.
const char interfaceKey = 0;

// Returns whether there is memory for what the interface takes, 13 KiB, and more.
// LuaJIT 2.1.0-beta3 crashes in `lua_close` if the interface gets some of its memory but not all.
bool hasRoom(lua_State* state)
{
    constexpr std::size_t ENOUGH = std::size_t(64) * 1024;
    void* self = nullptr;
    const lua_Alloc allocate = lua_getallocf(state, &self);
    void* const block = allocate(self, nullptr, 0, ENOUGH);
    if (!block)
        return false;
    allocate(self, block, ENOUGH, 0);
    return true;
}

void pushRaw(lua_State* state, int table, const char* name)
{
    const int index = table < 0 ? lua_gettop(state) + table + 1 : table;
    lua_pushstring(state, name);
    if (lua_istable(state, index))
        lua_rawget(state, index);
    else
    {
        lua_pop(state, 1);
        lua_pushnil(state);
    }
}

// Stack: +1, the field `name` of the field `table` of the registry, nil if there is none.
void pushRegistered(lua_State* state, const char* table, const char* name)
{
    lua_pushstring(state, table);
    lua_rawget(state, LUA_REGISTRYINDEX);
    pushRaw(state, -1, name);
    lua_remove(state, -2);
}

// Runs in a state of its own, which no script has seen.
int learnFunctions(lua_State* state)
{
    luaL_openlibs(state);
    pushRegistered(state, "_PRELOAD", FFI);
    const lua_CFunction opener = lua_tocfunction(state, -1);
    if (!opener || !hasRoom(state))
        return 0;
    lua_call(state, 0, 0);
    pushRegistered(state, "_PRELOAD", "table.clear");
    knownMaker = lua_tocfunction(state, -1);
    for (std::size_t i = 0; i < OWN_FUNCTIONS.size(); ++i)
    {
        pushRegistered(state, "_LOADED", OWN_FUNCTIONS[i].library);
        pushRaw(state, -1, OWN_FUNCTIONS[i].name);
        knownFunctions[i] = lua_tocfunction(state, -1);
        lua_settop(state, 0);
    }
    knownOpener = opener;
    return 0;
}

bool knowsFunctions()
{
    if (!knownOpener)
    {
        const LuaPrivateState pristine;
        if (!pristine.get() || lua_cpcall(pristine.get(), &learnFunctions, nullptr) != 0)
            return false;
    }
    return knownOpener != nullptr;
}

bool isOwnFunctionOnTop(lua_State* state, std::size_t function)
{
    const lua_CFunction found = lua_tocfunction(state, -1);
    return found && found == knownFunctions[function];
}

// Returns whether the table on top of the stack is the interpreter's own, as far as we use it.
bool isInterfaceOnTop(lua_State* state)
{
    for (const LUA_OWN_FUNCTION function :
         {LUA_OWN_FUNCTION::FFI_CAST, LUA_OWN_FUNCTION::FFI_TYPEOF, LUA_OWN_FUNCTION::FFI_STRING})
    {
        const auto index = static_cast<std::size_t>(function);
        pushRaw(state, -1, OWN_FUNCTIONS[index].name);
        const bool isOwn = isOwnFunctionOnTop(state, index);
        lua_pop(state, 1);
        if (!isOwn)
            return false;
    }
    return true;
}

// Takes the place of the interpreter's own opener, which would create all types anew and break the
// values that exist.
int pushLoadedInterface(lua_State* state)
{
    lua_pushlightuserdata(state, const_cast<char*>(&interfaceKey));
    lua_rawget(state, LUA_REGISTRYINDEX);
    return 1;
}

// Replaces the opener inside the function object on top of the stack, if that is the interpreter's:
// scripts that have the object already are served too. Stack: -1.
void replaceOpener(lua_State* state)
{
    const lua_CFunction opener = lua_tocfunction(state, -1);
    if (opener && opener == knownOpener)
        replaceFunction(state, &pushLoadedInterface);
    lua_pop(state, 1);
}

// `require` looks into the table that `package` has, which may be another one than at first.
void replaceOpeners(lua_State* state)
{
    pushRegistered(state, "_PRELOAD", FFI);
    replaceOpener(state);
    pushRegistered(state, "_LOADED", "package");
    pushRaw(state, -1, "preload");
    pushRaw(state, -1, FFI);
    replaceOpener(state);
    lua_pop(state, 2);
}

// Stack: +1, what `package.loaded` gets as the interface if the interpreter loads it now; nil if it
// has loaded it before. `package.loaded` is on top of the stack.
void pushNewlyLoaded(lua_State* state)
{
    const int loadedIndex = lua_gettop(state);
    lua_pushstring(state, FFI);
    lua_pushvalue(state, -1);
    lua_rawget(state, loadedIndex);
    const int nameIndex = loadedIndex + 1;
    const int savedIndex = loadedIndex + 2;
    const bool hadSome = !lua_isnil(state, savedIndex);
    if (hadSome)
    {
        lua_pushvalue(state, nameIndex);
        lua_pushnil(state);
        lua_rawset(state, loadedIndex);
    }
    luaL_loadbuffer(state, NEEDS_THE_INTERFACE, std::strlen(NEEDS_THE_INTERFACE), "=leaf");
    lua_pop(state, 1); // the function, or the message
    lua_pushvalue(state, nameIndex);
    lua_rawget(state, loadedIndex);
    if (hadSome || !lua_isnil(state, -1))
    {
        lua_pushvalue(state, nameIndex);
        lua_pushvalue(state, savedIndex);
        lua_rawset(state, loadedIndex);
    }
    lua_replace(state, nameIndex);
    lua_settop(state, nameIndex);
}

} // namespace

bool pushForeignInterface(lua_State* state)
{
    const int top = lua_gettop(state);
    if (!knowsFunctions() || !hasRoom(state))
        return false;
    lua_pushstring(state, "_LOADED");
    lua_rawget(state, LUA_REGISTRYINDEX);
    if (lua_istable(state, -1))
    {
        pushNewlyLoaded(state);
        if (lua_isnil(state, -1)) // then the one that scripts have, if it is the interpreter's
        {
            lua_pop(state, 1);
            pushRaw(state, -1, FFI);
        }
    }
    if (!lua_istable(state, -1) || lua_gettop(state) != top + 2 || !isInterfaceOnTop(state))
    {
        lua_settop(state, top);
        return false;
    }
    lua_replace(state, top + 1);
    lua_pushlightuserdata(state, const_cast<char*>(&interfaceKey));
    lua_pushvalue(state, -2);
    lua_rawset(state, LUA_REGISTRYINDEX);
    replaceOpeners(state);
    return true;
}

bool pushNewClear(lua_State* state)
{
    if (!knownMaker)
        return false;
    lua_pushcfunction(state, knownMaker);
    lua_createtable(state, 0, 1); // where it publishes the function
    lua_setfenv(state, -2);
    lua_call(state, 0, 1);
    return true;
}

bool pushOwnFunction(lua_State* state, int interfaceIndex, LUA_OWN_FUNCTION function)
{
    const auto index = static_cast<std::size_t>(function);
    if (std::strcmp(OWN_FUNCTIONS[index].library, FFI) == 0)
        lua_pushvalue(state, interfaceIndex);
    else
        pushRegistered(state, "_LOADED", OWN_FUNCTIONS[index].library);
    pushRaw(state, -1, OWN_FUNCTIONS[index].name);
    lua_remove(state, -2);
    if (isOwnFunctionOnTop(state, index))
        return true;
    lua_pop(state, 1);
    return false;
}

} // namespace tbScripts::lua

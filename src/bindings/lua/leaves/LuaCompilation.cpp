// Why: docs/decisions/0034-compiled-leaves.md

#include "bindings/lua/leaves/LuaCompilation.h"

#include "bindings/lua/leaves/LuaForeignInterface.h"
#include "core/lua/LuaFunctionObject.h"

namespace tbScripts::lua
{

namespace
{

/// What `compiles` finds in the registry, under the address of `compilationKey`.
struct Compilation
{
    bool isAtCall; // the compiler has just looked at a call of `compiles`
};

const char compilationKey = 0;

// The function with the flag is the environment of the block, so that neither needs a key.
constexpr int SHARED_FIELD = 1;

void setFast(lua_State* state, int functionIndex, bool isFast)
{
    lua_pushboolean(state, isFast ? 1 : 0);
    lua_setupvalue(state, functionIndex, FAST_UPVALUE);
}

// In the place of the C function of `compiles`.
int isCallCompiled(lua_State* state)
{
    bool isCompiled = false;
    lua_pushlightuserdata(state, const_cast<char*>(&compilationKey));
    lua_rawget(state, LUA_REGISTRYINDEX);
    auto* const compilation = static_cast<Compilation*>(lua_touserdata(state, -1));
    if (compilation)
    {
        isCompiled = compilation->isAtCall;
        compilation->isAtCall = false;
        if (!isCompiled)
        {
            lua_getfenv(state, -1);
            lua_rawgeti(state, -1, SHARED_FIELD);
            setFast(state, lua_gettop(state), false);
        }
    }
    lua_pushboolean(state, isCompiled ? 1 : 0);
    return 1;
}

// Called for each instruction before the compiler looks at it. The second argument is the function
// that the instruction belongs to, or that it has just called.
int noteInstruction(lua_State* state)
{
    if (lua_tocfunction(state, 2) == &isCallCompiled)
        static_cast<Compilation*>(lua_touserdata(state, lua_upvalueindex(2)))->isAtCall = true;
    setFast(state, lua_upvalueindex(1), true);
    return 0;
}

constexpr const char* HANDLERS = "_VMEVENTS";

// Stack: +1, a copy of the handlers of events that are there.
void pushHandlers(lua_State* state)
{
    lua_createtable(state, 0, 0);
    const int copyIndex = lua_gettop(state);
    lua_pushstring(state, HANDLERS);
    lua_rawget(state, LUA_REGISTRYINDEX);
    if (lua_istable(state, -1))
    {
        lua_pushnil(state);
        while (lua_next(state, copyIndex + 1))
        {
            lua_pushvalue(state, -2);
            lua_insert(state, -2);
            lua_rawset(state, copyIndex);
        }
    }
    lua_settop(state, copyIndex);
}

// Puts the handler back that somebody had attached before ours, if there is one; only one is
// possible. Returns whether ours stays. Stack: +0.
bool isOnlyHandler(lua_State* state, int formerIndex, int handlerIndex)
{
    const int top = lua_gettop(state);
    bool isOnly = false;
    lua_pushstring(state, HANDLERS);
    lua_rawget(state, LUA_REGISTRYINDEX);
    lua_pushnil(state);
    while (lua_istable(state, top + 1) && lua_next(state, top + 1))
    {
        if (lua_rawequal(state, -1, handlerIndex))
        {
            lua_pushvalue(state, -2);
            lua_rawget(state, formerIndex);
            isOnly = lua_isnil(state, -1);
            if (!isOnly)
            {
                lua_remove(state, -2);
                lua_rawset(state, top + 1);
            }
            break;
        }
        lua_pop(state, 1);
    }
    lua_settop(state, top);
    return isOnly;
}

// Stack: +1, a new block, in the registry and with the function at `sharedIndex`.
void pushCompilation(lua_State* state, int sharedIndex)
{
    lua_pushlightuserdata(state, const_cast<char*>(&compilationKey));
    auto* const compilation =
        static_cast<Compilation*>(lua_newuserdata(state, sizeof(Compilation)));
    compilation->isAtCall = false;
    lua_createtable(state, SHARED_FIELD, 0);
    lua_pushvalue(state, sharedIndex);
    lua_rawseti(state, -2, SHARED_FIELD);
    lua_setfenv(state, -2);
    lua_pushvalue(state, -1);
    lua_insert(state, -3);
    lua_rawset(state, LUA_REGISTRYINDEX);
}

} // namespace

bool pushCompiles(lua_State* state)
{
    if (!pushNewClear(state))
        return false;
    if (replaceFunction(state, &isCallCompiled))
        return true;
    lua_pop(state, 1);
    return false;
}

bool attachToCompiler(lua_State* state, int interfaceIndex)
{
    const int sharedIndex = lua_gettop(state);
    const int formerIndex = sharedIndex + 1;
    const int handlerIndex = sharedIndex + 2;
    pushHandlers(state);
    lua_pushvalue(state, sharedIndex);
    pushCompilation(state, sharedIndex);
    lua_pushcclosure(state, &noteInstruction, 2);
    bool isDone = pushOwnFunction(state, interfaceIndex, LUA_OWN_FUNCTION::JIT_ATTACH);
    if (isDone)
    {
        // Of the other events, "trace" would tell the beginning and the end. But LuaJIT 2.1.0-beta3
        // crashes if anybody is attached to it and the compiler gives up inside a function of the
        // interpreter that is the only one on the stack, as in `return string.format('%d', x)`
        // called by the host.
        lua_pushvalue(state, handlerIndex);
        lua_pushliteral(state, "record");
        lua_call(state, 2, 0);
        isDone = isOnlyHandler(state, formerIndex, handlerIndex);
    }
    lua_settop(state, sharedIndex);
    return isDone;
}

} // namespace tbScripts::lua

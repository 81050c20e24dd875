// Why: docs/decisions/0028-guards-of-the-c-stack.md

#include "core/lua/calls/LuaStackGuards.h"

#include "core/lua/LuaFunctionObject.h"
#include "core/lua/LuaStateSlot.h"
#include "core/lua/calls/LuaStackRoom.h"
#include "port/StackBounds.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>

namespace tbScripts::lua
{

namespace
{

/// What a function takes of the stack before it calls back, as measured, with some more.
enum class NEED
{
    LITTLE,
    BUFFERS,  // luaL_Buffer is on the stack
    PARSER,   // 200 levels of source text that is nested as deep as the parser allows
    COROUTINE // little, but see mayNestCoroutines
};

constexpr std::size_t NEEDS = 4;

struct GuardedFunction
{
    const char* library; // null: a method of string buffers, which scripts load by `require`
    const char* name;
    NEED need;
};

constexpr std::array FUNCTIONS{
    GuardedFunction{"_G", "collectgarbage", NEED::LITTLE},
    GuardedFunction{"_G", "dofile", NEED::PARSER},
    GuardedFunction{"_G", "load", NEED::PARSER},
    GuardedFunction{"_G", "loadfile", NEED::PARSER},
    GuardedFunction{"_G", "loadstring", NEED::PARSER},
    GuardedFunction{"_G", "module", NEED::LITTLE},
    GuardedFunction{"_G", "print", NEED::LITTLE},
    GuardedFunction{"_G", "require", NEED::PARSER},
    GuardedFunction{"coroutine", "create", NEED::COROUTINE},
    GuardedFunction{"coroutine", "wrap", NEED::COROUTINE},
    GuardedFunction{"os", "time", NEED::LITTLE},
    GuardedFunction{"string", "format", NEED::LITTLE},
    GuardedFunction{"string", "gsub", NEED::BUFFERS},
    GuardedFunction{"table", "sort", NEED::LITTLE},
    GuardedFunction{nullptr, "put", NEED::LITTLE},
    GuardedFunction{nullptr, "putf", NEED::LITTLE}};

// The functions of the interpreter that the guards call. All states of a process have the same.
std::array<lua_CFunction, FUNCTIONS.size()> guarded{};
lua_CFunction openBuffers = nullptr;

// Its address is the key of the slot in the registry.
const char slotKey = 0;

std::uintptr_t bytesOf(NEED need, std::uintptr_t stackSize)
{
    constexpr std::uintptr_t SMALLEST_FOR_ALL_SOURCES = 224 * LuaStackRoom::KIBIBYTE;
    switch (need)
    {
    case NEED::LITTLE:
    case NEED::COROUTINE:
        return 0;
    case NEED::BUFFERS:
        return 10 * LuaStackRoom::KIBIBYTE;
    case NEED::PARSER:
        // On smaller stacks the usual ones must do.
        return (stackSize < SMALLEST_FOR_ALL_SOURCES ? 12 : 130) * LuaStackRoom::KIBIBYTE;
    }
    return 0;
}

// What stays free behind a guard, for patterns, error handling and host functions.
std::uintptr_t reserveOf(std::uintptr_t stackSize)
{
    constexpr std::uintptr_t ENOUGH = 64 * LuaStackRoom::KIBIBYTE;
    return std::min(ENOUGH, stackSize / 4);
}

// Only deep places need it, and stacks that nobody knows, so that this may take its time.
const LuaStateSlot* findSlot(lua_State* state)
{
    lua_pushlightuserdata(state, const_cast<char*>(&slotKey));
    lua_rawget(state, LUA_REGISTRYINDEX);
    const auto* const slot = static_cast<const LuaStateSlot*>(lua_touserdata(state, -1));
    lua_pop(state, 1);
    return slot;
}

std::uintptr_t findOutermostPlace(lua_State* state)
{
    const LuaStateSlot* const slot = findSlot(state);
    return slot ? slot->getPlaces().outermost : 0;
}

constexpr std::uintptr_t MOST_FOR_COROUTINES = 512 * LuaStackRoom::KIBIBYTE;

// Coroutines take so little stack that 8 MiB hold 100,000 inside each other. An error that leaves
// all of them takes minutes, because each adds to the message. So they get no more than this,
// counted from the innermost call of the host: some 6,500 levels.
bool mayNestCoroutines(lua_State* state, std::uintptr_t place, const LuaStackRoom& room)
{
    if (room.getSize() - room.getLeft() < MOST_FOR_COROUTINES)
        return true;
    const LuaStateSlot* const slot = findSlot(state);
    return slot && slot->getPlaces().innermost - place < MOST_FOR_COROUTINES;
}

// Between these two a place on this thread's stack has room for each NEED. Found once for each
// thread: a guard may cost no more than a few instructions.
struct PlacesWithRoom
{
    std::uintptr_t highest;
    std::array<std::uintptr_t, NEEDS> lowest;
};

#if defined(__GLIBC__) // which reserves static TLS for libraries that are loaded later
thread_local PlacesWithRoom placesWithRoom __attribute__((tls_model("initial-exec"))){};
#else
thread_local PlacesWithRoom placesWithRoom{};
#endif

void findPlacesWithRoom()
{
    const port::StackBounds stack = LuaStackRoom::getStackOfThread();
    const std::uintptr_t size = stack.highest - stack.lowest;
    for (std::size_t i = 0; i < NEEDS; ++i)
    {
        const NEED need = static_cast<NEED>(i);
        const std::uintptr_t lowest = stack.lowest + reserveOf(size) + bytesOf(need, size);
        const bool isBounded = need == NEED::COROUTINE && size > MOST_FOR_COROUTINES;
        placesWithRoom.lowest[i] =
            isBounded ? std::max(lowest, stack.highest - MOST_FOR_COROUTINES) : lowest;
    }
    placesWithRoom.highest = stack.highest;
}

// Looks again, at other stacks and at the call of the host.
bool isRoomLeft(lua_State* state, NEED need, std::uintptr_t place)
{
    if (placesWithRoom.highest == 0)
        findPlacesWithRoom();
    const LuaStackRoom room(place, [state] { return findOutermostPlace(state); });
    return room.getLeft() > reserveOf(room.getSize()) + bytesOf(need, room.getSize()) &&
           (need != NEED::COROUTINE || mayNestCoroutines(state, place, room));
}

// This frame and those above it, up to the interpreter's, own nothing.
int raiseOverflow(lua_State* state)
{
    luaL_where(state, 1);
    lua_pushliteral(state, "C stack overflow");
    lua_concat(state, 2);
    return lua_error(state);
}

template <std::size_t index>
int callGuarded(lua_State* state)
{
    constexpr NEED need = FUNCTIONS[index].need;
    const std::uintptr_t place = port::getPlaceOnStack();
    if (place < placesWithRoom.highest &&
        place > placesWithRoom.lowest[static_cast<std::size_t>(need)])
        return guarded[index](state);
    return isRoomLeft(state, need, place) ? guarded[index](state) : raiseOverflow(state);
}

template <std::size_t... index>
constexpr std::array<lua_CFunction, sizeof...(index)> makeGuards(std::index_sequence<index...>)
{
    return {&callGuarded<index>...};
}

constexpr auto GUARDS = makeGuards(std::make_index_sequence<FUNCTIONS.size()>());

// Guards field FUNCTIONS[index].name of the table on top of the stack. Stack: +0.
void guardField(lua_State* state, std::size_t index)
{
    lua_getfield(state, -1, FUNCTIONS[index].name);
    if (const lua_CFunction function = replaceFunction(state, GUARDS[index]))
        guarded[index] = function;
    lua_pop(state, 1);
}

// Opens the library of string buffers, whose functions are created then. Returns its table.
int openGuardedBuffers(lua_State* state)
{
    const int results = openBuffers(state);
    lua_getfield(state, -1, "new");
    lua_call(state, 0, 1);
    if (luaL_getmetafield(state, -1, "__index") != 0)
    {
        for (std::size_t i = 0; i < FUNCTIONS.size(); ++i)
        {
            if (!FUNCTIONS[i].library)
                guardField(state, i);
        }
        lua_pop(state, 1);
    }
    lua_pop(state, 1);
    return results;
}

void guardBuffers(lua_State* state)
{
    lua_getfield(state, LUA_REGISTRYINDEX, "_PRELOAD");
    if (lua_istable(state, -1))
    {
        lua_getfield(state, -1, "string.buffer");
        if (const lua_CFunction function = replaceFunction(state, &openGuardedBuffers))
            openBuffers = function;
        lua_pop(state, 1);
    }
    lua_pop(state, 1);
}

} // namespace

void guardLibraries(LuaStateSlot& slot, lua_State* state)
{
    lua_pushlightuserdata(state, const_cast<char*>(&slotKey));
    lua_pushlightuserdata(state, &slot);
    lua_rawset(state, LUA_REGISTRYINDEX);
    for (std::size_t i = 0; i < FUNCTIONS.size(); ++i)
    {
        if (!FUNCTIONS[i].library)
            continue;
        lua_getglobal(state, FUNCTIONS[i].library);
        guardField(state, i);
        lua_pop(state, 1);
    }
    guardBuffers(state);
}

} // namespace tbScripts::lua

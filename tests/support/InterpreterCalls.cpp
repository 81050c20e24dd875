#include "support/InterpreterCalls.h"

#include <cstdlib>
#include <dlfcn.h>
#include <utility>

namespace
{

std::size_t protectedCalls = 0;
std::size_t fullCollections = 0;
lua_State* openedState = nullptr;
tbScripts::test::StateMemory* stateMemory = nullptr;

// The function of that name that would have been called without ours.
template <typename Signature>
Signature* nextFunction(const char* name)
{
    return reinterpret_cast<Signature*>(dlsym(RTLD_NEXT, name));
}

} // namespace

// Defined in the executable, these are found before those of the interpreter's library.
extern "C"
{
    int lua_pcall(lua_State* state, int arguments, int results, int handler)
    {
        static auto* const next = nextFunction<decltype(lua_pcall)>("lua_pcall");
        ++protectedCalls;
        return next(state, arguments, results, handler);
    }

    int lua_cpcall(lua_State* state, lua_CFunction function, void* data)
    {
        static auto* const next = nextFunction<decltype(lua_cpcall)>("lua_cpcall");
        ++protectedCalls;
        return next(state, function, data);
    }

    int lua_gc(lua_State* state, int what, int data)
    {
        static auto* const next = nextFunction<decltype(lua_gc)>("lua_gc");
        fullCollections += what == LUA_GCCOLLECT ? 1 : 0;
        return next(state, what, data);
    }

    lua_State* luaL_newstate()
    {
        static auto* const next = nextFunction<decltype(luaL_newstate)>("luaL_newstate");
        openedState = stateMemory ? stateMemory->open() : next();
        return openedState;
    }
}

namespace tbScripts::test
{

InterpreterCalls::InterpreterCalls()
    : m_protectedCallsBefore(protectedCalls)
    , m_fullCollectionsBefore(fullCollections)
{
}

std::size_t InterpreterCalls::countProtectedCalls() const
{
    return protectedCalls - m_protectedCallsBefore;
}

std::size_t InterpreterCalls::countFullCollections() const
{
    return fullCollections - m_fullCollectionsBefore;
}

lua_State* InterpreterCalls::lastOpenedState()
{
    return openedState;
}

StateMemory::StateMemory()
{
    stateMemory = this;
}

StateMemory::~StateMemory()
{
    stateMemory = nullptr;
}

void StateMemory::refuseAfter(std::size_t allowed)
{
    m_allowed = allowed;
    m_isRefusing = true;
    m_hasRefused = false;
}

void StateMemory::refuseAbove(std::size_t bytes)
{
    m_ceiling = m_livingBytes + bytes;
}

void StateMemory::allowAll()
{
    m_isRefusing = false;
    m_ceiling = NO_CEILING;
}

bool StateMemory::hasRefused() const
{
    return m_hasRefused;
}

std::size_t StateMemory::countLivingBlocks() const
{
    return m_livingBlocks;
}

lua_State* StateMemory::open()
{
    if (_isRefused())
        return nullptr;
    const bool wasRefusing = std::exchange(m_isRefusing, false);
    lua_State* const state = lua_newstate(&_allocate, this);
    m_isRefusing = wasRefusing;
    return state;
}

void* StateMemory::_allocate(void* self, void* block, std::size_t oldSize, std::size_t newSize)
{
    StateMemory& memory = *static_cast<StateMemory*>(self);
    if (newSize == 0)
    {
        memory.m_livingBlocks -= block ? 1 : 0;
        memory.m_livingBytes -= block ? oldSize : 0;
        std::free(block);
        return nullptr;
    }
    // Shrinking always works, as the interpreter requires.
    const std::size_t before = block ? oldSize : 0;
    if (newSize > before && memory._isRefused(newSize - before))
        return nullptr;
    memory.m_livingBlocks += block ? 0 : 1;
    memory.m_livingBytes += newSize - before;
    return std::realloc(block, newSize);
}

bool StateMemory::_isRefused(std::size_t growth)
{
    if (m_livingBytes + growth > m_ceiling)
        return true;
    if (!m_isRefusing)
        return false;
    if (m_allowed > 0)
    {
        --m_allowed;
        return false;
    }
    m_hasRefused = true;
    return true;
}

} // namespace tbScripts::test

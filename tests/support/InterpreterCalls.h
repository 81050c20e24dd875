#pragma once

#include "core/lua/LuaApi.h"

#include <cstddef>
#include <limits>

namespace tbScripts::test
{

/// Counts of what the library asked of the interpreter. The executable puts functions of its own
/// before some of the interpreter's; they count and pass the call on.
class InterpreterCalls
{
public:
    /// Starts to count.
    InterpreterCalls();

    /// Returns the number of protected calls since.
    std::size_t countProtectedCalls() const;

    /// Returns the number of full collections since.
    std::size_t countFullCollections() const;

    /// Returns the state that was opened last.
    static lua_State* lastOpenedState();

private:
    std::size_t m_protectedCallsBefore;
    std::size_t m_fullCollectionsBefore;
};

/// As long as it lives, states that the library opens take their memory from here: it refuses when
/// it was told to, and knows what was not given back.
///
/// Requires: states that were opened meanwhile are closed before it goes.
class StateMemory
{
public:
    StateMemory();

    StateMemory(const StateMemory&) = delete;
    StateMemory& operator=(const StateMemory&) = delete;

    ~StateMemory();

    /// Lets `allowed` further requests pass and refuses all others. A bare new state is one
    /// request: LuaJIT 2.1.0-beta3 dies if it gets some of the memory for it but not all, which its
    /// own allocator never does.
    void refuseAfter(std::size_t allowed);

    /// Refuses requests that would leave the states with more than `bytes` more than they have now.
    void refuseAbove(std::size_t bytes);

    /// Lets all requests pass.
    void allowAll();

    /// Returns whether a request was refused since the last `refuseAfter`.
    bool hasRefused() const;

    /// Returns the number of blocks that were not given back yet.
    std::size_t countLivingBlocks() const;

    /// Returns a bare new state, null if that is refused.
    lua_State* open();

private:
    static constexpr std::size_t NO_CEILING = std::numeric_limits<std::size_t>::max();

    static void* _allocate(void* self, void* block, std::size_t oldSize, std::size_t newSize);

    bool _isRefused(std::size_t growth = 0);

    std::size_t m_allowed = 0;
    std::size_t m_livingBlocks = 0;
    std::size_t m_livingBytes = 0;
    std::size_t m_ceiling = NO_CEILING;
    bool m_isRefusing = false;
    bool m_hasRefused = false;
};

} // namespace tbScripts::test

#pragma once

#include "core/lua/LuaApi.h"

#include <cstddef>

namespace tbScripts::test
{

/// Wraps the allocator of a living state and refuses requests on demand.
class InjectedAllocator
{
public:
    explicit InjectedAllocator(lua_State* state);

    InjectedAllocator(const InjectedAllocator&) = delete;
    InjectedAllocator& operator=(const InjectedAllocator&) = delete;

    /// Gives the state its own allocator back. Requires: the state is still open.
    ~InjectedAllocator();

    /// Lets `allowed` further requests pass and refuses the next ones.
    void refuseAfter(std::size_t allowed);

    /// Lets all requests pass.
    void allowAll();

    /// Returns whether a request was refused since the last `refuseAfter`.
    bool hasRefused() const;

private:
    static void* _allocate(void* self, void* block, std::size_t oldSize, std::size_t newSize);

    lua_State* m_state;
    lua_Alloc m_allocate;
    void* m_allocatorData;
    std::size_t m_allowed;
    bool m_isRefusing;
    bool m_hasRefused;
};

} // namespace tbScripts::test

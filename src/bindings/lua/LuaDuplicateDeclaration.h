#pragma once

#include "bindings/lua/namespaces/LuaNamespace.h"
#include "core/lua/LuaStateHandle.h"
#include "core/lua/calls/LuaHostCall.h"

// Publishing can run a metamethod that re-enters the host and declares the same name. The nested
// declaration was already returned to the host, so it wins.
namespace tbScripts::lua
{

/// Removes `created` in favour of `existing`, which is published anew, without what was declared in
/// it.
template <typename T>
void resolveDuplicate(T& created, T& existing, const LuaStateHandle& handle)
{
    LuaHostCall call(handle, LuaHostCall::ENTRY::UPKEEP); // keeps both alive until it ends
    created.uninstall();                                  // removes the name of both
    existing.uninstall();
    existing.install(handle);
}

/// The same for a namespace, which keeps what was declared in it: both share one table.
inline void resolveDuplicate(
    LuaNamespace& created, LuaNamespace& /*existing*/, const LuaStateHandle& /*handle*/)
{
    created.leaveTable();
}

} // namespace tbScripts::lua

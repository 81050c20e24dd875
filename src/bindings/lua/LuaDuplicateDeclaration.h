#pragma once

#include "bindings/lua/namespaces/LuaNamespace.h"
#include "core/lua/LuaStateHandle.h"
#include "core/lua/calls/LuaHostCall.h"

// Publishing a binding runs metamethods, and those may have the host declare the same name. Then
// there are two of them. The one that was declared meanwhile is known to the host, so it stays.
namespace tbScripts::lua
{

/// Ends `made` in favour of `known`, which is published anew, without what was declared in it.
template <typename T>
void resolveDuplicate(T& made, T& known, const LuaStateHandle& handle)
{
    LuaHostCall call(handle, LuaHostCall::ENTRY::UPKEEP); // keeps both to its end
    made.uninstall();                                     // takes the name from both
    known.uninstall();
    known.install(handle);
}

/// The same for a namespace, which keeps what was declared in it: both have one table.
inline void resolveDuplicate(LuaNamespace& made, LuaNamespace& /*known*/, const LuaStateHandle& /*handle*/)
{
    made.leaveTable();
}

} // namespace tbScripts::lua

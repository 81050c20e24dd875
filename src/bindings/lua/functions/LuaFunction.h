#pragma once

#include "bindings/CallDefinition.h"
#include "bindings/FunctionAccess.h"
#include "bindings/TypedFunction.h"
#include "bindings/lua/LuaOwner.h"
#include "core/lua/LuaApi.h"
#include "core/lua/LuaStateHandle.h"

#include "tbScripts/Function.h"

#include <tbMemory/StringView.h>

#include <cstddef>

namespace tbScripts::lua
{

class LuaFunction;

/// The block of the interpreter to which the closure of a host function points, so that a closure
/// which outlives its function notices that (docs/decisions/0005-anchors-for-closures.md). The name
/// follows the block.
struct LuaFunctionAnchor
{
    LuaFunction* function; // null after the function was destroyed
    std::size_t nameSize;

    tbMemory::StringView getName() const
    {
        return tbMemory::StringView(reinterpret_cast<const char*>(this + 1), nameSize);
    }
};

/// Host function that is published in a Lua state: as a global, or as a field of a table in the
/// registry.
class LuaFunction final : public Function, public TypedFunction
{
public:
    /// Publishes the function as global `name`. `isInstalled` returns whether that worked.
    LuaFunction(const tbMemory::StringView& name, const LuaStateHandle& handle);

    /// Publishes the function as field `name` of `owner`.
    LuaFunction(const tbMemory::StringView& name, LuaOwner owner, const LuaStateHandle& handle);

    /// Not copyable: one function owns one script-visible name. Copy the `Function` part instead.
    LuaFunction(const LuaFunction&) = delete;
    LuaFunction& operator=(const LuaFunction&) = delete;

    /// Does what `uninstall` does.
    ~LuaFunction() override;

    /// Publishes the function in the state of `handle`, unless it is published there already. On
    /// failure: logs why and returns false.
    bool install(const LuaStateHandle& handle);

    /// Removes the script-visible name, even if a script has assigned another value to it. Closures
    /// that scripts hold raise a script error from here on.
    void uninstall();

    /// Returns whether the function is published in an open state.
    bool isInstalled() const;

    bool publishLeaf() override;

    const LuaStateHandle& getHandle() const { return m_handle; }

    FunctionDefinition& getDefinition() const { return FunctionAccess::getDefinition(*this); }

private:
    // Stack: -1, the closure's anchor; +1, the closure, or that of a leaf around it.
    void _pushClosure(lua_State* state);

    bool _publishLeaf();

    // Returns whether scripts still find the function under its name. Stack: +0.
    bool _isPublished(lua_State* state) const;

    void _dropAnchor();

    LuaStateHandle m_handle;
    LuaOwner m_owner;
    LuaFunctionAnchor* m_anchor = nullptr; // exists as long as m_anchorKey keeps it alive
    int m_anchorKey = LUA_NOREF;           // registry slot of the anchor
};

} // namespace tbScripts::lua

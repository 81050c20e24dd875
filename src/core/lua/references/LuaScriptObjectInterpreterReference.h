#pragma once

#include "core/lua/LuaApi.h"
#include "core/lua/LuaStateHandle.h"
#include "core/lua/references/LuaRegistry.h"

#include "tbScripts/ScriptObjectInterpreterReference.h"
#include "tbScripts/ScriptObjectReference.h"

#include <cstdint>
#include <functional>

namespace tbScripts::lua
{

/// Releases a value: receives the state, the registry slot and the kind of the value.
using LuaReleaseAction =
    std::function<void(lua_State* state, std::int64_t slot, FUNCTION_PARAMETER_TYPE type)>;

/// Keeps a script value alive in the registry. It may outlive the state, in which case it releases
/// nothing. Why: docs/decisions/0001-state-handle.md
class LuaScriptObjectInterpreterReference final : public ScriptObjectInterpreterReference
{
public:
    /// Returns a handle on a new reference without slot, which `of` returns. Both lie in one block
    /// of memory. Why: docs/decisions/0016-reusing-registry-slots.md
    static ScriptObjectReference make(const LuaStateHandle& handle, FUNCTION_PARAMETER_TYPE type);

    /// Returns the reference in `reference`. Requires: `make` created it.
    static LuaScriptObjectInterpreterReference& of(const ScriptObjectReference& reference)
    {
        return static_cast<LuaScriptObjectInterpreterReference&>(
            *reference.getInterpreterReference());
    }

    /// Owns registry slot `slot` (0 for none yet), which the destructor releases.
    LuaScriptObjectInterpreterReference(
        LuaStateHandle handle, FUNCTION_PARAMETER_TYPE type, int slot);

    /// The same; the destructor calls `release` instead, or does nothing if that is empty.
    LuaScriptObjectInterpreterReference(
        LuaStateHandle handle, FUNCTION_PARAMETER_TYPE type, int slot, LuaReleaseAction release);

    /// Releases the slot, unless the state is closed.
    ~LuaScriptObjectInterpreterReference() override;

    /// Anchors the value on top of the stack and pops it. Requires: no value is anchored yet.
    ///
    /// May raise: the registry may have to grow.
    void anchor(lua_State* state) { m_slot = takeRegistrySlot(*m_handle.getSlot(), state); }

    /// Returns the registry slot of the value of `reference` in the state of `handle`; 0 if it has
    /// none there: an empty reference, one of another or of a closed state, one of a foreign class.
    static int slotOf(const ScriptObjectReference& reference, const LuaStateHandle& handle);

    /// Returns the reference in `reference`, null for an empty one and for one that is no class of
    /// ours.
    static const LuaScriptObjectInterpreterReference* find(const ScriptObjectReference& reference);

    /// Returns the handle on the state that the value belongs to.
    const LuaStateHandle& getHandle() const { return m_handle; }

    /// Pushes the value. Stack: +1. Requires: the state is open.
    void push(lua_State* state) const
    {
        if (m_slot == 0) // the registry keeps its own bookkeeping there
            lua_pushnil(state);
        else
            lua_rawgeti(state, LUA_REGISTRYINDEX, m_slot);
    }

private:
    void _deferOwnRelease();
    bool _runOwnRelease(std::string& errorText) const;

    LuaStateHandle m_handle;
    int m_slot;
    bool m_hasOwnRelease; // whether `m_release` is used
    LuaReleaseAction m_release;
};

/// Stack: +1, the value of `reference` in the state of `handle`, nil if it has none there.
void pushReferenced(
    lua_State* state, const ScriptObjectReference& reference, const LuaStateHandle& handle);

} // namespace tbScripts::lua

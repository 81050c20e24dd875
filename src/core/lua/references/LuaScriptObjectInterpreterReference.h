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

/// What gives a value back: gets the state, the registry slot and the kind of the value.
using LuaReleaseAction =
    std::function<void(lua_State* state, std::int64_t slot, FUNCTION_PARAMETER_TYPE type)>;

/// Keeps a script value alive in the registry.
class LuaScriptObjectInterpreterReference final : public ScriptObjectInterpreterReference
{
public:
    /// Returns a handle on a new reference without slot, which `of` gives. Both are one piece of
    /// memory.
    static ScriptObjectReference make(const LuaStateHandle& handle, FUNCTION_PARAMETER_TYPE type);

    /// Returns what `reference` holds. Requires: it comes from `make`.
    static LuaScriptObjectInterpreterReference& of(const ScriptObjectReference& reference)
    {
        return static_cast<LuaScriptObjectInterpreterReference&>(
            *reference.getInterpreterReference());
    }

    /// Takes over registry slot `slot`, 0 for none yet, and gives it back at its end.
    LuaScriptObjectInterpreterReference(
        LuaStateHandle handle, FUNCTION_PARAMETER_TYPE type, int slot);

    /// The same; `release` gives it back, and an empty one gives nothing back.
    LuaScriptObjectInterpreterReference(
        LuaStateHandle handle, FUNCTION_PARAMETER_TYPE type, int slot, LuaReleaseAction release);

    /// Gives the slot back, unless the state is closed.
    ~LuaScriptObjectInterpreterReference() override;

    /// Anchors the value on top of the stack, which it pops. Requires: none is anchored yet.
    ///
    /// May raise: the registry may have to grow.
    void anchor(lua_State* state) { m_slot = takeRegistrySlot(*m_handle.getSlot(), state); }

    /// Returns the registry slot of what `reference` designates in the state of `handle`; 0 if
    /// that is nothing: an empty reference, one of another or a closed state, one not ours.
    static int slotOf(const ScriptObjectReference& reference, const LuaStateHandle& handle);

private:
    bool _runOwnRelease(std::string& errorText) const;

    LuaStateHandle m_handle;
    int m_slot;
    bool m_hasOwnRelease; // a callable is only needed for that
    LuaReleaseAction m_release;
};

/// Stack: +1, the value that `reference` designates in the state of `handle`, else nil.
void pushReferenced(
    lua_State* state, const ScriptObjectReference& reference, const LuaStateHandle& handle);

} // namespace tbScripts::lua

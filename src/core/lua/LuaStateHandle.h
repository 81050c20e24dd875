#pragma once

#include "core/Counted.h"
#include "core/lua/LuaApi.h"
#include "core/lua/LuaStateSlot.h"

#include <memory>
#include <utility>

namespace tbScripts::lua
{

/// Shared, revocable access to an interpreter state (docs/decisions/0001-state-handle.md).
///
/// Objects store a handle instead of a `lua_State*`. Closing the state empties the handle for all
/// holders, so an object that outlives the state finds none.
class LuaStateHandle
{
public:
    /// Creates a handle without state.
    LuaStateHandle() = default;

    /// Creates a state with the standard libraries.
    ///
    /// On failure (no memory): returns a handle without state.
    static LuaStateHandle open();

    /// Empties the handle and all its copies, then closes the state (see `LuaStateSlot::close`).
    void close();

    /// Returns the coroutine on which host calls have to work, null after the state was closed.
    lua_State* get() const { return m_slot ? m_slot->getRunning() : nullptr; }

    /// Returns whether blocks of the interpreter may be touched: also while the state closes.
    bool hasMemory() const { return m_slot && m_slot->hasMemory(); }

    /// Returns null if this handle never had a state.
    LuaStateSlot* getSlot() const { return m_slot.get(); }

    /// Returns whether both are handles on the same open state.
    bool sharesStateWith(const LuaStateHandle& other) const
    {
        return getSlot() == other.getSlot() && get() != nullptr;
    }

    /// Creates one more handle on a shared slot.
    explicit LuaStateHandle(LuaStateSlot* slot) noexcept
        : m_slot(slot)
    {
    }

private:
    Counted<LuaStateSlot> m_slot;
};

/// Destroys `object`, which has left its registries: at once, or when the outermost host call
/// returns. That call may be an operation of `object` itself.
template <typename T>
void destroyWhenIdle(const LuaStateHandle& handle, std::unique_ptr<T> object)
{
    LuaStateSlot* const slot = handle.getSlot();
    if (slot && slot->isInHostCall())
        slot->defer([held = std::shared_ptr<T>(std::move(object))] {});
}

/// The same for an object of one state whose owner belongs to another: waits for both states.
template <typename T>
void destroyWhenIdle(
    const LuaStateHandle& handle, const LuaStateHandle& ownersHandle, std::unique_ptr<T> object)
{
    LuaStateSlot* const slot = handle.getSlot();
    if (!slot || !slot->isInHostCall() || slot == ownersHandle.getSlot())
    {
        destroyWhenIdle(ownersHandle, std::move(object));
        return;
    }
    slot->defer([ownersHandle, held = std::make_shared<std::unique_ptr<T>>(std::move(object))]
                { destroyWhenIdle(ownersHandle, std::move(*held)); });
}

} // namespace tbScripts::lua

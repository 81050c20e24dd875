#pragma once

#include "core/lua/LuaApi.h"
#include "core/lua/LuaReportedNames.h"
#include "core/lua/LuaTypeDirectory.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace tbScripts::lua
{

class LuaCallbackScope;

/// Registry slots of ours that wait for the next value: to put it there is one call of the
/// interpreter, and six to find a slot. They hold a number as all free slots do, but are on nobody
/// else's list.
struct LuaSpareKeys
{
    static constexpr std::size_t CAPACITY = 16;
    static constexpr int PLACEHOLDER = 0;

    std::array<int, CAPACITY> keys{};
    std::size_t count = 0;
};

/// What a state can keep to its very end. Kept ones are chained through themselves, since
/// finalisers have them kept when there may be no memory for a list.
struct LuaKeptObject
{
    bool isKeptUntilClosed = false;
    std::shared_ptr<LuaKeptObject> nextKept;

protected:
    ~LuaKeptObject() = default;
};

/// What all objects that touch one interpreter share about it.
///
/// Invariant: `main` and `running` are null as soon as the state begins to close, and nobody who
/// holds a handle uses a `lua_State*` that did not come from here.
struct LuaStateSlot
{
    lua_State* main = nullptr;

    // The coroutine whose host function is being called, else `main`. The interpreter's calls have
    // to work on the thread that runs: on another one they would be lost for its collector.
    lua_State* running = nullptr;

    int mainThreadKey = LUA_NOREF; // registry slot of the main thread's own object
    int trampolineKey = LUA_NOREF; // registry slot of the function that LuaBoundary calls protected
    int typeTablesKey = LUA_NOREF; // registry slot of the weak set of our user types' tables

    int rawgetKey = LUA_NOREF; // registry slot of the interpreter's own rawget
    int typeKey = LUA_NOREF;   // registry slot of the interpreter's own type

    LuaTypeDirectory types; // those of the weak set whose types live

    LuaReportedNames reportedTypes; // names of no user type that values were pushed with

    LuaSpareKeys spareKeys;

    unsigned hostCalls = 0;     // host calls that have been entered and not left
    bool isClosing = false;     // finalisers run inside the end of the state
    bool isTearingDown = false; // the environment is going: only upkeep may enter
    LuaCallbackScope* innermostCallback = nullptr; // the host function that runs, if one does
    std::vector<std::function<void()>> putOff; // what waits for the outermost host call to return
    std::shared_ptr<LuaKeptObject> firstKept;  // what finalisers may need to the very end

    std::uint32_t holders = 0;

    /// Keeps `object` until the state has closed.
    void keepUntilClosed(std::shared_ptr<LuaKeptObject> object)
    {
        if (std::exchange(object->isKeptUntilClosed, true))
            return;
        object->nextKept = std::move(firstKept);
        firstKept = std::move(object);
    }
};

/// Shared, revocable access to an interpreter state.
///
/// Whatever stores a state stores one of these instead. Closing empties it for all holders, so that
/// objects that outlive the state find none. The count is not atomic.
class LuaStateHandle
{
public:
    /// Makes a handle without state.
    LuaStateHandle() = default;

    /// Makes a state with the standard libraries.
    ///
    /// On failure (no memory): a handle without state.
    static LuaStateHandle open();

    LuaStateHandle(const LuaStateHandle& other) noexcept
        : m_slot(other.m_slot)
    {
        if (m_slot)
            ++m_slot->holders;
    }

    LuaStateHandle(LuaStateHandle&& other) noexcept
        : m_slot(std::exchange(other.m_slot, nullptr))
    {
    }

    LuaStateHandle& operator=(LuaStateHandle other) noexcept
    {
        std::swap(m_slot, other.m_slot);
        return *this;
    }

    ~LuaStateHandle()
    {
        if (m_slot && --m_slot->holders == 0)
            _deleteSlot();
    }

    /// Empties the handle and all its copies, then closes the state. What finalisers raise
    /// meanwhile is lost; what they put off runs at the end.
    void close();

    /// Returns the thread that host calls have to work on, null once the state is closed.
    lua_State* get() const { return m_slot ? m_slot->running : nullptr; }

    /// Returns whether blocks of the interpreter may be touched: also while the state closes.
    bool hasMemory() const { return m_slot && (m_slot->running || m_slot->isClosing); }

    /// Returns null if this handle never had a state.
    LuaStateSlot* getSlot() const { return m_slot; }

    /// Returns whether both are handles on one and the same open state.
    bool sharesStateWith(const LuaStateHandle& other) const
    {
        return m_slot == other.m_slot && get() != nullptr;
    }

    /// Makes one more handle on what others share already.
    explicit LuaStateHandle(LuaStateSlot* slot) noexcept
        : m_slot(slot)
    {
        ++m_slot->holders;
    }

private:
    void _deleteSlot();

    LuaStateSlot* m_slot = nullptr; // counted
};

/// Runs what waits for the outermost host call to return.
void runPutOff(LuaStateSlot& slot);

/// Destroys `object`, which has left its registries already: at once, or when the outermost host
/// call returns, which may be one of an operation of this very object.
template <typename T>
void destroyWhenIdle(const LuaStateHandle& handle, std::unique_ptr<T> object)
{
    LuaStateSlot* const slot = handle.getSlot();
    if (slot && slot->hostCalls > 0)
        slot->putOff.push_back([held = std::shared_ptr<T>(std::move(object))] {});
}

/// The same, for an object of one state whose owner is of another: waits for both.
template <typename T>
void destroyWhenIdle(
    const LuaStateHandle& handle, const LuaStateHandle& ownersHandle, std::unique_ptr<T> object)
{
    LuaStateSlot* const slot = handle.getSlot();
    if (!slot || slot->hostCalls == 0 || slot == ownersHandle.getSlot())
    {
        destroyWhenIdle(ownersHandle, std::move(object));
        return;
    }
    slot->putOff.push_back(
        [ownersHandle, held = std::make_shared<std::unique_ptr<T>>(std::move(object))]
        { destroyWhenIdle(ownersHandle, std::move(*held)); });
}

/// Stack: +1, the global table of the main thread, whichever thread runs.
void pushGlobals(const LuaStateSlot& slot, lua_State* state);

} // namespace tbScripts::lua

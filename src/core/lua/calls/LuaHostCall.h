#pragma once

#include "core/lua/LuaStateHandle.h"
#include "core/lua/calls/LuaBoundary.h"
#include "core/lua/calls/LuaStackRoom.h"
#include "port/StackBounds.h"

#include <cstdint>
#include <string>

namespace tbScripts::lua
{

/// Logs that an operation inside a leaf is refused, whose caller returns the neutral value then.
/// What the receiver of the log asks for is refused without a message
/// (docs/decisions/0034-compiled-leaves.md).
void refuseInLeaf(LuaStateSlot& slot);

/// Returns whether this is what the interpreter says when it runs out of memory.
bool isOutOfMemory(const std::string& errorText);

/// One call of the host into an interpreter, from its beginning to its end. How deep calls nest:
/// docs/decisions/0029-stacks-of-the-host.md.
///
/// Every operation that touches a state creates it first, so that it is destroyed last: the
/// destructor of the outermost call runs the deferred actions, which may destroy the object that
/// the operation belongs to.
class LuaHostCall
{
public:
    /// Calls nest this deep at most, so that scripts and host functions that call each other
    /// without end get an error before the C stack overflows.
    static constexpr unsigned MAX_DEPTH = 200;

    enum class ENTRY
    {
        HOST,  // on behalf of the host: refused during teardown and if calls nest too deep
        UPKEEP // releases something: always admitted while the state is open
    };

    /// Returns how a full collection enters. Outside of any call the teardown needs it; inside, the
    /// limit of depth has to stop finalisers that request collections without end.
    static ENTRY entryOfCollection(const LuaStateHandle& handle)
    {
        const LuaStateSlot* const slot = handle.getSlot();
        return slot && slot->isRunning() ? ENTRY::HOST : ENTRY::UPKEEP;
    }

    explicit LuaHostCall(const LuaStateHandle& handle, ENTRY entry = ENTRY::HOST)
        : m_slot(handle.get() ? handle.getSlot() : nullptr)
        , m_state(nullptr)
    {
        if (!m_slot)
            return;
        const bool isUpkeep = entry == ENTRY::UPKEEP;
        if (m_slot->isRestricted() && !_isAdmittedAllTheSame(isUpkeep))
            m_slot = nullptr;
        else if (_enter(port::getPlaceOnStack()) || isUpkeep)
            m_state = m_slot->getRunning();
    }

    LuaHostCall(const LuaHostCall&) = delete;
    LuaHostCall& operator=(const LuaHostCall&) = delete;

    ~LuaHostCall()
    {
        if (!m_slot)
            return;
        m_slot->setPlaces(m_outerPlaces);
        m_slot->leaveHostCall();
    }

    /// Returns the coroutine to work on, null if the call was refused.
    lua_State* getState() const { return m_state; }

    /// Requires: the call was not refused.
    LuaStateSlot& getSlot() const { return *m_slot; }

    /// Returns whether the call is admitted; if not, `errorText` says why, and is empty if there is
    /// no state. Stack indices may change their meaning from here on, so this anchors the values of
    /// the host's views.
    bool admit(std::string& errorText)
    {
        // The common case: no refusal, and no views to anchor.
        return (m_state && !m_slot->getInnermostCallback()) || _admitOrExplain(errorText);
    }

    /// Returns whether there is no state to work on: it is closed or closing, or runs a leaf.
    bool isRefused() const { return !m_slot; }

    /// Collects all garbage after the interpreter has run out of memory. What took the memory is
    /// garbage as soon as the failed work has been unwound, but the interpreter only collects as it
    /// grows, and refuses to grow: without this every further request would fail too.
    void recoverMemory();

    /// Logs what a contained work has failed with (tag "LuaEnvironment"). Throws nothing.
    static void logFailure(const std::string& errorText);

    /// Runs `work(state)`, contained. Returns whether it completed; if not, `errorText` says why,
    /// and is empty if there is no state.
    template <STACK_AFTER_WORK stackAfter = STACK_AFTER_WORK::ANYTHING, typename Work>
    bool run(Work&& work, std::string& errorText)
    {
        return admit(errorText) && runAdmitted<stackAfter>(work, errorText);
    }

    /// The same after `admit`.
    template <STACK_AFTER_WORK stackAfter = STACK_AFTER_WORK::ANYTHING, typename Work>
    bool runAdmitted(Work&& work, std::string& errorText)
    {
        return containLuaErrors<stackAfter>(*m_slot, m_state, 0, work, errorText);
    }

    /// The same; a failure is logged with tag "LuaEnvironment".
    template <STACK_AFTER_WORK stackAfter = STACK_AFTER_WORK::ANYTHING, typename Work>
    bool run(Work&& work)
    {
        std::string errorText;
        const bool isDone = run<stackAfter>(work, errorText);
        if (!isDone && !isRefused())
            _reportFailure(errorText);
        return isDone;
    }

private:
    // Counts the call. Returns whether it may nest in those that are open. Calls may run on any
    // thread, and on a stack of the host's own, so deep ones look at it.
    bool _enter(std::uintptr_t place)
    {
        const unsigned depth = m_slot->enterHostCall();
        m_outerPlaces = m_slot->getPlaces();
        const std::uintptr_t outermost = depth == 0 ? place : m_outerPlaces.outermost;
        m_slot->setPlaces({outermost, place});
        return depth < MAX_DEPTH &&
               (outermost - place < LuaStackRoom::SHALLOW || _isStackLeft(outermost, place));
    }

    // Returns whether a restricted slot admits this call: during teardown only upkeep, inside a
    // leaf nothing.
    bool _isAdmittedAllTheSame(bool isUpkeep);

    bool _admitOrExplain(std::string& errorText);

    // Returns whether the stack has room for a few more calls.
    bool _isStackLeft(std::uintptr_t outermost, std::uintptr_t place);

    void _reportFailure(const std::string& errorText);

    LuaStateSlot* m_slot; // null if there is no state to work on
    lua_State* m_state;   // null if the call was refused

    LuaCallPlaces m_outerPlaces; // of the call around this one
};

} // namespace tbScripts::lua

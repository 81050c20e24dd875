#pragma once

#include "core/lua/LuaStateHandle.h"
#include "core/lua/calls/LuaBoundary.h"

#include <string>

namespace tbScripts::lua
{

/// Returns whether this is what the interpreter says when it runs out of memory.
bool isOutOfMemory(const std::string& errorText);

/// One call of the host into an interpreter, from its beginning to its end.
///
/// Made first in every operation that touches a state, so that it ends last: its end runs what had
/// to wait for the outermost call, which may destroy the very object that the operation belongs to.
class LuaHostCall
{
public:
    /// Calls nest this deep at most, so that scripts and host functions that call each other
    /// without end meet an error before the end of the C stack.
    static constexpr unsigned MAX_DEPTH = 200;

    /// So deep they nest without a look at how much of the stack is left, less than that on threads
    /// with a small one.
    static constexpr unsigned SHALLOW_DEPTH = 20;

    enum class ENTRY
    {
        HOST,  // on behalf of the host: refused during teardown and too deep
        UPKEEP // releases something: always let in while the state is open
    };

    /// Returns how a full collection enters: outside of any call the teardown needs it; inside,
    /// finalisers that ask for collections without end have to meet the limit of depth.
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
        if (m_slot->isTearingDown() && !isUpkeep)
            m_slot = nullptr;
        else if (_mayNest(m_slot->enterHostCall()) || isUpkeep)
            m_state = m_slot->getRunning();
    }

    LuaHostCall(const LuaHostCall&) = delete;
    LuaHostCall& operator=(const LuaHostCall&) = delete;

    ~LuaHostCall()
    {
        if (m_slot)
            m_slot->leaveHostCall();
    }

    /// Returns the thread to work on, null if the call was refused.
    lua_State* getState() const { return m_state; }

    /// Returns whether the call may do something; else `errorText` says why not, and is empty if
    /// there is no state to work on. From here on stack indices may change their meaning: what the
    /// host looks at on the stack is kept elsewhere.
    bool admit(std::string& errorText)
    {
        // The common case asks for nothing: no refusal, and no host function that was lent views.
        return (m_state && !m_slot->getInnermostCallback()) || _admitOrExplain(errorText);
    }

    /// Returns whether there is no state to work on: it is closed, or going.
    bool isRefused() const { return !m_slot; }

    /// Collects all garbage after the interpreter has run out of memory. What took the memory is
    /// garbage as soon as the failed work has been unwound, but the interpreter only collects as it
    /// grows, and refuses to grow: without this every further request would fail too.
    void recoverMemory();

    /// Logs what a contained work has failed with (tag "LuaEnvironment"). Throws nothing.
    static void logFailure(const std::string& errorText);

    /// Runs `work(state)`, contained. Returns whether it came to its end; else `errorText` says
    /// why, and is empty if there is no state to work on.
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
    static bool _mayNest(unsigned depth)
    {
        return depth < SHALLOW_DEPTH || (depth < MAX_DEPTH && _isStackLeft());
    }

    bool _admitOrExplain(std::string& errorText);

    // Returns whether this thread's stack has room for a few more calls.
    static bool _isStackLeft();

    void _reportFailure(const std::string& errorText);

    LuaStateSlot* m_slot; // null if there is no state to work on
    lua_State* m_state;   // null if the call was refused
};

} // namespace tbScripts::lua

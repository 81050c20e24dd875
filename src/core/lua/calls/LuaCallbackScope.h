#pragma once

#include "core/lua/LuaApi.h"
#include "core/lua/LuaStateHandle.h"

#include <string>

namespace tbScripts::lua
{

class LuaScriptObjectInterpreterView;

/// The time during which the host sees values on the interpreter's stack: a script calls a host
/// function, or the host reads the results of a script call.
///
/// During this time host calls work on the scope's coroutine
/// (docs/decisions/0004-host-calls-on-the-running-coroutine.md). The destructor empties the scope's
/// views.
class LuaCallbackScope
{
public:
    /// Requires: `slot` outlives this object; it does, since states close only outside of calls.
    LuaCallbackScope(LuaStateSlot& slot, lua_State* thread)
        : m_slot(slot)
        , m_thread(thread)
        , m_outer(slot.enterCallback(*this, thread))
    {
    }

    LuaCallbackScope(const LuaCallbackScope&) = delete;
    LuaCallbackScope& operator=(const LuaCallbackScope&) = delete;

    ~LuaCallbackScope()
    {
        if (m_firstView)
            _endViews();
        m_slot.leaveCallback(m_outer);
    }

    LuaStateSlot& getSlot() const { return m_slot; }

    lua_State* getThread() const { return m_thread; }

    /// Returns whether stack indices count from the bottom of this scope's call.
    bool isInnermost() const { return m_slot.getInnermostCallback() == this; }

    /// Anchors the values of all views, before another call may change what stack indices mean.
    bool keepViews(std::string& errorText);

    /// Defined in LuaScriptObjectInterpreterView.h, because they need that class.
    inline void addView(LuaScriptObjectInterpreterView& view);
    inline void removeView(LuaScriptObjectInterpreterView& view);

private:
    void _endViews();

    LuaStateSlot& m_slot;
    lua_State* m_thread;
    LuaOuterCallback m_outer;
    LuaScriptObjectInterpreterView* m_firstView = nullptr; // chained through the views
    bool m_hasUnkeptViews = false;
};

} // namespace tbScripts::lua

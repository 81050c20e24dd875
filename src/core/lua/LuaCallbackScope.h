#pragma once

#include "core/lua/LuaApi.h"
#include "core/lua/LuaStateHandle.h"

#include <string>

namespace tbScripts::lua
{

class LuaScriptObjectInterpreterView;

/// A stretch during which the host looks at values on the interpreter's stack: the call of a host
/// function by a script, or the reading of a script call's results.
///
/// While it lasts, host calls work on its thread. Views that are lent to it end with it.
class LuaCallbackScope
{
public:
    /// Requires: `slot` outlives this object; it does, since states close only outside of calls.
    LuaCallbackScope(LuaStateSlot& slot, lua_State* thread);

    LuaCallbackScope(const LuaCallbackScope&) = delete;
    LuaCallbackScope& operator=(const LuaCallbackScope&) = delete;

    ~LuaCallbackScope();

    LuaStateSlot& getSlot() const { return m_slot; }

    lua_State* getThread() const { return m_thread; }

    /// Returns whether stack indices count from the bottom of this scope's call.
    bool isInnermost() const { return m_slot.innermostCallback == this; }

    /// Anchors the values of all views, before another call may change what stack indices mean.
    bool keepViews(std::string& errorText);

    void addView(LuaScriptObjectInterpreterView& view);
    void removeView(LuaScriptObjectInterpreterView& view);

private:
    LuaStateSlot& m_slot;
    lua_State* m_thread;
    lua_State* m_outerThread;
    LuaCallbackScope* m_outer;
    LuaScriptObjectInterpreterView* m_firstView = nullptr; // chained through the views
    bool m_hasUnkeptViews = false;
};

} // namespace tbScripts::lua

#pragma once

#include "core/lua/LuaApi.h"
#include "core/lua/calls/LuaCallbackScope.h"
#include "core/lua/references/LuaScriptObjectInterpreterReference.h"

#include "tbScripts/ScriptObjectInterpreterView.h"

#include <string>

namespace tbScripts::lua
{

/// Shows the value in a stack slot during a callback of the host.
///
/// The index of a slot is valid only while its own call is the innermost one. Before the host calls
/// into the interpreter again, the scope anchors the value in the registry.
class LuaScriptObjectInterpreterView final : public ScriptObjectInterpreterView
{
public:
    /// Creates an empty view.
    LuaScriptObjectInterpreterView();

    ~LuaScriptObjectInterpreterView() override;

    /// Shows the value in stack slot `index` until `scope` is destroyed; 0 leaves the view empty.
    void lend(LuaCallbackScope& scope, FUNCTION_PARAMETER_TYPE type, int index)
    {
        if (m_scope)
            end();
        m_hasOwnRelease = false;
        m_type = type;
        m_index = index;
        m_scope = &scope;
        scope.addView(*this);
    }

    /// The same; references that are created from this view use `release`.
    void lend(
        LuaCallbackScope& scope, FUNCTION_PARAMETER_TYPE type, int index, LuaReleaseAction release);

    /// Empties the view.
    void end();

    /// Returns whether the value belongs to another interpreter than that of `slot`.
    bool isForeignTo(const LuaStateSlot& slot) const;

    /// Stack: +1, the value; +0 and false if the view is empty. `state` is the running coroutine.
    /// Never raises.
    bool pushValue(lua_State* state) const;

    ScriptObjectInterpreterReference* createReference() override;

private:
    friend class LuaCallbackScope; // chains its views

    // Whether the value is anchored, so that the view needs no stack slot any more.
    bool _isKept() const;

    // Anchors the value in the registry.
    bool _keep(std::string& errorText);

    FUNCTION_PARAMETER_TYPE m_type = PARAM_TYPE_VOID;
    int m_index = 0;    // on the stack of the scope's thread
    int m_keptSlot = 0; // in the registry, 0 while the value is only on the stack
    bool m_hasOwnRelease = false;
    LuaReleaseAction m_release;
    LuaCallbackScope* m_scope = nullptr;              // null after the call
    LuaScriptObjectInterpreterView* m_next = nullptr; // in the scope's chain
};

inline void LuaCallbackScope::addView(LuaScriptObjectInterpreterView& view)
{
    view.m_next = m_firstView;
    m_firstView = &view;
    m_hasUnkeptViews = true;
}

inline void LuaCallbackScope::removeView(LuaScriptObjectInterpreterView& view)
{
    LuaScriptObjectInterpreterView** link = &m_firstView;
    while (*link != &view)
        link = &(*link)->m_next;
    *link = view.m_next;
    view.m_next = nullptr;
}

} // namespace tbScripts::lua

#include "core/lua/LuaCallbackScope.h"

#include "core/lua/LuaScriptObjectInterpreterView.h"

namespace tbScripts::lua
{

LuaCallbackScope::LuaCallbackScope(LuaStateSlot& slot, lua_State* thread)
    : m_slot(slot)
    , m_thread(thread)
    , m_outerThread(slot.running)
    , m_outer(slot.innermostCallback)
{
    m_slot.innermostCallback = this;
    if (m_slot.running) // else the state is closing, and stays closed for the host
        m_slot.running = thread;
}

LuaCallbackScope::~LuaCallbackScope()
{
    while (m_firstView)
        m_firstView->end();
    m_slot.innermostCallback = m_outer;
    if (m_slot.running)
        m_slot.running = m_outerThread;
}

bool LuaCallbackScope::keepViews(std::string& errorText)
{
    if (!m_hasUnkeptViews)
        return true;
    m_hasUnkeptViews = false; // first: anchoring may run a finaliser that calls the host
    // From the start each time: that finaliser may have dropped any of the views.
    for (LuaScriptObjectInterpreterView* view = m_firstView; view;)
    {
        if (view->_isKept())
            view = view->m_next;
        else if (view->_keep(errorText))
            view = m_firstView;
        else
            return false;
    }
    return true;
}

void LuaCallbackScope::addView(LuaScriptObjectInterpreterView& view)
{
    view.m_next = m_firstView;
    m_firstView = &view;
    m_hasUnkeptViews = true;
}

void LuaCallbackScope::removeView(LuaScriptObjectInterpreterView& view)
{
    LuaScriptObjectInterpreterView** link = &m_firstView;
    while (*link != &view)
        link = &(*link)->m_next;
    *link = view.m_next;
    view.m_next = nullptr;
}

} // namespace tbScripts::lua

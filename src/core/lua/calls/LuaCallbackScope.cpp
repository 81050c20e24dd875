#include "core/lua/calls/LuaCallbackScope.h"

#include "core/lua/references/LuaScriptObjectInterpreterView.h"

namespace tbScripts::lua
{

void LuaCallbackScope::_endViews()
{
    while (m_firstView)
        m_firstView->end();
}

bool LuaCallbackScope::keepViews(std::string& errorText)
{
    if (!m_hasUnkeptViews)
        return true;
    m_hasUnkeptViews = false; // first: anchoring may run a finaliser that calls the host
    // From the start each time: that finaliser may have destroyed any of the views.
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

} // namespace tbScripts::lua

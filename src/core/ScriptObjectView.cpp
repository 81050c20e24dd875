#include "tbScripts/ScriptObjectView.h"

#include "core/SharedViewRoom.h"

#include <new>
#include <utility>

namespace tbScripts
{

namespace
{

// For views that the caller owns.
void keepAlive(ScriptObjectInterpreterView*) {}

} // namespace

ScriptObjectView::ScriptObjectView()
{
    new (m_room) SharedView();
}

ScriptObjectView::ScriptObjectView(ScriptObjectInterpreterView* view)
{
    new (m_room) SharedView(view, &keepAlive);
}

ScriptObjectView::ScriptObjectView(ScriptObjectInterpreterView* view, Callable<void()> owner)
{
    new (m_room) SharedView(view, [held = std::move(owner)](ScriptObjectInterpreterView*) {});
}

ScriptObjectView::ScriptObjectView(const ScriptObjectView& other)
{
    new (m_room) SharedView(sharedViewIn(other.m_room));
}

ScriptObjectView::ScriptObjectView(ScriptObjectView&& other) noexcept
{
    new (m_room) SharedView(std::move(sharedViewIn(other.m_room)));
}

ScriptObjectView& ScriptObjectView::operator=(const ScriptObjectView& other)
{
    if (this != &other)
        sharedViewIn(m_room) = sharedViewIn(other.m_room);
    return *this;
}

ScriptObjectView& ScriptObjectView::operator=(ScriptObjectView&& other) noexcept
{
    sharedViewIn(m_room) = std::move(sharedViewIn(other.m_room));
    return *this;
}

ScriptObjectView::~ScriptObjectView()
{
    sharedViewIn(m_room).~SharedView();
}

ScriptObjectInterpreterView* ScriptObjectView::getInterpreterView() const
{
    return sharedViewIn(m_room).get();
}

} // namespace tbScripts

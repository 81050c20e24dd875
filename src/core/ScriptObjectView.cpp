#include "tbScripts/ScriptObjectView.h"

#include "tbScripts/ScriptObjectInterpreterView.h"

#include <utility>

namespace tbScripts
{

namespace
{

// For views that the caller owns.
void keepAlive(ScriptObjectInterpreterView*) {}

} // namespace

ScriptObjectView::ScriptObjectView() = default;

ScriptObjectView::ScriptObjectView(ScriptObjectInterpreterView* view)
    : m_view(view, &keepAlive)
{
}

ScriptObjectView::ScriptObjectView(std::shared_ptr<ScriptObjectInterpreterView> view)
    : m_view(std::move(view))
{
}

ScriptObjectView::ScriptObjectView(const ScriptObjectView& other) = default;

ScriptObjectView::ScriptObjectView(ScriptObjectView&& other) noexcept = default;

ScriptObjectView& ScriptObjectView::operator=(const ScriptObjectView& other) = default;

ScriptObjectView& ScriptObjectView::operator=(ScriptObjectView&& other) noexcept = default;

ScriptObjectView::~ScriptObjectView() = default;

ScriptObjectInterpreterView* ScriptObjectView::getInterpreterView() const
{
    return m_view.get();
}

} // namespace tbScripts

#include "tbScripts/ScriptObjectInterpreterView.h"

namespace tbScripts
{

ScriptObjectInterpreterView::ScriptObjectInterpreterView() = default;

ScriptObjectInterpreterView::~ScriptObjectInterpreterView() = default;

} // namespace tbScripts

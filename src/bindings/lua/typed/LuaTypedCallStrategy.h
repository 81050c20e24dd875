#pragma once

#include "tbScripts/ScriptFunction.h"

namespace tbScripts::lua
{

/// Does what `typed::callScript` promises. A function that is not this interpreter's is empty.
bool callTyped(
    const ScriptObjectReference& function,
    const typed::OutgoingCall& outgoing,
    ExecutionResult& result);

} // namespace tbScripts::lua

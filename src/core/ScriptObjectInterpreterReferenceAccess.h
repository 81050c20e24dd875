#pragma once

#include "tbScripts/ScriptObjectInterpreterReference.h"

namespace tbScripts
{

/// Lets a back-end mark the references of its own class, and recognise them later.
struct ScriptObjectInterpreterReferenceAccess
{
    static void setInterpreter(ScriptObjectInterpreterReference& reference, INTERPRETER interpreter)
    {
        reference.m_interpreter = interpreter;
    }

    /// Returns `INTERPRETER_UNKNOWN` for a class of the host.
    static INTERPRETER getInterpreter(const ScriptObjectInterpreterReference& reference)
    {
        return reference.m_interpreter;
    }
};

} // namespace tbScripts

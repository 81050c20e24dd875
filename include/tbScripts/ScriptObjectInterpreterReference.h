#pragma once

#include "tbScripts/Api.h"
#include "tbScripts/FunctionParameterType.h"

namespace tbScripts
{

/// Interpreter side of a `ScriptObjectReference`: keeps one script value alive.
///
/// Each interpreter has its own kind. One of a kind that an environment did not make designates
/// nothing there.
class TBSCRIPTS_API ScriptObjectInterpreterReference
{
public:
    /// Gives the value back to its interpreter.
    virtual ~ScriptObjectInterpreterReference();

    ///@{
    /// Not copyable: each one stands for exactly one anchored value.
    ScriptObjectInterpreterReference(const ScriptObjectInterpreterReference&) = delete;
    ScriptObjectInterpreterReference& operator=(const ScriptObjectInterpreterReference&) = delete;
    ///@}

    /// Returns `PARAM_TYPE_SCRIPT_FUNCTION` or `PARAM_TYPE_SCRIPT_OBJECT`, `PARAM_TYPE_VOID` for
    /// one of unknown kind.
    FUNCTION_PARAMETER_TYPE getType() const;

protected:
    /// Says the kind of the value; `PARAM_TYPE_VOID` for an unknown one.
    explicit ScriptObjectInterpreterReference(FUNCTION_PARAMETER_TYPE type = PARAM_TYPE_VOID);

private:
    FUNCTION_PARAMETER_TYPE m_type;
};

} // namespace tbScripts

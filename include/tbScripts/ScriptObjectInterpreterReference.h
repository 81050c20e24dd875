#pragma once

#include "tbScripts/Api.h"
#include "tbScripts/FunctionParameterType.h"
#include "tbScripts/Interpreter.h"

namespace tbScripts
{

/// Interpreter side of a `ScriptObjectReference`: keeps one script value alive.
///
/// Each interpreter derives its own class. In an environment of another interpreter, a reference
/// designates nothing.
class TBSCRIPTS_API ScriptObjectInterpreterReference
{
public:
    /// Releases the value.
    virtual ~ScriptObjectInterpreterReference();

    ///@{
    /// Not copyable: each object stands for exactly one value that it keeps alive.
    ScriptObjectInterpreterReference(const ScriptObjectInterpreterReference&) = delete;
    ScriptObjectInterpreterReference& operator=(const ScriptObjectInterpreterReference&) = delete;
    ///@}

    /// Returns `PARAM_TYPE_SCRIPT_FUNCTION` or `PARAM_TYPE_SCRIPT_OBJECT`, `PARAM_TYPE_VOID` for
    /// a value of unknown kind.
    FUNCTION_PARAMETER_TYPE getType() const;

protected:
    /// Creates a reference on a value of kind `type`, `PARAM_TYPE_VOID` for an unknown kind.
    explicit ScriptObjectInterpreterReference(FUNCTION_PARAMETER_TYPE type = PARAM_TYPE_VOID);

private:
    friend struct ScriptObjectInterpreterReferenceAccess;

    FUNCTION_PARAMETER_TYPE m_type;

    // Whose class this is: known for the library's own classes only. Asking for the type of the
    // object would not do, because a host may be built without type information.
    INTERPRETER m_interpreter = INTERPRETER_UNKNOWN;
};

} // namespace tbScripts

#pragma once

#include "tbScripts/Api.h"

namespace tbScripts
{

class ScriptObjectInterpreterReference;

/// Interpreter side of a `ScriptObjectView`: knows where a script value sits during a call.
class TBSCRIPTS_API ScriptObjectInterpreterView
{
public:
    virtual ~ScriptObjectInterpreterView();

    ///@{
    /// Not copyable: views are shared, never duplicated.
    ScriptObjectInterpreterView(const ScriptObjectInterpreterView&) = delete;
    ScriptObjectInterpreterView& operator=(const ScriptObjectInterpreterView&) = delete;
    ///@}

    /// Anchors the value and returns its new interpreter reference.
    ///
    /// On failure: null, also when the call that lent the value is over.
    /// Ownership: the caller's.
    virtual ScriptObjectInterpreterReference* createReference() = 0;

protected:
    ScriptObjectInterpreterView();
};

} // namespace tbScripts

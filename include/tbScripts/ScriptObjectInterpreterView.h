#pragma once

#include "tbScripts/Api.h"

namespace tbScripts
{

class ScriptObjectInterpreterReference;

/// Interpreter side of a `ScriptObjectView`: knows where a script value lies during a call.
class TBSCRIPTS_API ScriptObjectInterpreterView
{
public:
    virtual ~ScriptObjectInterpreterView();

    ///@{
    /// Not copyable: handles share a view.
    ScriptObjectInterpreterView(const ScriptObjectInterpreterView&) = delete;
    ScriptObjectInterpreterView& operator=(const ScriptObjectInterpreterView&) = delete;
    ///@}

    /// Creates a reference that keeps the value alive, and returns it.
    ///
    /// On failure: returns null, also after the call that created the view.
    /// Ownership: passes to the caller.
    virtual ScriptObjectInterpreterReference* createReference() = 0;

protected:
    ScriptObjectInterpreterView();
};

} // namespace tbScripts

#pragma once

#include "tbScripts/Api.h"

#include <memory>

namespace tbScripts
{

class ScriptObjectInterpreterView;

/// Borrowed look at a script value that sits on the interpreter's stack during a call.
///
/// Good while the call that lent it runs. Kept longer it looks at nothing, and a reference made
/// from it is empty. Copies look at the same value.
class TBSCRIPTS_API ScriptObjectView
{
public:
    /// Looks at nothing.
    ScriptObjectView();

    /// Looks through `view`, which may be null.
    ///
    /// Ownership: stays the caller's; `view` has to outlive this object and its copies.
    explicit ScriptObjectView(ScriptObjectInterpreterView* view);

    /// Looks through `view`, which may be null, and shares it.
    explicit ScriptObjectView(std::shared_ptr<ScriptObjectInterpreterView> view);

    ///@{
    /// Looks at what `other` looks at; one that was moved from looks at nothing.
    ScriptObjectView(const ScriptObjectView& other);
    ScriptObjectView(ScriptObjectView&& other) noexcept;
    ScriptObjectView& operator=(const ScriptObjectView& other);
    ScriptObjectView& operator=(ScriptObjectView&& other) noexcept;
    ///@}

    ~ScriptObjectView();

    /// Returns the interpreter side, null if this looks at nothing.
    ///
    /// Valid until: the last view that shares it is gone.
    ScriptObjectInterpreterView* getInterpreterView() const;

private:
    std::shared_ptr<ScriptObjectInterpreterView> m_view; // may be null
};

} // namespace tbScripts

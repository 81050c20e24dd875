#pragma once

#include "tbScripts/Api.h"

#include <memory>

namespace tbScripts
{

class ScriptObjectInterpreterView;

/// Borrowed view of a script value on the interpreter's stack.
///
/// A view shows its value during the call that created it. After that call the view is empty, and a
/// reference created from it is empty too. Copies show the same value.
class TBSCRIPTS_API ScriptObjectView
{
public:
    /// Creates an empty view.
    ScriptObjectView();

    /// Creates a view on the value of `view`, which may be null.
    ///
    /// Ownership: the caller's; `view` has to outlive this object and its copies.
    explicit ScriptObjectView(ScriptObjectInterpreterView* view);

    /// Creates a view on the value of `view`, which may be null, and shares `view`.
    explicit ScriptObjectView(std::shared_ptr<ScriptObjectInterpreterView> view);

    ///@{
    /// Shows the value of `other`; a moved-from view is empty.
    ScriptObjectView(const ScriptObjectView& other);
    ScriptObjectView(ScriptObjectView&& other) noexcept;
    ScriptObjectView& operator=(const ScriptObjectView& other);
    ScriptObjectView& operator=(ScriptObjectView&& other) noexcept;
    ///@}

    ~ScriptObjectView();

    /// Returns the interpreter's side of the view, null for an empty view.
    ///
    /// Valid until: the last view that shares it is destroyed.
    ScriptObjectInterpreterView* getInterpreterView() const;

private:
    std::shared_ptr<ScriptObjectInterpreterView> m_view; // may be null
};

} // namespace tbScripts

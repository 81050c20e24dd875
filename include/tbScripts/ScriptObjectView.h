#pragma once

#include "tbScripts/Api.h"
#include "tbScripts/Callable.h"

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

    /// Creates a view on the value of `view`, a `std::shared_ptr` that may be null, and shares
    /// `view`.
    template <typename Shared, typename = decltype(ScriptObjectView(Shared().get(), nullptr))>
    explicit ScriptObjectView(Shared view)
        : ScriptObjectView(view.get(), [view] {})
    {
    }

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
    friend struct ScriptObjectViewAccess; // the library creates views of what it shares

    // Views `view` and holds `owner` as long as copies exist.
    ScriptObjectView(ScriptObjectInterpreterView* view, Callable<void()> owner);

    // A shared pointer of the standard library, which may be null. Its header takes longer to
    // compile than all of ours, and a host has no use for it here.
    alignas(void*) unsigned char m_room[2 * sizeof(void*)];
};

} // namespace tbScripts

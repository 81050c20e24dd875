#pragma once

#include "support/EnvironmentFixture.h"

#include <tbScripts/Namespace.h>
#include <tbScripts/UserType.h>

#include <functional>
#include <memory>

namespace tbScripts::test
{

/// A Lua environment with the empty namespace "a". Counted objects are counted from here on.
class NamespaceFixture : public EnvironmentFixture
{
public:
    /// Returns the namespace "a".
    ///
    /// Valid until: the environment is destroyed.
    Namespace& scope() const;

    /// Has instances of `type` be counted objects, which scripts make and own.
    static void makeCounted(UserType* type);

    /// Binds `function`, which has to be there, to something that returns `answer`.
    static void bindAnswer(Function* function, int answer);

    /// Binds `function`, which has to be there, to a callable that does nothing and captures
    /// `farewell`.
    static void bindHolding(Function* function, std::shared_ptr<const void> farewell);

protected:
    NamespaceFixture();

private:
    Namespace* m_scope;
};

} // namespace tbScripts::test

#pragma once

#include "tbScripts/Namespace.h"
#include "tbScripts/typed/Declarations.h"

namespace tbScripts
{

/// What the typed layer declares in a namespace beside the operations of `Namespace`.
class TypedNamespace
{
public:
    /// Returns the same namespace, null if its interpreter knows nothing of types of the host.
    static TypedNamespace* of(Namespace& scope) { return dynamic_cast<TypedNamespace*>(&scope); }

    /// Fills the namespace with the values of an enumeration. Returns whether that worked.
    virtual bool
    setEnumeration(const typed::TypeId& type, const typed::Enumerator* enumerators, int count) = 0;

protected:
    ~TypedNamespace() = default;
};

} // namespace tbScripts

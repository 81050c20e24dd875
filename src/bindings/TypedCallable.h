#pragma once

#include "core/Counted.h"

#include "tbScripts/typed/Declarations.h"

#include <tbMemory/String.h>

#include <vector>

namespace tbScripts
{

/// A callable that the typed layer has bound, in place of the one that a definition has otherwise.
/// It owns its context. Why: docs/decisions/0035-typed-bindings.md
class TypedCallable : public HolderCount
{
public:
    explicit TypedCallable(const typed::BoundCallable& bound)
        : m_bound(bound)
    {
    }

    ~TypedCallable()
    {
        if (m_bound.destroy)
            m_bound.destroy(m_bound.context);
    }

    static void destroy(TypedCallable* callable) noexcept { delete callable; }

    const typed::Signature& getSignature() const { return *m_bound.signature; }

    void* getContext() const { return m_bound.context; }

    /// What the host says of it, for those who write scripts.
    tbMemory::String documentation;
    std::vector<tbMemory::String> parameterNames;

private:
    typed::BoundCallable m_bound;
};

/// Takes `bound` over; it is destroyed if there is no memory. Returns an empty hold for one without
/// signature.
Counted<TypedCallable> holdTyped(const typed::BoundCallable& bound);

} // namespace tbScripts

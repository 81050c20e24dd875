#pragma once

#include "demo/Vec.h"

#include <memory>
#include <unordered_map>

namespace demo
{

/// The vectors that scripts have created. The interpreters' collectors decide when a vector is
/// destroyed; the store counts the vectors and knows which exist.
///
/// A host could as well write `new` and `delete` where this one calls `make` and `destroy`. But
/// scripts change what they own, with enableGc and disableGc, and they may be wrong. Here a vector
/// that is never destroyed is a number in the summary; destroying a vector twice, or using a
/// destroyed one, does no harm.
class VecStore
{
public:
    /// Ownership: the store's. Valid until: `destroy` is called for it.
    Vec* make(const Vec& value);

    void destroy(void* vec);

    /// Returns null if `vec` is null or was destroyed.
    Vec* find(void* vec) const;

    int countMade() const { return m_made; }

    /// Returns how often `destroy` was called, whether or not there was something to destroy.
    int countDestroyed() const { return m_destroyed; }

    /// Returns how many there are now.
    int countLeft() const { return static_cast<int>(m_vecs.size()); }

private:
    std::unordered_map<void*, std::unique_ptr<Vec>> m_vecs; // by address
    int m_made = 0;
    int m_destroyed = 0;
};

} // namespace demo

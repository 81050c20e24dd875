#pragma once

#include "core/lua/LuaAddressMap.h"

#include <utility>

namespace tbScripts::lua
{

/// The objects that scripts own through the instances of one user type.
///
/// An instance alone is no proof of that: scripts can take the finaliser out of the type's table,
/// and `debug.setmetatable` can make a block of the interpreter's own libraries look like an
/// instance. So an object is destroyed if it is listed here, and only then
/// (docs/decisions/0027-owned-objects-are-listed.md).
class LuaOwnedObjects
{
public:
    /// Makes room for the object of the instance `block`, so that `own` cannot fail.
    void reserve(const void* block) { m_objects.set(block, nullptr); }

    /// Lists `object` as owned by the instance `block`. Allocates nothing.
    ///
    /// Requires: `reserve(block)` was called.
    void own(const void* block, void* object) { m_objects.replace(block, object); }

    /// Removes what is listed for the instance `block`. Returns false if there is nothing.
    /// Allocates nothing.
    bool remove(const void* block) { return m_objects.remove(block); }

    /// Removes everything, and passes each listed object to `destroy`, which may list others.
    template <typename Destroy>
    void drain(Destroy&& destroy)
    {
        while (!m_objects.isEmpty())
        {
            const LuaAddressMap<void> left = std::exchange(m_objects, LuaAddressMap<void>());
            left.forEach(
                [&destroy](void* object)
                {
                    if (object)
                        destroy(object);
                });
        }
    }

private:
    LuaAddressMap<void> m_objects; // by the block of the instance
};

} // namespace tbScripts::lua

#pragma once

#include <cstddef>

namespace tbScripts::test
{

/// Counts calls of `operator new` in the whole process, those of the shared library included, from
/// its making on.
class AllocationCounter
{
public:
    AllocationCounter();

    /// Returns the number of allocations since.
    std::size_t count() const;

private:
    std::size_t m_before;
};

} // namespace tbScripts::test

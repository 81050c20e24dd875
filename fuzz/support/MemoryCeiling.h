#pragma once

#include <cstddef>

namespace tbScripts::fuzz
{

/// A limit of the memory that all interpreters of the process take together.
///
/// A new state is always opened: LuaJIT 2.1.0-beta3 dies if it gets some of the memory for it but
/// not all, which its own allocator never does.
class MemoryCeiling
{
public:
    /// From here on the interpreters get `bytes` more than they have, and no more.
    static void set(std::size_t bytes);

    static void lift();

    /// Returns whether a request was refused since the last `lift`.
    static bool hasRefused();
};

} // namespace tbScripts::fuzz

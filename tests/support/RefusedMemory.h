#pragma once

#include <cstddef>

namespace tbScripts::test
{

/// Memory that the whole process does not get: as long as it lives, `operator new` refuses, that of
/// the shared library included.
///
/// Only an executable of its own can have it, since it replaces the operators.
class RefusedMemory
{
public:
    enum class SPAN
    {
        ONE_REQUEST,
        ALL_FURTHER
    };

    /// Lets `allowed` requests pass and refuses the next one, or it and all that follow.
    RefusedMemory(std::size_t allowed, SPAN span);

    RefusedMemory(const RefusedMemory&) = delete;
    RefusedMemory& operator=(const RefusedMemory&) = delete;

    /// Lets all requests pass.
    ~RefusedMemory();

    /// Returns whether a request was refused so far.
    bool hasRefused() const;

    /// Returns how many blocks the process has not given back yet.
    static std::size_t countLivingBlocks();
};

} // namespace tbScripts::test

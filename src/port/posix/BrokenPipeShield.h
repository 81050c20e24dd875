#pragma once

#include <signal.h>

namespace tbScripts::port
{

/// While it lives, a pipe whose reader goes away fails the write instead of ending the process.
/// Only for this thread: what the host does with the signal elsewhere is its own business.
class BrokenPipeShield
{
public:
    BrokenPipeShield();
    BrokenPipeShield(const BrokenPipeShield&) = delete;
    BrokenPipeShield& operator=(const BrokenPipeShield&) = delete;
    ~BrokenPipeShield();

private:
    sigset_t m_brokenPipe;
    sigset_t m_earlierMask;
    bool m_wasPending = false;
};

} // namespace tbScripts::port

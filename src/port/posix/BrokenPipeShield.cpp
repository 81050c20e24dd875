#include "port/posix/BrokenPipeShield.h"

#include <cerrno>
#include <ctime>

namespace tbScripts::port
{

namespace
{

bool isBrokenPipePending()
{
    sigset_t pending;
    ::sigpending(&pending);
    return sigismember(&pending, SIGPIPE) == 1;
}

// Takes the signal if it waits, and does not wait for one.
#if defined(__APPLE__) // without sigtimedwait; written from the system's manual, never built
void takeBrokenPipe(const sigset_t& brokenPipe)
{
    int taken = 0;
    if (isBrokenPipePending())
        ::sigwait(&brokenPipe, &taken);
}
#else
void takeBrokenPipe(const sigset_t& brokenPipe)
{
    constexpr timespec AT_ONCE{};
    while (::sigtimedwait(&brokenPipe, nullptr, &AT_ONCE) < 0 && errno == EINTR)
    {
    }
}
#endif

} // namespace

BrokenPipeShield::BrokenPipeShield()
{
    sigemptyset(&m_brokenPipe);
    sigaddset(&m_brokenPipe, SIGPIPE);
    m_wasPending = isBrokenPipePending();
    ::pthread_sigmask(SIG_BLOCK, &m_brokenPipe, &m_earlierMask);
}

BrokenPipeShield::~BrokenPipeShield()
{
    if (!m_wasPending) // ours then; one that waited before still waits for the host
        takeBrokenPipe(m_brokenPipe);
    ::pthread_sigmask(SIG_SETMASK, &m_earlierMask, nullptr);
}

} // namespace tbScripts::port

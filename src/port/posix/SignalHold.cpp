#include "port/SignalHold.h"

#include <initializer_list>

namespace tbScripts::port
{

SignalHold::SignalHold()
{
    sigset_t held;
    sigemptyset(&held);
    for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGQUIT})
        sigaddset(&held, number);
    sigprocmask(SIG_BLOCK, &held, &m_before);
}

SignalHold::~SignalHold()
{
    sigprocmask(SIG_SETMASK, &m_before, nullptr);
}

} // namespace tbScripts::port

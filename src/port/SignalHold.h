#pragma once

#if !defined(_WIN32)
    #include <signal.h>
#endif

namespace tbScripts::port
{

/// Defers the signals that end the process, Ctrl-C among them, while it lives: what is written
/// during that time is written whole. The signals arrive afterwards. Holds may nest.
class SignalHold
{
public:
    SignalHold();
    SignalHold(const SignalHold&) = delete;
    SignalHold& operator=(const SignalHold&) = delete;
    ~SignalHold();

private:
#if !defined(_WIN32)
    sigset_t m_before;
#endif
};

} // namespace tbScripts::port

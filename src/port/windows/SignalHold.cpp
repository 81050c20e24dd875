#include "port/SignalHold.h"

#include "port/windows/Windows.h"

#include <mutex>

namespace tbScripts::port
{

namespace
{

// Never destroyed: the system's thread may come late.
std::recursive_mutex& holding()
{
    static auto* const mutex = new std::recursive_mutex;
    return *mutex;
}

// Runs on a thread of the system's own. It waits for the end of the hold, and leaves the rest to
// whoever would have been asked otherwise: by default the process ends.
BOOL WINAPI waitForTheHold(DWORD /*event*/)
{
    const std::lock_guard<std::recursive_mutex> wait(holding());
    return FALSE;
}

} // namespace

SignalHold::SignalHold()
{
    static const BOOL isInstalled = ::SetConsoleCtrlHandler(&waitForTheHold, TRUE);
    static_cast<void>(isInstalled); // without a console nobody sends events
    holding().lock();
}

SignalHold::~SignalHold()
{
    holding().unlock();
}

} // namespace tbScripts::port

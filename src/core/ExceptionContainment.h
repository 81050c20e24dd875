#pragma once

#include "port/ThreadCancellation.h"

namespace tbScripts
{

/// Runs `work` and returns whether it completed. Swallows every exception, and calls `describe`
/// while it handles one; only the exception that ends the thread passes.
///
/// This is the only place that catches everything. It must never stand between the interpreter and
/// a callable of the host: it would swallow script errors, and the script would continue as if
/// nothing had happened.
///
/// Why: docs/decisions/0003-errors-at-the-boundary.md
template <typename Work, typename Describe>
TBSCRIPTS_CATCHES_THREAD_CANCELLATION bool contain(Work&& work, Describe&& describe)
{
    try
    {
        work();
        return true;
    }
    TBSCRIPTS_LET_THREAD_CANCELLATION_PASS
    catch (...)
    {
        describe();
    }
    return false;
}

} // namespace tbScripts

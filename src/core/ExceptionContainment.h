#pragma once

#include <cstddef> // tells which standard library this is

// Some C libraries end a thread by an exception that has to reach its start; libstdc++ gives it a
// name. Swallowing it would abort the process.
#if defined(__GLIBCXX__)
    #include <cxxabi.h>

    #define TBSCRIPTS_LET_THREAD_CANCELLATION_PASS                                                 \
        catch (const abi::__forced_unwind&)                                                        \
        {                                                                                          \
            throw;                                                                                 \
        }
    // What ends a thread is no object: the reference that catches it designates null, which a build
    // with checks would report.
    #define TBSCRIPTS_CATCHES_THREAD_CANCELLATION __attribute__((no_sanitize("null")))
#else
    #define TBSCRIPTS_LET_THREAD_CANCELLATION_PASS
    #define TBSCRIPTS_CATCHES_THREAD_CANCELLATION
#endif

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

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

/// Runs `work` and returns whether it came to its end. Whatever it throws is swallowed, after
/// `describe` was called while it is being handled; only the end of the thread passes.
///
/// This is the only place that catches everything. It must never stand between the interpreter and
/// a callable of the host: it would swallow script errors, and the script would go on as if nothing
/// had happened.
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

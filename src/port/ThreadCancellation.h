#pragma once

#include <cstddef> // tells which standard library this is

// Some C libraries end a thread by an exception that has to reach its start; libstdc++ gives it a
// name. Swallowing it would abort the process.
#if defined(__GLIBCXX__) && !defined(_WIN32)
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

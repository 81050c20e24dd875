#pragma once

// Whether an exception of another runtime, such as an error of the interpreter, can be caught here
// and now. The C++ runtime ends the process if one is caught while an exception of its own is being
// handled.
//
// Why: docs/decisions/0003-errors-at-the-boundary.md

namespace tbScripts::port
{

#if defined(__GNUC__) && !defined(_WIN32)
/// Address at which the C++ runtime stores the exception that this thread is handling; null until
/// `findHandledException` was called. It is found once per thread and read without a call: asking
/// the runtime each time was a noticeable part of setting a global.
    #if defined(__GLIBC__) // which reserves static TLS for libraries that are loaded later
extern __thread void* const* handledException __attribute__((tls_model("initial-exec")));
    #else
extern __thread void* const* handledException;
    #endif

void findHandledException();

inline bool canCatchForeignExceptions()
{
    if (!handledException)
        findHandledException();
    return *handledException == nullptr;
}
#else
// GCC's runtime for Windows passes them by: no handler or destructor of ours sees them. Of other
// compilers nobody has tried it.
constexpr bool canCatchForeignExceptions()
{
    return false;
}
#endif

} // namespace tbScripts::port

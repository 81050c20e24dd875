#pragma once

#include "support/EnvironmentFixture.h"

#include <functional>
#include <ostream>
#include <vector>

namespace tbScripts::test
{

/// Situations from which a host calls the library. What the interpreter raises has to be contained
/// in each of them.
enum class CALL_CONTEXT
{
    TOP_LEVEL,
    HOST_FUNCTION,        // called by a script
    COROUTINE,            // the body of the coroutine is the host function
    CATCH_BLOCK,          // while a C++ exception is handled
    HOST_FUNCTIONS_CATCH, // the same inside of a host function
    UNWINDING,            // in a destructor, while a C++ exception passes
    INSIDE_CATCH_ALL,     // under a `catch (...)` of the host, which must see nothing
    INSIDE_NOEXCEPT       // under a host function that is `noexcept`, called by a script
};

std::ostream& operator<<(std::ostream& stream, CALL_CONTEXT context);

/// Returns all contexts, in the order of the enumeration.
std::vector<CALL_CONTEXT> allCallContexts();

/// An environment whose tests act in the chosen context. Its global `perform` is the host function
/// by which scripts act.
class CallContextFixture : public EnvironmentFixture
{
protected:
    CallContextFixture();

    /// Performs `action` once in `context`.
    void performIn(CALL_CONTEXT context, const std::function<void()>& action);

private:
    std::function<void()> m_action;
};

} // namespace tbScripts::test

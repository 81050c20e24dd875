#pragma once

// Contains what the interpreter throws into calls of the host.
//
// On the platforms we build for, the interpreter raises its errors as exceptions that pass through
// C++ frames and run destructors. A public call therefore only needs a try block around its work,
// which costs nothing until something is raised; a protected call of the interpreter costs about as
// much as all the rest of reading a global.
//
// Two cases need the protected call all the same:
// - The C++ runtime ends the process when an exception that is not its own is caught while one of
//   its own is being handled. Hosts do call us from their catch blocks, so we look that up first.
// - Interpreters that are built without external unwinding raise by a jump, which a try block does
//   not see. Building with TBSCRIPTS_PROTECTED_BOUNDARY makes every call a protected one.
//
// Why: docs/decisions/0003-errors-at-the-boundary.md, 0017-checks-that-a-call-can-skip.md

#include "core/ExceptionContainment.h"
#include "core/lua/LuaApi.h"
#include "core/lua/LuaStateHandle.h"
#include "port/HandledException.h"

#include <cassert>
#include <string>
#include <type_traits>

namespace tbScripts::lua
{

/// Work of a call, in a form that the interpreter can pass to its protected call.
struct ProtectedWork
{
    void (*invoke)(void* work, lua_State* state);
    void* work;
    bool hasThrown;   // a C++ exception with a known message ended the work
    std::string text; // the message of that exception
};

/// The function that the interpreter calls protected: runs the `ProtectedWork` on top of the stack.
int runProtectedWork(lua_State* state);

/// Runs `work` in a protected call, with the topmost `arguments` values as its stack. Returns
/// whether the work completed; if not, the error value is on the stack or `work.text` is set.
bool callProtected(const LuaStateSlot& slot, lua_State* state, int arguments, ProtectedWork& work);

/// Sets `text` to the message of the exception that is being handled and returns whether it has
/// one. The interpreter's own exceptions have none: their error value is on the stack.
bool describeCurrentException(std::string& text);

/// Sets `text` to the message of the error value on top of the stack; to a short one if there is no
/// memory for it. Throws nothing: destructors call this.
void takeErrorText(lua_State* state, std::string& text);

/// Returns whether only a protected call can contain errors at this point.
inline bool needsProtectedCall()
{
#if defined(TBSCRIPTS_PROTECTED_BOUNDARY)
    return true;
#else
    return !port::canCatchForeignExceptions();
#endif
}

/// What work leaves on the stack when it completes.
enum class STACK_AFTER_WORK
{
    ANYTHING,
    AS_BEFORE // without the arguments, if there are some
};

/// Calls `work`, with the height of the stack if `work` has a parameter for it.
template <typename Work, typename GetTop>
void runWork(Work& work, lua_State* state, GetTop&& getTop)
{
    if constexpr (std::is_invocable_v<Work&, lua_State*, int>)
        work(state, getTop());
    else
        work(state);
}

/// Runs `work(state)` and returns whether it completed. If not, `errorText` says why. Restores the
/// stack, less the topmost `arguments` values, which the work consumes.
///
/// `work(state, top)` also gets the height of the stack below the values that it pushes.
///
/// Requires: `work` addresses the stack relative to its top or to that height, and owns nothing
/// that a raised error would leak.
template <STACK_AFTER_WORK stackAfter = STACK_AFTER_WORK::ANYTHING, typename Work>
bool containLuaErrors(
    const LuaStateSlot& slot, lua_State* state, int arguments, Work&& work, std::string& errorText)
{
    const int top = lua_gettop(state) - arguments;
    bool isDone = false;
    bool hasText = false;
    if (needsProtectedCall())
    {
        ProtectedWork carried{
            [](void* carriedWork, lua_State* inner)
            {
                auto& innerWork = *static_cast<std::remove_reference_t<Work>*>(carriedWork);
                runWork(innerWork, inner, [inner] { return lua_gettop(inner); });
            },
            &work,
            false,
            std::string()};
        isDone = callProtected(slot, state, arguments, carried);
        if (carried.hasThrown)
        {
            errorText.swap(carried.text);
            hasText = true;
        }
    }
    else
    {
        isDone = contain(
            [&] { runWork(work, state, [top] { return top; }); },
            [&] { hasText = describeCurrentException(errorText); });
    }
    if (stackAfter == STACK_AFTER_WORK::AS_BEFORE && isDone)
    {
        assert(lua_gettop(state) == top);
        return true;
    }
    if (!isDone && !hasText)
        takeErrorText(state, errorText);
    lua_settop(state, top);
    return isDone;
}

} // namespace tbScripts::lua

#include "core/lua/calls/LuaBoundary.h"

#include "core/lua/LuaErrorText.h"

#include <exception>

namespace tbScripts::lua
{

namespace
{

// The interpreter's message for an exception without message.
constexpr const char* TEXT_OF_UNKNOWN_EXCEPTION = "C++ exception";

// Fills `carried` from an exception of the work; this catches only exceptions with a message; all
// others belong to the interpreter.
void runCarriedWork(ProtectedWork& carried, lua_State* state)
{
    try
    {
        carried.invoke(carried.work, state);
        return;
    }
    catch (const std::string& text)
    {
        carried.text = text;
    }
    catch (const std::exception& exception)
    {
        carried.text = exception.what();
    }
    carried.hasThrown = true;
}

} // namespace

int runProtectedWork(lua_State* state)
{
    ProtectedWork& carried = *static_cast<ProtectedWork*>(lua_touserdata(state, -1));
    lua_pop(state, 1);
    runCarriedWork(carried, state);
    return 0;
}

bool callProtected(const LuaStateSlot& slot, lua_State* state, int arguments, ProtectedWork& work)
{
    // Nothing in these lines allocates, and the stack has room: the interpreter guarantees some for
    // each C function, and every operation restores the stack. So nothing raises before the
    // protected call begins.
    slot.pushTrampoline(state);
    lua_insert(state, -1 - arguments);
    lua_pushlightuserdata(state, &work);
    return lua_pcall(state, arguments + 1, 0, 0) == 0 && !work.hasThrown;
}

bool describeCurrentException(std::string& text)
{
    // Null for an exception of another runtime, which is the interpreter's.
    const std::exception_ptr current = std::current_exception();
    if (!current)
        return false;

    text = TEXT_OF_UNKNOWN_EXCEPTION;
    contain(
        [&]
        {
            try
            {
                std::rethrow_exception(current);
            }
            catch (const std::string& thrown)
            {
                text = thrown;
            }
            catch (const std::exception& exception)
            {
                text = exception.what();
            }
        },
        [] {});
    return true;
}

void takeErrorText(lua_State* state, std::string& text)
{
    constexpr const char* TEXT_WITHOUT_MEMORY =
        "std::bad_alloc"; // so short that it needs no memory either
    if (!contain([&] { text = errorTextAt(state, -1); }, [] {}))
        text = TEXT_WITHOUT_MEMORY;
}

} // namespace tbScripts::lua

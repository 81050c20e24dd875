#include "core/lua/calls/LuaStackRoom.h"

namespace tbScripts::lua
{

const port::StackBounds& LuaStackRoom::getStackOfThread()
{
    thread_local port::StackBounds bounds; // found once for each thread
    if (bounds.isEmpty())
        bounds = port::findStackOfThread();
    return bounds;
}

bool LuaStackRoom::_measureKnown(std::uintptr_t place)
{
    const port::StackBounds& thread = getStackOfThread();
    if (!thread.contains(place))
        return false;
    m_size = thread.highest - thread.lowest;
    m_left = place - thread.lowest;
    return true;
}

void LuaStackRoom::_guess(std::uintptr_t used)
{
    m_isAnotherStack = used >= LEFT_OF_UNKNOWN; // also if the outermost call is below: huge then
    if (!m_isAnotherStack)
        m_left = LEFT_OF_UNKNOWN - used;
}

} // namespace tbScripts::lua

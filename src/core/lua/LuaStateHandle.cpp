#include "core/lua/LuaStateHandle.h"

namespace tbScripts::lua
{

LuaStateHandle LuaStateHandle::open()
{
    LuaStateHandle handle(new LuaStateSlot); // first: a state without handle would leak
    if (!handle.m_slot->open())
        return LuaStateHandle();
    return handle;
}

void LuaStateHandle::close()
{
    const LuaStateHandle keepsSlot(*this); // deferred actions may destroy this handle
    if (m_slot)
        m_slot->close();
}

} // namespace tbScripts::lua

#include "core/lua/references/LuaRegistry.h"

#include "core/lua/calls/LuaBoundary.h"

#include <string>

namespace tbScripts::lua
{

bool freeRegistrySlot(LuaStateSlot& slot, int key, std::string& errorText)
{
    lua_State* const thread = slot.getRunning();
    if (!thread || key <= 0)
        return true;
    // Contained because the stack may be full, although this allocates nothing.
    return containLuaErrors<STACK_AFTER_WORK::AS_BEFORE>(
        slot,
        thread,
        0,
        [&slot, key](lua_State* state) { giveRegistrySlotBack(slot, state, key); },
        errorText);
}

void freeRegistrySlot(LuaStateSlot& slot, int key)
{
    std::string ignored;
    freeRegistrySlot(slot, key, ignored);
}

} // namespace tbScripts::lua

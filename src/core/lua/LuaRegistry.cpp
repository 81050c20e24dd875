#include "core/lua/LuaRegistry.h"

#include "core/lua/LuaBoundary.h"

#include <string>

namespace tbScripts::lua
{

void freeRegistrySlot(LuaStateSlot& slot, int key)
{
    if (!slot.running || key <= 0)
        return;
    // Contained although it allocates nothing: the stack may be full.
    std::string ignored;
    containLuaErrors(
        slot,
        slot.running,
        0,
        [&slot, key](lua_State* state) { giveRegistrySlotBack(slot, state, key); },
        ignored);
}

} // namespace tbScripts::lua

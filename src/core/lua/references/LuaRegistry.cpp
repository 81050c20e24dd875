#include "core/lua/references/LuaRegistry.h"

#include "core/ExceptionContainment.h"
#include "core/lua/calls/LuaBoundary.h"

#include <string>

namespace tbScripts::lua
{

namespace
{

// Whoever releases a reference inside a leaf does so without wanting anything from the interpreter.
// Without memory the registry keeps the value.
bool deferRelease(LuaStateSlot& slot, int key)
{
    contain([&slot, key] { slot.defer([&slot, key] { freeRegistrySlot(slot, key); }); }, [] {});
    return true;
}

} // namespace

bool freeRegistrySlot(LuaStateSlot& slot, int key, std::string& errorText)
{
    lua_State* const thread = slot.getRunning();
    if (!thread || key <= 0)
        return true;
    if (slot.isInLeaf())
        return deferRelease(slot, key);
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

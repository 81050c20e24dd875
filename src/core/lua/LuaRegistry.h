#pragma once

#include "core/lua/LuaStateHandle.h"

namespace tbScripts::lua
{

/// Frees registry slot `key`, unless the state is closed. Slots that were never taken are ignored.
void freeRegistrySlot(const LuaStateSlot& slot, int key);

} // namespace tbScripts::lua

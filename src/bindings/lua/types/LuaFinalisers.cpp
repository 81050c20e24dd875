#include "bindings/lua/types/LuaFinalisers.h"

#include "bindings/lua/types/LuaTypeTable.h"
#include "core/lua/calls/LuaHostCall.h"

namespace tbScripts::lua
{

void restoreFinalisers(LuaHostCall& call)
{
    if (!call.getState())
        return; // refused; the work that follows says why
    call.run([&call](lua_State* state) { LuaTypeTable::restoreFinalisers(call.getSlot(), state); });
}

} // namespace tbScripts::lua

#include "bindings/lua/leaves/LuaCompiledLeaf.h"

#include "core/lua/references/LuaRegistry.h"

namespace tbScripts::lua
{

std::unique_ptr<LuaCompiledLeaf>
LuaCompiledLeaf::push(const LuaStateHandle& handle, lua_State* state)
{
    std::unique_ptr<LuaCompiledLeaf> made(new LuaCompiledLeaf(handle));
    auto* const word = static_cast<const void**>(lua_newuserdata(state, sizeof(void*)));
    *word = nullptr;
    lua_pushvalue(state, -1);
    made->m_key = takeRegistrySlot(*handle.getSlot(), state);
    made->m_word = word;
    return made;
}

LuaCompiledLeaf::~LuaCompiledLeaf()
{
    // While the state closes, finalisers may still call the leaf; afterwards there is no word.
    if (m_word && m_handle.hasMemory())
        *m_word = nullptr;
    if (LuaStateSlot* const slot = m_handle.getSlot())
        freeRegistrySlot(*slot, m_key);
}

} // namespace tbScripts::lua

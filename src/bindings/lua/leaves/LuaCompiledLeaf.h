#pragma once

// The word that says whether the leaf of a binding may be called. The definition of the callable
// has the object, so that whatever replaces the callable ends the leaf.
//
// Each leaf has a word of its own: scripts may have kept the functions around earlier ones, which
// must not come to life again with a later one.
//
// Why: docs/decisions/0034-compiled-leaves.md

#include "bindings/CompiledLeaf.h"
#include "core/lua/LuaApi.h"
#include "core/lua/LuaStateHandle.h"

#include <memory>

namespace tbScripts::lua
{

class LuaCompiledLeaf final : public CompiledLeaf
{
public:
    /// Stack: +1, the block with the word, which is null until `begin`. The C function inside the
    /// leaf keeps the block too. May raise.
    static std::unique_ptr<LuaCompiledLeaf> push(const LuaStateHandle& handle, lua_State* state);

    ~LuaCompiledLeaf() override;

    const void* const* getWord() const { return m_word; }

    /// From here on the leaf may be called.
    void begin() { *m_word = m_word; }

private:
    explicit LuaCompiledLeaf(const LuaStateHandle& handle)
        : m_handle(handle)
    {
    }

    LuaStateHandle m_handle;
    const void** m_word = nullptr; // exists as long as m_key keeps its block alive
    int m_key = LUA_NOREF;         // registry slot of the block
};

} // namespace tbScripts::lua

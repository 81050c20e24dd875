#pragma once

#include "scripts/ScriptStrategy.h"
#include "scripts/lua/LuaBytecode.h"

#include <cstdint>
#include <memory>

namespace tbScripts::lua
{

/// Compiles Lua sources to bytecode, in a private state of its own for each compilation.
class LuaScriptStrategy final : public ScriptStrategy
{
public:
    using ScriptStrategy::ScriptStrategy;

    bool load(tbMemory::StringView sources) override;
    void unload() override;

    /// Returns the compiled chunk, null if there is none. Shared, so that a run keeps it while the
    /// script is loaded anew or destroyed.
    std::shared_ptr<const LuaBytecode> getBytecode() const;

private:
    bool _fail(std::uint32_t errorCode, const tbMemory::StringView& reason);

    static std::uint64_t _nextNumber();

    const std::uint64_t m_number = _nextNumber(); // of this script alone, in the whole process
    std::shared_ptr<const LuaBytecode> m_bytecode;
};

} // namespace tbScripts::lua

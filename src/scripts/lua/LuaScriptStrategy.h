#pragma once

#include "scripts/ScriptStrategy.h"
#include "scripts/lua/LuaBytecode.h"

#include <cstdint>
#include <memory>

namespace tbScripts::lua
{

/// Compiles Lua sources to bytecode, with a private state for each compilation.
class LuaScriptStrategy final : public ScriptStrategy
{
public:
    using ScriptStrategy::ScriptStrategy;

    bool load(tbMemory::StringView sources) override;
    void unload() override;

    /// Returns the compiled chunk, null if there is none. A run shares the chunk, and so finishes
    /// while the script is loaded again or destroyed.
    std::shared_ptr<const LuaBytecode> getBytecode() const;

private:
    bool _fail(std::uint32_t errorCode, const tbMemory::StringView& reason);

    static std::uint64_t _nextNumber();

    const std::uint64_t m_number = _nextNumber(); // unique in the process
    std::shared_ptr<const LuaBytecode> m_bytecode;
};

} // namespace tbScripts::lua

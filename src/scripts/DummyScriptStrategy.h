#pragma once

#include "scripts/ScriptStrategy.h"

namespace tbScripts
{

/// Refuses to compile: what a script has while no interpreter is chosen.
class DummyScriptStrategy final : public ScriptStrategy
{
public:
    using ScriptStrategy::ScriptStrategy;

    bool load(tbMemory::StringView sources) override;
    void unload() override;
};

} // namespace tbScripts

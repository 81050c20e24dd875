#pragma once

#include "scripts/ScriptStrategy.h"

namespace tbScripts
{

/// Strategy of a script without interpreter: refuses to compile.
class DummyScriptStrategy final : public ScriptStrategy
{
public:
    using ScriptStrategy::ScriptStrategy;

    bool load(tbMemory::StringView sources) override;
    void unload() override;
};

} // namespace tbScripts

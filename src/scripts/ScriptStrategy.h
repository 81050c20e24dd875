#pragma once

#include "tbScripts/CompilationResult.h"

#include <tbMemory/String.h>
#include <tbMemory/StringView.h>

#include <memory>

namespace tbScripts
{

/// Compiler of a script for one interpreter, and its last result.
///
/// Copies of a script share the strategy. The strategy knows only the name of the script that it
/// was created for, and shares it: so it may outlive the script, and then reports with the last
/// name.
class ScriptStrategy
{
public:
    explicit ScriptStrategy(std::shared_ptr<const tbMemory::String> scriptName);

    ScriptStrategy(const ScriptStrategy&) = delete;
    ScriptStrategy& operator=(const ScriptStrategy&) = delete;

    virtual ~ScriptStrategy();

    /// Compiles `sources` up to their first NUL, and replaces the compiled form. Returns the
    /// success flag of the new result.
    virtual bool load(tbMemory::StringView sources) = 0;

    /// Drops the compiled form; the last result stays.
    virtual void unload() = 0;

    const CompilationResult& getLastCompilationResult() const;

protected:
    tbMemory::StringView getScriptName() const;

    CompilationResult m_lastCompilationResult;

private:
    std::shared_ptr<const tbMemory::String> m_scriptName;
};

} // namespace tbScripts

#pragma once

#include "tbScripts/CompilationResult.h"

#include <tbMemory/String.h>
#include <tbMemory/StringView.h>

#include <memory>

namespace tbScripts
{

/// Compiler of a script for one interpreter, and its last result.
///
/// Copies of a script share it. It knows the script that it was made for by that one's name alone,
/// which it shares: so it may outlive the script, and then reports with the last name.
class ScriptStrategy
{
public:
    explicit ScriptStrategy(std::shared_ptr<const tbMemory::String> scriptName);

    ScriptStrategy(const ScriptStrategy&) = delete;
    ScriptStrategy& operator=(const ScriptStrategy&) = delete;

    virtual ~ScriptStrategy();

    /// Compiles `sources`, up to their first NUL, in place of what was compiled before. Returns the
    /// success flag of the result that it sets.
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

#include "scripts/ScriptStrategy.h"

#include <utility>

namespace tbScripts
{

ScriptStrategy::ScriptStrategy(std::shared_ptr<const tbMemory::String> scriptName)
    : m_scriptName(std::move(scriptName))
{
}

ScriptStrategy::~ScriptStrategy() = default;

const CompilationResult& ScriptStrategy::getLastCompilationResult() const
{
    return m_lastCompilationResult;
}

tbMemory::StringView ScriptStrategy::getScriptName() const
{
    return *m_scriptName;
}

} // namespace tbScripts

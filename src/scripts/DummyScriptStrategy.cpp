#include "scripts/DummyScriptStrategy.h"

#include "scripts/ScriptMessages.h"

namespace tbScripts
{

bool DummyScriptStrategy::load(tbMemory::StringView /*sources*/)
{
    m_lastCompilationResult = CompilationResult();
    m_lastCompilationResult.message = messages::SCRIPT_WITHOUT_INTERPRETER;
    m_lastCompilationResult.errorCode = COMPILATION_NO_INTERPRETER;
    m_lastCompilationResult.success = false;
    return false;
}

void DummyScriptStrategy::unload() {}

} // namespace tbScripts

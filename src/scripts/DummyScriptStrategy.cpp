#include "scripts/DummyScriptStrategy.h"

#include "scripts/ScriptMessages.h"

namespace tbScripts
{

namespace
{

constexpr std::uint32_t CODE_NO_INTERPRETER = 2;

} // namespace

bool DummyScriptStrategy::load(tbMemory::StringView /*sources*/)
{
    m_lastCompilationResult = CompilationResult();
    m_lastCompilationResult.message = messages::SCRIPT_WITHOUT_INTERPRETER;
    m_lastCompilationResult.errorCode = CODE_NO_INTERPRETER;
    m_lastCompilationResult.success = false;
    return false;
}

void DummyScriptStrategy::unload() {}

} // namespace tbScripts

#include "tbScripts/Script.h"

#include "core/LogSources.h"
#include "scripts/DummyScriptStrategy.h"
#include "scripts/ScriptMessages.h"
#include "scripts/ScriptState.h"
#include "scripts/lua/LuaScriptStrategy.h"

#include "tbScripts/LogManager.h"

namespace tbScripts
{

Script::Script()
    : m_state(nullptr)
{
    const auto name = std::make_shared<tbMemory::String>();
    m_state = new ScriptState{name, {}, std::make_shared<DummyScriptStrategy>(name)};
}

Script::Script(const Script& other)
    : tbExport::Exportable(other)
    , m_state(nullptr)
{
    const ScriptState& source = *other.m_state;
    const auto name = std::make_shared<tbMemory::String>(*source.name);
    m_state = new ScriptState{name, source.sources, source.strategy, source.targetInterpreter};
}

Script& Script::operator=(const Script& other)
{
    if (this == &other)
        return *this;
    const ScriptState& source = *other.m_state;
    *m_state->name = *source.name;
    m_state->sources = source.sources;
    m_state->strategy = source.strategy;
    m_state->targetInterpreter = source.targetInterpreter;
    return *this;
}

Script::~Script()
{
    delete m_state;
}

INTERPRETER Script::getTargetInterpreter() const
{
    return m_state->targetInterpreter;
}

void Script::setTargetInterpreter(INTERPRETER interpreter)
{
    if (interpreter == INTERPRETER_LUA)
    {
        m_state->strategy = std::make_shared<lua::LuaScriptStrategy>(m_state->name);
        m_state->targetInterpreter = INTERPRETER_LUA;
        return;
    }
    // Compatibility: the stored value does not change; only the strategy disables the script
    // (decision 0006).
    m_state->strategy = std::make_shared<DummyScriptStrategy>(m_state->name);
    LogManager::getInstance()->log(messages::SCRIPT_TYPE_UNKNOWN, LOG_SOURCE_SCRIPT);
}

tbMemory::StringView Script::getName() const
{
    return *m_state->name;
}

void Script::setName(const tbMemory::StringView& name)
{
    *m_state->name = name;
}

tbMemory::StringView Script::getSources() const
{
    return m_state->sources;
}

void Script::setSources(const tbMemory::StringView& sources)
{
    m_state->sources = sources;
}

bool Script::load()
{
    // Held and copied: the log receiver may change this script while it receives a failure.
    const std::shared_ptr<ScriptStrategy> strategy = m_state->strategy;
    return strategy->load(m_state->sources);
}

void Script::unload()
{
    m_state->strategy->unload();
}

const CompilationResult& Script::getLastCompilationResult() const
{
    return m_state->strategy->getLastCompilationResult();
}

ScriptStrategy* Script::_getStrategy() const
{
    return m_state->strategy.get();
}

} // namespace tbScripts

#include "tbScripts/Script.h"

#include "core/LogSources.h"
#include "scripts/DummyScriptStrategy.h"
#include "scripts/ScriptMessages.h"
#include "scripts/lua/LuaScriptStrategy.h"

#include "tbScripts/LogManager.h"

namespace tbScripts
{

Script::Script()
    : m_name(std::make_shared<tbMemory::String>())
    , m_strategy(std::make_shared<DummyScriptStrategy>(m_name))
    , m_targetInterpreter(INTERPRETER_UNKNOWN)
{
}

Script::Script(const Script& other)
    : tbExport::Exportable(other)
    , m_name(std::make_shared<tbMemory::String>(*other.m_name))
    , m_sources(other.m_sources)
    , m_strategy(other.m_strategy)
    , m_targetInterpreter(other.m_targetInterpreter)
{
}

Script& Script::operator=(const Script& other)
{
    if (this == &other)
        return *this;
    *m_name = *other.m_name;
    m_sources = other.m_sources;
    m_strategy = other.m_strategy;
    m_targetInterpreter = other.m_targetInterpreter;
    return *this;
}

Script::~Script() = default;

INTERPRETER Script::getTargetInterpreter() const
{
    return m_targetInterpreter;
}

void Script::setTargetInterpreter(INTERPRETER interpreter)
{
    if (interpreter == INTERPRETER_LUA)
    {
        m_strategy = std::make_shared<lua::LuaScriptStrategy>(m_name);
        m_targetInterpreter = INTERPRETER_LUA;
        return;
    }
    // Compatibility: the stored value does not change; only the strategy disables the script
    // (decision 0006).
    m_strategy = std::make_shared<DummyScriptStrategy>(m_name);
    LogManager::getInstance()->log(messages::SCRIPT_TYPE_UNKNOWN, LOG_SOURCE_SCRIPT);
}

tbMemory::StringView Script::getName() const
{
    return *m_name;
}

void Script::setName(const tbMemory::StringView& name)
{
    *m_name = name;
}

tbMemory::StringView Script::getSources() const
{
    return m_sources;
}

void Script::setSources(const tbMemory::StringView& sources)
{
    m_sources = sources;
}

bool Script::load()
{
    // Held and copied: the log receiver may change this script while it receives a failure.
    const std::shared_ptr<ScriptStrategy> strategy = m_strategy;
    return strategy->load(m_sources);
}

void Script::unload()
{
    m_strategy->unload();
}

const CompilationResult& Script::getLastCompilationResult() const
{
    return m_strategy->getLastCompilationResult();
}

ScriptStrategy* Script::_getStrategy() const
{
    return m_strategy.get();
}

} // namespace tbScripts

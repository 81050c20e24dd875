#include "tbScripts/Environment.h"

#include "core/LogSources.h"
#include "environments/DummyEnvironmentStrategy.h"
#include "environments/EnvironmentBindings.h"
#include "environments/EnvironmentMessages.h"
#include "environments/EnvironmentStrategy.h"
#include "environments/lua/LuaEnvironmentStrategy.h"

#include "tbScripts/LogManager.h"

#include <new>
#include <utility>

namespace tbScripts
{

namespace
{

// Returns null if there is no memory, of whichever kind, for an interpreter.
std::shared_ptr<EnvironmentStrategy> startLua(const EnvironmentStrategy::Name& environmentName)
{
    try
    {
        auto strategy = std::make_shared<lua::LuaEnvironmentStrategy>(environmentName);
        if (strategy->hasState())
            return strategy;
    }
    catch (const std::bad_alloc&)
    {
    }
    return nullptr;
}

// Gives up a share without letting go of what it shares.
template <typename T>
void keepForGood(std::shared_ptr<T> share)
{
    alignas(std::shared_ptr<T>) unsigned char storage[sizeof(share)];
    new (storage) std::shared_ptr<T>(std::move(share));
}

} // namespace

Environment::Environment()
    : m_name(std::make_shared<tbMemory::String>())
    , m_bindings(std::make_shared<EnvironmentBindings>())
    , m_strategy(std::make_shared<DummyEnvironmentStrategy>(m_name))
    , m_interpreter(INTERPRETER_UNKNOWN)
    , m_life(std::make_shared<const char>())
{
    m_strategy->addResult(m_result);
}

Environment::Environment(const Environment& other)
    : Environment()
{
    *m_name = *other.m_name;
    if (!other.m_bindings)
        return; // that one is just being torn down: there is nothing left to share
    m_functions = other.m_functions;
    m_userTypes = other.m_userTypes;
    m_namespaces = other.m_namespaces;
    m_bindings = other.m_bindings;
    if (other.m_strategy->isTearingDown())
        return; // an interpreter that is closing is not shared
    m_strategy = other.m_strategy;
    m_interpreter = other.m_interpreter;
    m_strategy->addResult(m_result);
}

Environment& Environment::operator=(const Environment& other)
{
    if (this == &other)
        return *this;
    Environment source(other); // finalisers of what this one gives up may reach `other`
    if (m_bindings == source.m_bindings && m_strategy == source.m_strategy)
        m_strategy->removeResult(m_result);
    else if (!_dispose())
        return *this;
    // Only taken over from here on, which needs no memory: this one has nothing left to keep.
    std::swap(*m_name, *source.m_name);
    m_functions.swap(source.m_functions);
    m_userTypes.swap(source.m_userTypes);
    m_namespaces.swap(source.m_namespaces);
    m_bindings = std::move(source.m_bindings);
    m_strategy = source.m_strategy;
    m_interpreter = source.m_interpreter;
    m_strategy->removeResult(source.m_result); // its place is free for the next
    m_strategy->addResult(m_result);
    return *this;
}

Environment::~Environment()
{
    _dispose();
}

tbMemory::StringView Environment::getName() const
{
    return *m_name;
}

void Environment::setName(const tbMemory::StringView& name)
{
    *m_name = name;
}

const ExecutionResult& Environment::getLastExecutionResult() const
{
    return m_result;
}

void Environment::setEnvironmentFor(INTERPRETER interpreter)
{
    if (m_strategy->isRunning())
    {
        LogManager::getInstance()->log(
            messages::environmentIsRunning(*m_name), LOG_SOURCE_ENVIRONMENT);
        return;
    }
    if (m_strategy->isTearingDown())
        return; // this environment is going: nothing can be set any more
    // Made while the old one is still there: without memory for it nothing has changed.
    auto dummy = std::make_shared<DummyEnvironmentStrategy>(m_name);
    if (!_endStrategy())
        return;

    if (interpreter == INTERPRETER_LUA)
    {
        if (std::shared_ptr<EnvironmentStrategy> strategy = startLua(m_name))
        {
            _startStrategy(std::move(strategy), INTERPRETER_LUA);
            return;
        }
    }
    _startStrategy(std::move(dummy), INTERPRETER_UNKNOWN);
    LogManager::getInstance()->log(
        interpreter == INTERPRETER_LUA ? messages::NO_MEMORY_FOR_STATE
                                       : messages::ENVIRONMENT_TYPE_UNKNOWN,
        LOG_SOURCE_ENVIRONMENT);
}

bool Environment::execute(const Script& script)
{
    return m_strategy->execute(script);
}

void Environment::requestGarbageCollection()
{
    m_strategy->requestGarbageCollection();
}

void Environment::setVar(const tbMemory::StringView& name, bool value)
{
    m_strategy->setVarBool(name, value);
}

void Environment::setVar(const tbMemory::StringView& name, int value)
{
    m_strategy->setVarInt(name, value);
}

void Environment::setVar(const tbMemory::StringView& name, float value)
{
    m_strategy->setVarFloat(name, value);
}

void Environment::setVar(const tbMemory::StringView& name, double value)
{
    m_strategy->setVarDouble(name, value);
}

void Environment::setVar(const tbMemory::StringView& name, const char* value)
{
    m_strategy->setVarString(name, value);
}

void Environment::setVar(const tbMemory::StringView& name, const tbMemory::StringView& value)
{
    m_strategy->setVarString(name, value);
}

void Environment::setVar(const tbMemory::StringView& name, const ScriptObjectReference& value)
{
    m_strategy->setVarObjectReference(name, value);
}

void Environment::setObject(
    const tbMemory::StringView& name, const tbMemory::StringView& userTypeName, void* object)
{
    m_strategy->setObject(name, userTypeName, object);
}

bool Environment::isVarSet(const tbMemory::StringView& name) const
{
    return m_strategy->isVarSet(name);
}

bool Environment::getVar(const tbMemory::StringView& name, bool defaultValue) const
{
    return m_strategy->getVarBool(name, defaultValue);
}

int Environment::getVar(const tbMemory::StringView& name, int defaultValue) const
{
    return m_strategy->getVarInt(name, defaultValue);
}

float Environment::getVar(const tbMemory::StringView& name, float defaultValue) const
{
    return m_strategy->getVarFloat(name, defaultValue);
}

double Environment::getVar(const tbMemory::StringView& name, double defaultValue) const
{
    return m_strategy->getVarDouble(name, defaultValue);
}

tbMemory::StringView
Environment::getVar(const tbMemory::StringView& name, const char* defaultValue) const
{
    return m_strategy->getVarString(name, defaultValue);
}

tbMemory::StringView Environment::getVar(
    const tbMemory::StringView& name, const tbMemory::StringView& defaultValue) const
{
    return m_strategy->getVarString(name, defaultValue);
}

ScriptObjectReference Environment::getVar(const tbMemory::StringView& name) const
{
    return m_strategy->getVarObjectReference(name);
}

void* Environment::getObject(
    const tbMemory::StringView& name, const tbMemory::StringView& userTypeName) const
{
    return m_strategy->getObject(name, userTypeName);
}

ScriptObjectReference Environment::getScriptFunction(const tbMemory::StringView& name) const
{
    return m_strategy->getScriptFunction(name);
}

bool Environment::callScriptFunction(
    const ScriptObjectReference& function,
    const tbMemory::BufferView<FunctionParameter>& inputs,
    tbMemory::BufferView<FunctionParameter>& outputs)
{
    return m_strategy->callScriptFunction(function, inputs, outputs);
}

tbMemory::Buffer
Environment::serializeScriptObject(const ScriptObjectReference& object, bool transferOwnership)
{
    return m_strategy->serializeScriptObject(object, transferOwnership);
}

ScriptObjectReference
Environment::deserializeScriptObject(const tbMemory::BufferView<unsigned char>& bytes)
{
    return m_strategy->deserializeScriptObject(bytes);
}

void Environment::_startStrategy(
    std::shared_ptr<EnvironmentStrategy> strategy, INTERPRETER interpreter)
{
    m_strategy->removeResult(m_result);
    m_strategy = std::move(strategy);
    m_interpreter = interpreter;
    m_strategy->addResult(m_result);
}

bool Environment::_dispose()
{
    const std::weak_ptr<const char> life = m_life;
    while (m_bindings) // again if what runs meanwhile assigns to this environment
    {
        _disposeOnce();
        if (life.expired())
            return false;
    }
    return true;
}

void Environment::_disposeOnce()
{
    m_strategy->removeResult(m_result);
    // Objects leave their registry before they go: what is asked for meanwhile is not found.
    m_functions.clear();
    m_userTypes.clear();
    m_namespaces.clear();
    std::shared_ptr<EnvironmentBindings> bindings = std::move(m_bindings);

    // The strategy stays in its place: finalisers that call this environment find one that refuses.
    // Held beside that, because they may destroy this environment.
    const bool isLastOfStrategy = m_strategy.use_count() == 1;
    const std::shared_ptr<EnvironmentStrategy> strategy = m_strategy;
    if (!strategy->isRunning())
    {
        releaseShares(*strategy, isLastOfStrategy, std::move(bindings));
        return;
    }
    try
    {
        strategy->putOff(
            [held = strategy, bindings]() mutable
            {
                releaseShares(*held, held.use_count() == 1, std::move(bindings));
                held.reset();
            });
    }
    catch (const std::bad_alloc&)
    {
        // Nothing of it may go while it runs, and there is nowhere to note that it should.
        keepForGood(strategy);
        keepForGood(std::move(bindings));
    }
}

bool Environment::_endStrategy()
{
    if (m_strategy.use_count() > 1)
        return true; // a copy goes on with it
    // Held: a finaliser may destroy this environment, which then happens at the end of the
    // interpreter.
    const std::shared_ptr<EnvironmentStrategy> strategy = m_strategy;
    const std::weak_ptr<const char> life = m_life;
    strategy->shutDown();
    return !life.expired();
}

} // namespace tbScripts

// How the core of an environment shares interpreter and bindings with copies, and when it releases
// them.

#include "environments/EnvironmentCore.h"

#include "core/LogSources.h"
#include "environments/DummyEnvironmentStrategy.h"
#include "environments/EnvironmentBindings.h"
#include "environments/EnvironmentMessages.h"
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

// Drops a share without ever destroying the shared object.
template <typename T>
void keepForGood(std::shared_ptr<T> share)
{
    alignas(std::shared_ptr<T>) unsigned char storage[sizeof(share)];
    new (storage) std::shared_ptr<T>(std::move(share));
}

} // namespace

EnvironmentCore::EnvironmentCore()
    : m_name(std::make_shared<tbMemory::String>())
    , m_bindings(std::make_shared<EnvironmentBindings>())
    , m_strategy(std::make_shared<DummyEnvironmentStrategy>(m_name))
{
    m_strategy->addUser();
    m_strategy->addResult(m_result);
}

EnvironmentCore::EnvironmentCore(const EnvironmentCore& other)
    : EnvironmentCore() // a count of its own
{
    *m_name = *other.m_name;
    if (!other.m_bindings)
        return; // `other` is being torn down: there is nothing left to share
    m_registries = other.m_registries;
    m_bindings = other.m_bindings;
    if (!other.m_strategy->isTearingDown()) // a closing interpreter is not shared
        _startStrategy(other.m_strategy);
}

EnvironmentCore::~EnvironmentCore()
{
    _giveUp();
}

void EnvironmentCore::assign(const EnvironmentCore& other)
{
    EnvironmentCore source(other); // finalisers that run below may change `other`
    if (m_bindings == source.m_bindings && m_strategy == source.m_strategy)
    {
        m_strategy->removeResult(m_result);
        m_strategy->removeUser();
    }
    else
    {
        _giveUp();
    }
    if (m_hasEnded)
        return; // a finaliser has destroyed this environment
    // From here on shares are only moved, which needs no memory: this core has none left.
    std::swap(*m_name, *source.m_name);
    m_registries.swap(source.m_registries);
    m_bindings = std::move(source.m_bindings);
    m_strategy = source.m_strategy; // which counts this core in place of `source` from here on
    m_strategy->removeResult(source.m_result); // its place is free for the next result
    m_strategy->addResult(m_result);
}

void EnvironmentCore::end()
{
    m_hasEnded = true;
    _giveUp();
}

void EnvironmentCore::switchInterpreter(INTERPRETER interpreter)
{
    if (m_strategy->isRunning())
    {
        LogManager::getInstance()->log(
            messages::environmentIsRunning(*m_name), LOG_SOURCE_ENVIRONMENT);
        return;
    }
    if (m_strategy->isTearingDown())
        return; // this environment is being destroyed: nothing can be set any more
    // Created before the old one is destroyed: if there is no memory, nothing has changed.
    auto dummy = std::make_shared<DummyEnvironmentStrategy>(m_name);
    const std::size_t serializationLimit = m_strategy->getSerializationLimit();
    dummy->setSerializationLimit(serializationLimit);
    if (!m_strategy->isShared()) // else a copy still uses it
    {
        const std::shared_ptr<EnvironmentStrategy> ended = m_strategy;
        ended->shutDown();
    }
    if (m_hasEnded)
        return; // a finaliser has destroyed this environment

    if (interpreter == INTERPRETER_LUA)
    {
        if (std::shared_ptr<EnvironmentStrategy> strategy = startLua(m_name))
        {
            strategy->setSerializationLimit(serializationLimit);
            _startStrategy(std::move(strategy));
            return;
        }
    }
    _startStrategy(std::move(dummy));
    LogManager::getInstance()->log(
        interpreter == INTERPRETER_LUA ? messages::NO_MEMORY_FOR_STATE
                                       : messages::ENVIRONMENT_TYPE_UNKNOWN,
        LOG_SOURCE_ENVIRONMENT);
}

void EnvironmentCore::_startStrategy(std::shared_ptr<EnvironmentStrategy> strategy)
{
    m_strategy->removeResult(m_result);
    m_strategy->removeUser();
    m_strategy = std::move(strategy);
    m_strategy->addUser();
    m_strategy->addResult(m_result);
}

void EnvironmentCore::_giveUp()
{
    while (m_bindings) // again if a finaliser assigns to this environment
        _giveUpOnce();
}

void EnvironmentCore::_giveUpOnce()
{
    m_strategy->removeResult(m_result);
    // The registries first: a finaliser that looks for a binding finds none.
    m_registries = {};
    std::shared_ptr<EnvironmentBindings> bindings = std::move(m_bindings);

    // The strategy stays in its place: finalisers that call this environment find one that refuses.
    const std::shared_ptr<EnvironmentStrategy> strategy = m_strategy;
    if (!strategy->isRunning())
    {
        strategy->removeUser();
        releaseShares(*strategy, std::move(bindings));
        return;
    }
    try
    {
        strategy->defer(
            [held = strategy, bindings]() mutable
            {
                held->removeUser();
                releaseShares(*held, std::move(bindings));
                held.reset();
            });
    }
    catch (const std::bad_alloc&)
    {
        // Nothing of it may be destroyed while it runs, and there is no memory to defer the
        // destruction.
        keepForGood(strategy);
        keepForGood(std::move(bindings));
    }
}

void EnvironmentCore::destroy(EnvironmentCore* core) noexcept
{
    delete core;
}

} // namespace tbScripts

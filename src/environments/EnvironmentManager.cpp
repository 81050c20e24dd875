#include "tbScripts/EnvironmentManager.h"

#include "core/NameRegistry.h"

#include "tbScripts/Environment.h"

template class tbCommon::SingletonClass<tbScripts::EnvironmentManager>;

namespace tbScripts
{

EnvironmentManager::EnvironmentManager() = default;

EnvironmentManager::EnvironmentManager(const EnvironmentManager& other) = default;

EnvironmentManager& EnvironmentManager::operator=(const EnvironmentManager& other)
{
    if (this == &other)
        return *this;
    const auto environments = other.m_environments; // first: destructors below may change `other`
    _dropAll();
    m_environments = environments;
    return *this;
}

EnvironmentManager::~EnvironmentManager()
{
    _dropAll();
}

Environment* EnvironmentManager::createOrRetrieve(const tbMemory::StringView& name)
{
    const auto known = m_environments.find(keyOf(name));
    if (known != m_environments.end())
        return known->second.get();
    const auto environment = std::make_shared<Environment>();
    environment->setName(name);
    m_environments.emplace(keyOf(name), environment);
    return environment.get();
}

void EnvironmentManager::_dropAll()
{
    // The destruction of an environment runs code that may call this manager.
    while (!m_environments.empty())
        m_environments.extract(m_environments.begin());
}

} // namespace tbScripts

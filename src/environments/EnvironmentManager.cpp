#include "tbScripts/EnvironmentManager.h"

#include "core/NameRegistry.h"

#include "tbScripts/Environment.h"

#include <memory>
#include <string>
#include <unordered_map>

template class tbCommon::SingletonClass<tbScripts::EnvironmentManager>;

namespace tbScripts
{

struct EnvironmentManager::Environments
{
    std::unordered_map<std::string, std::shared_ptr<Environment>> byName;
};

EnvironmentManager::EnvironmentManager()
    : m_environments(new Environments)
{
}

EnvironmentManager::EnvironmentManager(const EnvironmentManager& other)
    : tbCommon::SingletonClass<EnvironmentManager>(other)
    , m_environments(new Environments(*other.m_environments))
{
}

EnvironmentManager& EnvironmentManager::operator=(const EnvironmentManager& other)
{
    if (this == &other)
        return *this;
    Environments environments =
        *other.m_environments; // first: destructors below may change `other`
    _dropAll();
    m_environments->byName = environments.byName;
    return *this;
}

EnvironmentManager::~EnvironmentManager()
{
    _dropAll();
    delete m_environments;
}

Environment* EnvironmentManager::createOrRetrieve(const tbMemory::StringView& name)
{
    const auto known = m_environments->byName.find(keyOf(name));
    if (known != m_environments->byName.end())
        return known->second.get();
    const auto environment = std::make_shared<Environment>();
    environment->setName(name);
    m_environments->byName.emplace(keyOf(name), environment);
    return environment.get();
}

void EnvironmentManager::_dropAll()
{
    // The destruction of an environment runs code that may call this manager.
    while (!m_environments->byName.empty())
        m_environments->byName.extract(m_environments->byName.begin());
}

} // namespace tbScripts

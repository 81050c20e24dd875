// The registries of an environment: host bindings by name.

#include "core/LogSources.h"
#include "core/NameRegistry.h"
#include "environments/EnvironmentBindings.h"
#include "environments/EnvironmentMessages.h"
#include "environments/EnvironmentStrategy.h"

#include "tbScripts/Environment.h"
#include "tbScripts/Function.h"
#include "tbScripts/LogManager.h"
#include "tbScripts/Namespace.h"
#include "tbScripts/StringUtils.h"
#include "tbScripts/UserType.h"

#include <cstddef>
#include <memory>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace tbScripts
{

namespace
{

// Null entries too: the name counts as declared.
template <typename T>
T* registerIn(
    std::unordered_map<std::string, T*>& registry,
    std::vector<std::unique_ptr<T>>& owners,
    const tbMemory::StringView& name,
    std::unique_ptr<T> created)
{
    T* const declared = created.get();
    if (created)
        owners.push_back(std::move(created));
    registry[keyOf(name)] = declared;
    return declared;
}

} // namespace

Function* Environment::setFunc(const tbMemory::StringView& name)
{
    if (m_strategy->isTearingDown())
        return nullptr;
    if (!isFuncSet(name))
        return _declareFunc(name);

    const std::weak_ptr<const char> life = m_life;
    LogManager::getInstance()->log(messages::functionAlreadyExistant(name), LOG_SOURCE_ENVIRONMENT);
    if (life.expired())
        return nullptr; // the receiver has destroyed this environment
    if (!getFunc(name))
        return _declareFunc(name);
    getFunc(name)->reset();
    if (life.expired())
        return nullptr; // the end of the old callable has
    // Looked up each time: what runs meanwhile may also assign to this environment.
    if (Function* const known = getFunc(name))
        m_strategy->installFunction(*known);
    return life.expired() ? nullptr : getFunc(name);
}

bool Environment::isFuncSet(const tbMemory::StringView& name) const
{
    return m_functions.count(keyOf(name)) > 0;
}

Function* Environment::getFunc(const tbMemory::StringView& name) const
{
    return findIn(m_functions, name);
}

UserType* Environment::setUserType(const tbMemory::StringView& name)
{
    if (m_strategy->isTearingDown())
        return nullptr;
    const auto parts = StringUtils::splitUserTypeName(name);
    if (parts.size() == 1)
        return _setPlainUserType(name);
    const std::weak_ptr<const char> life = m_life;
    Namespace* const scope = _reachNamespaceOf(parts);
    UserType* const type = scope ? scope->setUserType(parts[parts.size() - 1]) : nullptr;
    return life.expired() ? nullptr : type;
}

bool Environment::isUserTypeSet(const tbMemory::StringView& name) const
{
    const auto parts = StringUtils::splitUserTypeName(name);
    return parts.size() == 1 ? m_userTypes.count(keyOf(name)) > 0 : getUserType(name) != nullptr;
}

UserType* Environment::getUserType(const tbMemory::StringView& name) const
{
    const auto parts = StringUtils::splitUserTypeName(name);
    if (parts.size() == 1)
        return findIn(m_userTypes, name);
    const Namespace* const scope = _findNamespace(parts, parts.size() - 1);
    return scope ? scope->getUserType(parts[parts.size() - 1]) : nullptr;
}

Namespace* Environment::setNamespace(const tbMemory::StringView& name)
{
    if (m_strategy->isTearingDown())
        return nullptr;
    const auto parts = StringUtils::splitUserTypeName(name);
    if (parts.size() == 1)
        return _setPlainNamespace(name);
    const std::weak_ptr<const char> life = m_life;
    Namespace* const scope = _reachNamespaceOf(parts);
    Namespace* const inner = scope ? scope->setNamespace(parts[parts.size() - 1]) : nullptr;
    return life.expired() ? nullptr : inner;
}

bool Environment::isNamespaceSet(const tbMemory::StringView& name) const
{
    const auto parts = StringUtils::splitUserTypeName(name);
    return parts.size() == 1 ? m_namespaces.count(keyOf(name)) > 0 : getNamespace(name) != nullptr;
}

Namespace* Environment::getNamespace(const tbMemory::StringView& name) const
{
    const auto parts = StringUtils::splitUserTypeName(name);
    if (parts.size() == 1)
        return findIn(m_namespaces, name);
    const Namespace* const scope = _findNamespace(parts, parts.size() - 1);
    return scope ? scope->getNamespace(parts[parts.size() - 1]) : nullptr;
}

UserType* Environment::_setPlainUserType(const tbMemory::StringView& name)
{
    if (m_userTypes.count(keyOf(name)) == 0)
        return _declareUserType(name);

    const std::weak_ptr<const char> life = m_life;
    LogManager::getInstance()->log(messages::userTypeAlreadyExistant(name), LOG_SOURCE_ENVIRONMENT);
    if (life.expired())
        return nullptr; // the receiver has destroyed this environment
    if (!findIn(m_userTypes, name))
        return _declareUserType(name);
    findIn(m_userTypes, name)->clear();
    if (life.expired())
        return nullptr; // the end of a callable has
    if (UserType* const known = findIn(m_userTypes, name))
        m_strategy->installUserType(*known);
    return life.expired() ? nullptr : findIn(m_userTypes, name);
}

Namespace* Environment::_setPlainNamespace(const tbMemory::StringView& name)
{
    if (m_namespaces.count(keyOf(name)) == 0)
        return _declareNamespace(name);

    const std::weak_ptr<const char> life = m_life;
    LogManager::getInstance()->log(
        messages::namespaceAlreadyExistant(name), LOG_SOURCE_ENVIRONMENT);
    if (life.expired())
        return nullptr; // the receiver has destroyed this environment
    Namespace* const known = findIn(m_namespaces, name);
    if (!known)
        return _declareNamespace(name);
    m_strategy->installNamespace(*known);
    return life.expired() ? nullptr : findIn(m_namespaces, name);
}

Namespace* Environment::_reachNamespaceOf(const tbMemory::BufferCast<tbMemory::String>& parts)
{
    const std::weak_ptr<const char> life = m_life;
    Namespace* reached = nullptr;
    for (std::size_t i = 0; i + 1 < parts.size(); ++i)
    {
        if (Namespace* const known = _findNamespace(parts, i + 1))
            m_strategy->installNamespace(*known);
        else if (i == 0)
            _setPlainNamespace(parts[i]);
        else
            reached->setNamespace(parts[i]);
        // From the first part again: what ran meanwhile may have released any of them.
        reached = life.expired() ? nullptr : _findNamespace(parts, i + 1);
        if (!reached)
            return nullptr;
    }
    return reached;
}

Namespace* Environment::_findNamespace(
    const tbMemory::BufferCast<tbMemory::String>& parts, std::size_t count) const
{
    Namespace* found = findIn(m_namespaces, parts[0]);
    for (std::size_t i = 1; i < count && found; ++i)
        found = found->getNamespace(parts[i]);
    return found;
}

// Publishing runs metamethods of the globals: they may destroy this environment, or have it declare
// the same name. What that declaration gave stays.

Function* Environment::_declareFunc(const tbMemory::StringView& name)
{
    const std::weak_ptr<const char> life = m_life;
    std::unique_ptr<Function> created = m_strategy->createFunction(name);
    if (life.expired())
        return nullptr;
    Function* const known = getFunc(name);
    if (!known)
        return registerIn(m_functions, m_bindings->functions, name, std::move(created));
    if (created)
        m_strategy->giveWay(std::move(created), *known);
    return life.expired() ? nullptr : getFunc(name);
}

UserType* Environment::_declareUserType(const tbMemory::StringView& name)
{
    const std::weak_ptr<const char> life = m_life;
    std::unique_ptr<UserType> created = m_strategy->createUserType(name);
    if (life.expired())
        return nullptr;
    UserType* const known = findIn(m_userTypes, name);
    if (!known)
        return registerIn(m_userTypes, m_bindings->userTypes, name, std::move(created));
    if (created)
        m_strategy->giveWay(std::move(created), *known);
    return life.expired() ? nullptr : findIn(m_userTypes, name);
}

Namespace* Environment::_declareNamespace(const tbMemory::StringView& name)
{
    const std::weak_ptr<const char> life = m_life;
    std::unique_ptr<Namespace> created = m_strategy->createNamespace(name);
    if (life.expired())
        return nullptr;
    Namespace* const known = findIn(m_namespaces, name);
    if (!known)
        return registerIn(m_namespaces, m_bindings->namespaces, name, std::move(created));
    if (created)
        m_strategy->giveWay(std::move(created), *known);
    return life.expired() ? nullptr : findIn(m_namespaces, name);
}

} // namespace tbScripts

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
#include <utility>

namespace tbScripts
{

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
    Function* const function = getFunc(name);
    if (!function)
        return _declareFunc(name);
    function->reset();
    if (life.expired())
        return nullptr; // the end of the old callable has
    m_strategy->installFunction(*function);
    return life.expired() ? nullptr : function;
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
    UserType* const type = findIn(m_userTypes, name);
    if (!type)
        return _declareUserType(name);
    type->clear();
    if (life.expired())
        return nullptr; // the end of a callable has
    m_strategy->installUserType(*type);
    return life.expired() ? nullptr : type;
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
    return life.expired() ? nullptr : known;
}

Namespace* Environment::_reachNamespaceOf(const tbMemory::BufferCast<tbMemory::String>& parts)
{
    const std::weak_ptr<const char> life = m_life;
    Namespace* reached = findIn(m_namespaces, parts[0]);
    if (reached)
        m_strategy->installNamespace(*reached);
    else
        reached = _setPlainNamespace(parts[0]);
    for (std::size_t i = 1; i + 1 < parts.size() && reached && !life.expired(); ++i)
    {
        if (Namespace* const inner = reached->getNamespace(parts[i]))
            m_strategy->installNamespace(*inner);
        else
            reached->setNamespace(parts[i]);
        // From the first part again: what ran meanwhile may have released any of them.
        reached = life.expired() ? nullptr : _findNamespace(parts, i + 1);
    }
    return life.expired() ? nullptr : reached;
}

Namespace* Environment::_findNamespace(
    const tbMemory::BufferCast<tbMemory::String>& parts, std::size_t count) const
{
    Namespace* found = findIn(m_namespaces, parts[0]);
    for (std::size_t i = 1; i < count && found; ++i)
        found = found->getNamespace(parts[i]);
    return found;
}

Function* Environment::_declareFunc(const tbMemory::StringView& name)
{
    const std::weak_ptr<const char> life = m_life;
    std::unique_ptr<Function> created = m_strategy->createFunction(name);
    if (life.expired())
        return nullptr; // a metamethod of the globals has destroyed this environment
    Function* const function = created.get();
    if (created)
        m_bindings->functions.push_back(std::move(created));
    m_functions[keyOf(name)] = function; // null entries too: the name counts as declared
    return function;
}

UserType* Environment::_declareUserType(const tbMemory::StringView& name)
{
    const std::weak_ptr<const char> life = m_life;
    std::unique_ptr<UserType> created = m_strategy->createUserType(name);
    if (life.expired())
        return nullptr;
    UserType* const type = created.get();
    if (created)
        m_bindings->userTypes.push_back(std::move(created));
    m_userTypes[keyOf(name)] = type;
    return type;
}

Namespace* Environment::_declareNamespace(const tbMemory::StringView& name)
{
    const std::weak_ptr<const char> life = m_life;
    std::unique_ptr<Namespace> created = m_strategy->createNamespace(name);
    if (life.expired())
        return nullptr;
    Namespace* const declared = created.get();
    if (created)
        m_bindings->namespaces.push_back(std::move(created));
    m_namespaces[keyOf(name)] = declared;
    return declared;
}

} // namespace tbScripts

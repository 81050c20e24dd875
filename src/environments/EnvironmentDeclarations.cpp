// How an environment's core declares bindings, and finds them by plain and qualified names.
//
// Declaring runs code of scripts and of the host: metamethods of the globals, the log receiver,
// destructors of callables. That code can destroy the environment, assign to it, or declare the
// same name. So nothing found before such a step is used after it: bindings are looked up again,
// and the registries of a core that has ended are empty.

#include "core/LogSources.h"
#include "environments/EnvironmentCore.h"

#include "tbScripts/LogManager.h"
#include "tbScripts/StringUtils.h"

#include <utility>

namespace tbScripts
{

template <typename T>
T* EnvironmentCore::_declare(const tbMemory::StringView& name)
{
    const tbMemory::String kept(name); // the view may point into an object that is destroyed below
    const BindingRegistry<T>& registry = _registry<T>();
    if (!registry.isDeclared(kept))
        return _create<T>(kept);

    LogManager::getInstance()->log(BindingKind<T>::alreadyExistant(kept), LOG_SOURCE_ENVIRONMENT);
    if (!registry.find(kept))
        return _create<T>(kept);
    BindingKind<T>::renew(*registry.find(kept));
    if (T* const existing = registry.find(kept))
    {
        const std::shared_ptr<EnvironmentStrategy> strategy = m_strategy;
        BindingKind<T>::install(*strategy, *existing);
    }
    return registry.find(kept);
}

// Has the interpreter create a binding, and registers it; a null one if the interpreter refuses.
template <typename T>
T* EnvironmentCore::_create(const tbMemory::StringView& name)
{
    if (m_hasEnded)
        return nullptr;
    const std::shared_ptr<EnvironmentStrategy> strategy = m_strategy;
    std::unique_ptr<T> created = BindingKind<T>::create(*strategy, name);
    if (m_hasEnded)
        return nullptr;
    if (T* const existing = _registry<T>().find(name))
    {
        // By the back-end of this moment: a metamethod may have assigned to the environment.
        const std::shared_ptr<EnvironmentStrategy> present = m_strategy;
        if (created)
            present->resolveDuplicate(std::move(created), *existing);
        return _registry<T>().find(name);
    }
    return _registry<T>().add(name, std::move(created), BindingKind<T>::ownersIn(*m_bindings));
}

template <typename T>
T* EnvironmentCore::_declareQualified(const tbMemory::StringView& name)
{
    if (m_strategy->isTearingDown())
        return nullptr;
    const NameParts parts = StringUtils::splitUserTypeName(name);
    if (parts.size() == 1)
        return _declare<T>(name);
    Namespace* const scope = _reachNamespaceOf(parts);
    if (!scope || !BindingKind<T>::declareIn(*scope, parts[parts.size() - 1]))
        return nullptr;
    return _find<T>(parts);
}

template <typename T>
bool EnvironmentCore::_isSet(const tbMemory::StringView& name) const
{
    const NameParts parts = StringUtils::splitUserTypeName(name);
    return parts.size() == 1 ? _registry<T>().isDeclared(name) : _find<T>(parts) != nullptr;
}

template <typename T>
T* EnvironmentCore::_find(const NameParts& parts) const
{
    if (parts.size() == 1)
        return _registry<T>().find(parts[0]);
    const Namespace* const scope = _findNamespace(parts, parts.size() - 1);
    return scope ? BindingKind<T>::findIn(*scope, parts[parts.size() - 1]) : nullptr;
}

// Returns the namespace that holds the last of several `parts`; declares the missing ones.
Namespace* EnvironmentCore::_reachNamespaceOf(const NameParts& parts)
{
    Namespace* reached = nullptr;
    for (std::size_t i = 0; i + 1 < parts.size(); ++i)
    {
        if (Namespace* const existing = _findNamespace(parts, i + 1))
        {
            const std::shared_ptr<EnvironmentStrategy> strategy = m_strategy;
            strategy->installNamespace(*existing);
        }
        else if (i == 0)
        {
            _declare<Namespace>(parts[i]);
        }
        else
        {
            reached->setNamespace(parts[i]);
        }
        // From the first part again: any of them may have been released.
        reached = _findNamespace(parts, i + 1);
        if (!reached)
            return nullptr;
    }
    return reached;
}

// Returns the namespace that the first `count` of `parts` name, null if there is none.
Namespace* EnvironmentCore::_findNamespace(const NameParts& parts, std::size_t count) const
{
    Namespace* found = _registry<Namespace>().find(parts[0]);
    for (std::size_t i = 1; i < count && found; ++i)
        found = found->getNamespace(parts[i]);
    return found;
}

Function* EnvironmentCore::setFunction(const tbMemory::StringView& name)
{
    return m_strategy->isTearingDown() ? nullptr : _declare<Function>(name);
}

UserType* EnvironmentCore::setUserType(const tbMemory::StringView& name)
{
    return _declareQualified<UserType>(name);
}

Namespace* EnvironmentCore::setNamespace(const tbMemory::StringView& name)
{
    return _declareQualified<Namespace>(name);
}

bool EnvironmentCore::isFunctionSet(const tbMemory::StringView& name) const
{
    return _registry<Function>().isDeclared(name);
}

bool EnvironmentCore::isUserTypeSet(const tbMemory::StringView& name) const
{
    return _isSet<UserType>(name);
}

bool EnvironmentCore::isNamespaceSet(const tbMemory::StringView& name) const
{
    return _isSet<Namespace>(name);
}

Function* EnvironmentCore::findFunction(const tbMemory::StringView& name) const
{
    return _registry<Function>().find(name);
}

UserType* EnvironmentCore::findUserType(const tbMemory::StringView& name) const
{
    return _find<UserType>(StringUtils::splitUserTypeName(name));
}

Namespace* EnvironmentCore::findNamespace(const tbMemory::StringView& name) const
{
    return _find<Namespace>(StringUtils::splitUserTypeName(name));
}

} // namespace tbScripts

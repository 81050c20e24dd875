#pragma once

#include "core/NameRegistry.h"
#include "environments/EnvironmentBindings.h"
#include "environments/EnvironmentMessages.h"
#include "environments/EnvironmentStrategy.h"

#include "tbScripts/Function.h"
#include "tbScripts/Namespace.h"
#include "tbScripts/UserType.h"

#include <tbMemory/String.h>
#include <tbMemory/StringView.h>

#include <memory>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace tbScripts
{

/// The bindings of one kind that were declared through one environment, by name.
/// `EnvironmentBindings`, which copies of the environment share, owns them.
///
/// Compatibility: each copy has registries of its own, so a copy does not know what is declared
/// through another one later (docs/decisions/0006-compatibility.md).
template <typename T>
class BindingRegistry
{
public:
    /// Returns whether `name` was declared, also if nothing could be created for it.
    bool isDeclared(const tbMemory::StringView& name) const
    {
        return m_byName.count(keyOf(name)) > 0;
    }

    /// Returns the binding that was declared under `name`, null if there is none or none could be
    /// created.
    T* find(const tbMemory::StringView& name) const { return findIn(m_byName, name); }

    /// Registers `created` under `name` and returns it. It may be null: the name then counts as
    /// declared.
    T*
    add(const tbMemory::StringView& name,
        std::unique_ptr<T> created,
        std::vector<std::unique_ptr<T>>& owners)
    {
        T* declared = nullptr;
        if (created)
        {
            owners.push_back(std::move(created));
            declared = owners.back().get();
        }
        m_byName[keyOf(name)] = declared;
        return declared;
    }

private:
    std::unordered_map<std::string, T*> m_byName;
};

/// The differences between the kinds of bindings when an environment declares them.
template <typename T>
struct BindingKind;

template <>
struct BindingKind<Function>
{
    static tbMemory::String alreadyExistant(const tbMemory::StringView& name)
    {
        return messages::functionAlreadyExistant(name);
    }

    /// Resets a function that is declared again.
    static void renew(Function& function) { function.reset(); }

    static std::unique_ptr<Function>
    create(EnvironmentStrategy& strategy, const tbMemory::StringView& name)
    {
        return strategy.createFunction(name);
    }

    static void install(EnvironmentStrategy& strategy, Function& function)
    {
        strategy.installFunction(function);
    }

    static auto& ownersIn(EnvironmentBindings& bindings) { return bindings.functions; }
};

template <>
struct BindingKind<UserType>
{
    static tbMemory::String alreadyExistant(const tbMemory::StringView& name)
    {
        return messages::userTypeAlreadyExistant(name);
    }

    static void renew(UserType& type) { type.clear(); }

    static std::unique_ptr<UserType>
    create(EnvironmentStrategy& strategy, const tbMemory::StringView& name)
    {
        return strategy.createUserType(name);
    }

    static void install(EnvironmentStrategy& strategy, UserType& type)
    {
        strategy.installUserType(type);
    }

    static auto& ownersIn(EnvironmentBindings& bindings) { return bindings.userTypes; }

    static UserType* declareIn(Namespace& scope, const tbMemory::StringView& name)
    {
        return scope.setUserType(name);
    }

    static UserType* findIn(const Namespace& scope, const tbMemory::StringView& name)
    {
        return scope.getUserType(name);
    }
};

template <>
struct BindingKind<Namespace>
{
    static tbMemory::String alreadyExistant(const tbMemory::StringView& name)
    {
        return messages::namespaceAlreadyExistant(name);
    }

    static void renew(Namespace& /*scope*/) {} // keeps what was declared in it

    static std::unique_ptr<Namespace>
    create(EnvironmentStrategy& strategy, const tbMemory::StringView& name)
    {
        return strategy.createNamespace(name);
    }

    static void install(EnvironmentStrategy& strategy, Namespace& scope)
    {
        strategy.installNamespace(scope);
    }

    static auto& ownersIn(EnvironmentBindings& bindings) { return bindings.namespaces; }

    static Namespace* declareIn(Namespace& scope, const tbMemory::StringView& name)
    {
        return scope.setNamespace(name);
    }

    static Namespace* findIn(const Namespace& scope, const tbMemory::StringView& name)
    {
        return scope.getNamespace(name);
    }
};

} // namespace tbScripts

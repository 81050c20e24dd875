#pragma once

#include "core/Counted.h"
#include "environments/BindingRegistry.h"
#include "environments/EnvironmentStrategy.h"

#include "tbScripts/ExecutionResult.h"
#include "tbScripts/Function.h"
#include "tbScripts/Interpreter.h"
#include "tbScripts/Namespace.h"
#include "tbScripts/UserType.h"

#include <tbMemory/BufferCast.h>
#include <tbMemory/String.h>
#include <tbMemory/StringView.h>

#include <cstddef>
#include <memory>
#include <tuple>

namespace tbScripts
{

struct EnvironmentBindings;

/// The inside of one `Environment`: name, last result, interpreter, and the names that were
/// declared through it.
///
/// A script, a finaliser, a destructor of the host or the log receiver can destroy an environment
/// while one of its own operations runs. `Environment` is therefore a handle, and each operation
/// first takes a hold on the core, which outlives the handle as long as an operation needs it.
/// `end` empties the core: an operation that goes on afterwards finds nothing declared, and returns
/// its neutral value without asking whether the environment still exists.
///
/// Copies of an environment have a core each. The cores share bindings and interpreter, which the
/// last of them tears down.
///
/// Why: docs/decisions/0019-environment-core.md
class EnvironmentCore : public HolderCount
{
public:
    /// Creates the core of an environment without name and interpreter.
    EnvironmentCore();

    /// Creates the core of a copy, which shares everything that `other` has not released.
    explicit EnvironmentCore(const EnvironmentCore& other);

    ~EnvironmentCore();

    /// Called when the environment and the last of its operations let go.
    static void destroy(EnvironmentCore* core) noexcept;

    /// Releases the shares of this core, and takes shares in those of `other`. Requires: both are
    /// different.
    void assign(const EnvironmentCore& other);

    /// Releases bindings and interpreter finally: the environment is being destroyed. The last core
    /// tears them down, now or, while the interpreter runs, when its outermost call returns.
    void end();

    tbMemory::String& getName() { return *m_name; }

    const ExecutionResult& getLastExecutionResult() const { return m_result; }

    EnvironmentStrategy& getStrategy() const { return *m_strategy; }

    /// Does what `Environment::setEnvironmentFor` promises.
    void switchInterpreter(INTERPRETER interpreter);

    /// Declare a name, plain or qualified, as the operations of `Environment` promise.
    Function* setFunction(const tbMemory::StringView& name);
    UserType* setUserType(const tbMemory::StringView& name);
    Namespace* setNamespace(const tbMemory::StringView& name);

    bool isFunctionSet(const tbMemory::StringView& name) const;
    bool isUserTypeSet(const tbMemory::StringView& name) const;
    bool isNamespaceSet(const tbMemory::StringView& name) const;

    Function* findFunction(const tbMemory::StringView& name) const;
    UserType* findUserType(const tbMemory::StringView& name) const;
    Namespace* findNamespace(const tbMemory::StringView& name) const;

private:
    using NameParts = tbMemory::BufferCast<tbMemory::String>;

    void _giveUp();
    void _giveUpOnce();
    void _startStrategy(std::shared_ptr<EnvironmentStrategy> strategy);

    template <typename T>
    BindingRegistry<T>& _registry()
    {
        return std::get<BindingRegistry<T>>(m_registries);
    }

    template <typename T>
    const BindingRegistry<T>& _registry() const
    {
        return std::get<BindingRegistry<T>>(m_registries);
    }

    template <typename T>
    T* _declare(const tbMemory::StringView& name);

    template <typename T>
    T* _create(const tbMemory::StringView& name);

    template <typename T>
    T* _declareQualified(const tbMemory::StringView& name);

    template <typename T>
    bool _isSet(const tbMemory::StringView& name) const;

    template <typename T>
    T* _find(const NameParts& parts) const;

    Namespace* _reachNamespaceOf(const NameParts& parts);
    Namespace* _findNamespace(const NameParts& parts, std::size_t count) const;

    // Shared with the strategy, whose messages use the last name if this core is destroyed first.
    std::shared_ptr<tbMemory::String> m_name;

    std::tuple<BindingRegistry<Function>, BindingRegistry<UserType>, BindingRegistry<Namespace>>
        m_registries;

    std::shared_ptr<EnvironmentBindings> m_bindings; // shared by copies; null after `end`
    std::shared_ptr<EnvironmentStrategy> m_strategy; // never null, shared by copies
    ExecutionResult m_result;                        // written by the present strategy
    bool m_hasEnded = false;
};

/// Keeps a core while an operation of its environment runs.
using EnvironmentHold = Counted<EnvironmentCore>;

} // namespace tbScripts

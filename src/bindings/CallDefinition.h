#pragma once

#include "bindings/CompiledLeaf.h"
#include "bindings/TypedCallable.h"
#include "core/Counted.h"
#include "core/SharedName.h"

#include "tbScripts/Function.h"
#include "tbScripts/FunctionParameter.h"

#include <tbMemory/String.h>

#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

namespace tbScripts
{

/// The declaration of a callable: its name, its declared parameters, and a set of parameters for
/// each running call.
///
/// Invariant: while a call runs, only that call and the calls inside it touch the definition.
class CallDeclaration : public HolderCount
{
public:
    explicit CallDeclaration(Counted<SharedName> name);

    CallDeclaration(const CallDeclaration&) = delete;
    CallDeclaration& operator=(const CallDeclaration&) = delete;

    const tbMemory::String& getName() const { return m_name->text; }

    const Counted<SharedName>& getSharedName() const { return m_name; }

    /// Changes the name, also of all definitions that share it.
    void rename(const tbMemory::StringView& name) { m_name->text = name; }

    /// Returns the parameters of the outermost call, which fills them in place.
    const std::vector<FunctionParameter>& getParameters() const { return m_parameters; }

    /// Replaces the declared parameters by copies of `parameters`. Requires: no call runs.
    void setParameters(const std::vector<FunctionParameter>& parameters);

    /// Appends a declared parameter. Requires: no call runs.
    void addParameter(FunctionParameter parameter);

    /// Returns the parameters for a call inside `runningCalls` others of this definition.
    std::vector<FunctionParameter>& parametersOfNextCall()
    {
        return runningCalls == 0 ? m_parameters : _innerParametersOfNextCall();
    }

    /// Copies the declarations of `other`, without the values of its calls. Requires: no call runs.
    void copyDeclarations(const CallDeclaration& other);

    /// Not inline: calls hardly ever destroy a definition.
    template <typename Definition>
    [[gnu::noinline]] static void destroy(Definition* definition) noexcept
    {
        delete definition;
    }

    std::uint32_t runningCalls = 0;

protected:
    ~CallDeclaration() = default;

private:
    std::vector<FunctionParameter>& _innerParametersOfNextCall();

    Counted<SharedName> m_name; // shared with default callables and other definitions
    std::vector<FunctionParameter> m_parameters;

    // Null until a call runs inside another one. Each list keeps its address.
    std::unique_ptr<std::vector<std::unique_ptr<std::vector<FunctionParameter>>>> m_innerParameters;
};

/// One declaration of a host callable. It is counted: each running call holds the definition, so
/// that the host may replace or drop the declaration during the call.
template <typename CallableType>
struct CallDefinition : CallDeclaration
{
    using Callable = CallableType;
    using CallDeclaration::CallDeclaration;

    /// Makes `other` what is called, and drops a callable of the typed layer. What was called until
    /// now comes out in `other`, to be destroyed last: its destructor may run code of the host.
    void setCallable(Callable& other)
    {
        endLeaf();
        const Counted<TypedCallable> dropped = std::exchange(typed, {});
        std::swap(callable, other);
    }

    /// From here on compiled script code does not call the typed callable by itself any more.
    void endLeaf() { leaf.reset(); }

    Callable callable;
    Counted<TypedCallable> typed; // called in place of `callable` if there is one

    // Not null while compiled script code may call `typed` by itself.
    std::unique_ptr<CompiledLeaf> leaf;
};

/// The definition of a host function.
struct FunctionDefinition final : CallDefinition<Function::Callable>
{
    using CallDefinition::CallDefinition;
};

/// Returns a new definition that declares the same.
template <typename Definition>
Counted<Definition> cloneDefinition(const Definition& definition)
{
    auto copy = makeCounted<Definition>(definition.getSharedName());
    copy->copyDeclarations(definition);
    copy->callable = definition.callable;
    copy->typed = definition.typed;
    return copy;
}

/// Returns `definition` as one that may be changed: if it runs or is shared, `definition` becomes a
/// copy. Requires: there is one.
template <typename Definition>
Definition& editDefinition(Counted<Definition>& definition)
{
    if (definition->isShared())
    {
        definition->endLeaf(); // what runs may hold the definition for long
        definition = cloneDefinition(*definition);
    }
    return *definition;
}

/// One call of the typed callable of a definition: holds both.
template <typename Definition>
class TypedHold
{
public:
    explicit TypedHold(Definition& definition)
        : m_definition(definition)
    {
        Counted<Definition>::hold(m_definition);
        ++m_definition.runningCalls;
    }

    TypedHold(const TypedHold&) = delete;
    TypedHold& operator=(const TypedHold&) = delete;

    ~TypedHold()
    {
        --m_definition.runningCalls;
        Counted<Definition>::letGo(m_definition);
    }

private:
    Definition& m_definition;
};

/// One call of a definition: holds it, and the parameters that are this call's own.
template <typename Definition>
class DefinitionCall
{
public:
    explicit DefinitionCall(Definition& definition)
        : m_definition(definition)
        , m_parameters(definition.parametersOfNextCall())
    {
        Counted<Definition>::hold(m_definition);
        ++m_definition.runningCalls;
    }

    DefinitionCall(const DefinitionCall&) = delete;
    DefinitionCall& operator=(const DefinitionCall&) = delete;

    ~DefinitionCall()
    {
        --m_definition.runningCalls;
        Counted<Definition>::letGo(m_definition);
    }

    std::vector<FunctionParameter>& getParameters() const { return m_parameters; }

    const tbMemory::String& getName() const { return m_definition.getName(); }

    const typename Definition::Callable& getCallable() const { return m_definition.callable; }

private:
    Definition& m_definition;
    std::vector<FunctionParameter>& m_parameters;
};

} // namespace tbScripts

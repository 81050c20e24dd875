#include "tbScripts/Function.h"

#include "bindings/BindingMessages.h"
#include "bindings/CallDefinition.h"
#include "core/LogSources.h"

#include "tbScripts/LogManager.h"

#include <utility>

namespace tbScripts
{

namespace
{

FunctionParameter reportUnbound(const tbMemory::StringView& functionName)
{
    LogManager::getInstance()->log(messages::functionNotBound(functionName), LOG_SOURCE_FUNCTION);
    return FunctionParameter::VOID;
}

// The callable holds the name, not the function: copies of it may outlive the function, and then
// report with the function's last name.
Counted<FunctionDefinition> makeUnbound(const Counted<SharedName>& name)
{
    auto definition = makeCounted<FunctionDefinition>(name);
    definition->callable = [name](const tbMemory::BufferView<FunctionParameter>&)
    { return reportUnbound(name->text); };
    return definition;
}

Counted<FunctionDefinition>
copyOf(const FunctionDefinition& source, const Counted<SharedName>& name)
{
    auto definition = makeCounted<FunctionDefinition>(name);
    definition->setParameters(source.getParameters());
    definition->callable = source.callable;
    definition->typed = source.typed;
    return definition;
}

} // namespace

Function::Function(const tbMemory::StringView& name)
    : m_definition(makeUnbound(makeCounted<SharedName>(name)).detach())
{
}

Function::Function(const Function& other)
    : m_definition(
          copyOf(*other.m_definition, makeCounted<SharedName>(other.m_definition->getName()))
              .detach())
{
}

Function& Function::operator=(const Function& other)
{
    if (this == &other)
        return *this;
    auto definition = copyOf(*other.m_definition, m_definition->getSharedName());
    m_definition->rename(other.m_definition->getName());
    _adopt(definition.detach());
    return *this;
}

Function::~Function()
{
    Counted<FunctionDefinition>::letGo(*m_definition);
}

tbMemory::StringView Function::getName() const
{
    return m_definition->getName();
}

void Function::addParameter(FUNCTION_PARAMETER_TYPE type, const tbMemory::StringView& typeName)
{
    _editDefinition().addParameter(FunctionParameter::ofType(type, typeName));
}

void Function::setFunction(Callable callable)
{
    _editDefinition().setCallable(callable);
}

void Function::reset()
{
    _adopt(makeUnbound(m_definition->getSharedName()).detach());
}

FunctionParameter
Function::defaultFunction(const tbMemory::BufferView<FunctionParameter>& /*parameters*/)
{
    return reportUnbound(getName());
}

FunctionDefinition& Function::_editDefinition()
{
    if (m_definition->runningCalls > 0)
        _adopt(cloneDefinition(*m_definition).detach());
    return *m_definition;
}

void Function::_adopt(FunctionDefinition* definition)
{
    // Null during the construction of this function.
    FunctionDefinition* const earlier = std::exchange(m_definition, definition);
    if (!earlier)
        return;
    earlier->endLeaf();
    Counted<FunctionDefinition>::letGo(*earlier);
}

} // namespace tbScripts

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

} // namespace

Function::Function(const tbMemory::StringView& name)
    : m_name(std::make_shared<tbMemory::String>(name))
    , m_definition(nullptr)
{
    reset();
}

Function::Function(const Function& other)
    : m_name(std::make_shared<tbMemory::String>(*other.m_name))
    , m_definition(nullptr)
{
    auto definition = makeCounted<FunctionDefinition>(m_name);
    definition->setParameters(other.m_definition->getParameters());
    definition->callable = other.m_definition->callable;
    m_definition = definition.detach();
}

Function& Function::operator=(const Function& other)
{
    if (this == &other)
        return *this;
    auto definition = makeCounted<FunctionDefinition>(m_name);
    definition->setParameters(other.m_definition->getParameters());
    definition->callable = other.m_definition->callable;
    *m_name = *other.m_name;
    _adopt(definition.detach());
    return *this;
}

Function::~Function()
{
    Counted<FunctionDefinition>::letGo(*m_definition);
}

tbMemory::StringView Function::getName() const
{
    return *m_name;
}

void Function::addParameter(FUNCTION_PARAMETER_TYPE type, const tbMemory::StringView& typeName)
{
    _editDefinition().addParameter(FunctionParameter::ofType(type, typeName));
}

void Function::setFunction(Callable callable)
{
    // Swapped, so that the old callable is destroyed last: its destructor may run code of the host.
    std::swap(_editDefinition().callable, callable);
}

void Function::reset()
{
    auto definition = makeCounted<FunctionDefinition>(m_name);
    definition->callable = _defaultCallable();
    _adopt(definition.detach());
}

FunctionParameter
Function::defaultFunction(const tbMemory::BufferView<FunctionParameter>& /*parameters*/)
{
    return reportUnbound(*m_name);
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
    if (FunctionDefinition* const earlier = std::exchange(m_definition, definition))
        Counted<FunctionDefinition>::letGo(*earlier);
}

Function::Callable Function::_defaultCallable() const
{
    // Holds the name, not the function: copies of the callable may outlive the function, and then
    // report with its last name.
    return [name = m_name](const tbMemory::BufferView<FunctionParameter>&)
    { return reportUnbound(*name); };
}

} // namespace tbScripts

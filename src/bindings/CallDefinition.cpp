#include "bindings/CallDefinition.h"

namespace tbScripts
{

namespace
{

// The same declarations without values.
std::vector<FunctionParameter> declarationsOf(const std::vector<FunctionParameter>& parameters)
{
    std::vector<FunctionParameter> declarations;
    declarations.reserve(parameters.size());
    for (const FunctionParameter& parameter : parameters)
        declarations.push_back(parameter.getDeclaration());
    return declarations;
}

} // namespace

CallDeclaration::CallDeclaration(Counted<SharedName> name)
    : m_name(std::move(name))
{
}

void CallDeclaration::setParameters(const std::vector<FunctionParameter>& parameters)
{
    m_innerParameters.reset(); // created again from the other list when they are needed
    m_parameters = parameters;
}

void CallDeclaration::addParameter(FunctionParameter parameter)
{
    m_innerParameters.reset();
    m_parameters.push_back(std::move(parameter));
}

void CallDeclaration::copyDeclarations(const CallDeclaration& other)
{
    m_innerParameters.reset();
    m_parameters = declarationsOf(other.m_parameters);
}

std::vector<FunctionParameter>& CallDeclaration::_innerParametersOfNextCall()
{
    if (!m_innerParameters)
        m_innerParameters =
            std::make_unique<std::vector<std::unique_ptr<std::vector<FunctionParameter>>>>();
    while (m_innerParameters->size() < runningCalls)
    {
        m_innerParameters->push_back(
            std::make_unique<std::vector<FunctionParameter>>(declarationsOf(m_parameters)));
    }
    return *(*m_innerParameters)[runningCalls - 1];
}

} // namespace tbScripts

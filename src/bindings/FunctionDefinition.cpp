#include "bindings/FunctionDefinition.h"

#include <utility>

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

FunctionDefinition::FunctionDefinition(std::shared_ptr<tbMemory::String> functionName)
    : name(std::move(functionName))
{
}

FunctionDefinition* FunctionDefinition::clone() const
{
    auto copy = std::make_unique<FunctionDefinition>(name);
    copy->parameters = declarationsOf(parameters);
    copy->callable = callable;
    return copy.release();
}

void FunctionDefinition::addParameter(FunctionParameter parameter)
{
    m_innerParameters.clear(); // made anew from the longer list when they are needed
    parameters.push_back(std::move(parameter));
}

std::vector<FunctionParameter>& FunctionDefinition::_innerParametersOfNextCall()
{
    while (m_innerParameters.size() < runningCalls)
    {
        m_innerParameters.push_back(
            std::make_unique<std::vector<FunctionParameter>>(declarationsOf(parameters)));
    }
    return *m_innerParameters[runningCalls - 1];
}

void releaseDefinition(FunctionDefinition* definition)
{
    if (--definition->holders == 0)
        delete definition;
}

} // namespace tbScripts

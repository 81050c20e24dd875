#include "environments/EnvironmentStrategy.h"

#include <utility>

namespace tbScripts
{

EnvironmentStrategy::EnvironmentStrategy(Name environmentName, Result result)
    : m_environmentName(std::move(environmentName))
    , m_result(std::move(result))
{
    resetResult();
}

EnvironmentStrategy::~EnvironmentStrategy() = default;

const ExecutionResult& EnvironmentStrategy::getLastExecutionResult() const
{
    return *m_result;
}

const EnvironmentStrategy::Result& EnvironmentStrategy::getSharedResult() const
{
    return m_result;
}

tbMemory::StringView EnvironmentStrategy::getEnvironmentName() const
{
    return *m_environmentName;
}

void EnvironmentStrategy::resetResult()
{
    m_result->message.clear();
    m_result->code = 0;
    m_result->success = true;
}

void EnvironmentStrategy::setFailure(const tbMemory::StringView& message, std::int32_t code)
{
    m_result->message = message;
    m_result->code = code;
    m_result->success = false;
}

} // namespace tbScripts

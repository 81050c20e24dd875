#include "environments/EnvironmentStrategy.h"

#include <algorithm>
#include <utility>

namespace tbScripts
{

EnvironmentStrategy::EnvironmentStrategy(Name environmentName)
    : m_environmentName(std::move(environmentName))
{
    m_shownIn.reserve(1); // the first environment can add its result without memory
}

EnvironmentStrategy::~EnvironmentStrategy() = default;

const ExecutionResult& EnvironmentStrategy::getLastExecutionResult() const
{
    return m_lastResult;
}

void EnvironmentStrategy::addResult(ExecutionResult& result)
{
    result = m_lastResult;
    m_shownIn.push_back(&result);
}

void EnvironmentStrategy::removeResult(ExecutionResult& result)
{
    m_shownIn.erase(std::remove(m_shownIn.begin(), m_shownIn.end(), &result), m_shownIn.end());
}

tbMemory::StringView EnvironmentStrategy::getEnvironmentName() const
{
    return *m_environmentName;
}

void EnvironmentStrategy::setFailure(const tbMemory::StringView& message, std::int32_t code)
{
    m_lastResult.message = message;
    m_lastResult.code = code;
    m_lastResult.success = false;
    _showResult();
}

void EnvironmentStrategy::_forgetFailure()
{
    m_lastResult.message.clear();
    m_lastResult.code = EXECUTION_SUCCESS;
    m_lastResult.success = true;
    _showResult();
}

void EnvironmentStrategy::_showResult()
{
    for (ExecutionResult* const result : m_shownIn)
        *result = m_lastResult;
}

} // namespace tbScripts

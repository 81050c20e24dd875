#include "support/ReactingLogger.h"

#include <tbScripts/LogManager.h>

#include <utility>

namespace tbScripts::test
{

ReactingLogger::ReactingLogger(std::function<void()> react)
    : m_react(std::move(react))
    , m_previous(LogManager::getInstance()->getReceiver())
{
    LogManager::getInstance()->setReceiver(this);
}

ReactingLogger::~ReactingLogger()
{
    LogManager::getInstance()->setReceiver(m_previous);
}

void ReactingLogger::log(const tbLog::StringView& message, const tbLog::StringView& source)
{
    RecordingLogger::log(message, source);
    m_react();
}

} // namespace tbScripts::test

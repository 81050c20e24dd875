#include "tbScripts/LogManager.h"

#include "core/ExceptionContainment.h"

#include <tbLog/Logger.h>
#include <tbLog/StringView.h>

template class tbCommon::SingletonClass<tbScripts::LogManager>;

namespace tbScripts
{

LogManager::LogManager()
    : m_receiver(nullptr)
{
}

LogManager::LogManager(const LogManager& other) = default;

LogManager& LogManager::operator=(const LogManager& other) = default;

LogManager::~LogManager() = default;

tbLog::Logger* LogManager::getReceiver() const
{
    return m_receiver;
}

void LogManager::setReceiver(tbLog::Logger* receiver)
{
    m_receiver = receiver;
}

void LogManager::log(const tbMemory::StringView& message, const tbMemory::StringView& source)
{
    // Nothing of this object is used after the call: the receiver may have killed it.
    tbLog::Logger* const receiver = m_receiver;
    if (!receiver)
        return;

    contain(
        [&]
        {
            receiver->log(
                tbLog::StringView(message.data(), message.size()),
                tbLog::StringView(source.data(), source.size()));
        },
        [] {});
}

} // namespace tbScripts

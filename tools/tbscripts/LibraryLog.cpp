#include "tbscripts/LibraryLog.h"

#include "tbscripts/Console.h"
#include "tbscripts/Escaping.h"

#include <tbScripts/LogManager.h>

#include <algorithm>

namespace tool
{

LibraryLog::LibraryLog()
{
    tbScripts::LogManager::getInstanceRef().setReceiver(this);
}

LibraryLog::~LibraryLog()
{
    tbScripts::LogManager::getInstanceRef().setReceiver(nullptr);
    for (const std::string& message : m_messages)
        report("tbscripts: " + escape(message));
}

void LibraryLog::log(const tbLog::StringView& message, const tbLog::StringView& /*source*/)
{
    m_messages.emplace_back(std::string_view(message));
}

void LibraryLog::forget(std::string_view message)
{
    m_messages.erase(std::remove(m_messages.begin(), m_messages.end(), message), m_messages.end());
}

} // namespace tool

#include "demo/ConsoleLog.h"

#include <tbScripts/LogManager.h>

#include <iostream>
#include <string_view>

namespace demo
{

ConsoleLog::ConsoleLog()
{
    tbScripts::LogManager::getInstance()->setReceiver(this);
}

ConsoleLog::~ConsoleLog()
{
    tbScripts::LogManager::getInstance()->kill();
}

void ConsoleLog::log(const tbLog::StringView& message, const tbLog::StringView& source)
{
    // Both views are valid during this call only: a receiver that keeps messages copies them.
    std::cout << "    [" << std::string_view(source) << "] " << std::string_view(message) << '\n';
}

} // namespace demo

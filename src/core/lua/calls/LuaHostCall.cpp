#include "core/lua/calls/LuaHostCall.h"

#include "core/ExceptionContainment.h"
#include "core/LogSources.h"
#include "core/lua/LuaTables.h"
#include "core/lua/calls/LuaCallbackScope.h"
#include "port/StackEnd.h"

#include "tbScripts/LogManager.h"

#include <cstdint>

namespace tbScripts::lua
{

namespace
{

constexpr const char* TEXT_TOO_DEEP = "C stack overflow";
constexpr const char* TEXT_OF_NO_MEMORY = "not enough memory"; // the interpreter's own

} // namespace

bool isOutOfMemory(const std::string& errorText)
{
    return errorText == TEXT_OF_NO_MEMORY;
}

bool LuaHostCall::_admitOrExplain(std::string& errorText)
{
    if (!m_slot)
    {
        errorText.clear();
        return false;
    }
    if (!m_state)
    {
        errorText = TEXT_TOO_DEEP;
        return false;
    }
    LuaCallbackScope* const scope = m_slot->getInnermostCallback();
    return !scope || scope->keepViews(errorText);
}

bool LuaHostCall::_isStackLeft()
{
    constexpr std::uintptr_t RESERVE = std::uintptr_t{32} * 1024; // the interpreter needs some too
    thread_local const std::uintptr_t end = port::findEndOfStack();
    const char here = 0;
    const auto place = reinterpret_cast<std::uintptr_t>(&here);
    // Below the end it is another stack, which the host has created.
    return place < end || place - end > RESERVE;
}

void LuaHostCall::recoverMemory()
{
    if (m_state)
        collectAfterLackOfMemory(*this);
}

void LuaHostCall::_reportFailure(const std::string& errorText)
{
    if (isOutOfMemory(errorText))
        recoverMemory();
    logFailure(errorText);
}

void LuaHostCall::logFailure(const std::string& errorText)
{
    // Contained, because destructors log too, and the first message creates the manager.
    contain([&] { LogManager::getInstance()->log(errorText, LOG_SOURCE_LUA_ENVIRONMENT); }, [] {});
}

} // namespace tbScripts::lua

#include "core/lua/LuaHostCall.h"

#include "core/LogSources.h"
#include "core/lua/LuaCallbackScope.h"

#include "tbScripts/LogManager.h"

namespace tbScripts::lua
{

namespace
{

constexpr const char* TEXT_TOO_DEEP = "C stack overflow";

} // namespace

bool LuaHostCall::admit(std::string& errorText)
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
    return !m_slot->innermostCallback || m_slot->innermostCallback->keepViews(errorText);
}

void LuaHostCall::_logFailure(const std::string& errorText)
{
    LogManager::getInstance()->log(errorText, LOG_SOURCE_LUA_ENVIRONMENT);
}

} // namespace tbScripts::lua

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

LuaHostCall::LuaHostCall(const LuaStateHandle& handle, ENTRY entry)
    : m_slot(handle.get() ? handle.getSlot() : nullptr)
    , m_state(nullptr)
{
    if (!m_slot)
        return;
    const bool isUpkeep = entry == ENTRY::UPKEEP;
    if (m_slot->isTearingDown && !isUpkeep)
    {
        m_slot = nullptr;
        return;
    }
    if (m_slot->hostCalls++ < MAX_DEPTH || isUpkeep)
        m_state = m_slot->running;
}

LuaHostCall::~LuaHostCall()
{
    if (m_slot && --m_slot->hostCalls == 0 && !m_slot->putOff.empty())
        runPutOff(*m_slot);
}

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
    if (!errorText.empty())
        LogManager::getInstance()->log(errorText, LOG_SOURCE_LUA_ENVIRONMENT);
}

} // namespace tbScripts::lua

#include "core/lua/calls/LuaHostCall.h"

#include "core/ExceptionContainment.h"
#include "core/LogSources.h"
#include "core/lua/LuaTables.h"
#include "core/lua/calls/LuaCallbackScope.h"

#include "tbScripts/LogManager.h"

#include <cstdlib>

namespace tbScripts::lua
{

namespace
{

constexpr const char* TEXT_TOO_DEEP = "C stack overflow";
constexpr const char* TEXT_IN_LEAF =
    "A leaf function called the library, which it promised not to do. Call having no effect.";
constexpr const char* TEXT_OF_NO_MEMORY = "not enough memory"; // the interpreter's own

} // namespace

bool isOutOfMemory(const std::string& errorText)
{
    return errorText == TEXT_OF_NO_MEMORY;
}

void refuseInLeaf(LuaStateSlot& slot)
{
    if (!slot.beginRefusal())
        return;
    LuaHostCall::logFailure(TEXT_IN_LEAF);
    slot.endRefusal();
#if defined(TBSCRIPTS_ABORT_IN_LEAF) && !defined(NDEBUG)
    std::abort(); // here is the call that was not to be
#endif
}

bool LuaHostCall::_isAdmittedAllTheSame(bool isUpkeep)
{
    if (!m_slot->isInLeaf())
        return isUpkeep;
    refuseInLeaf(*m_slot);
    return false;
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

bool LuaHostCall::_isStackLeft(std::uintptr_t outermost, std::uintptr_t place)
{
    const LuaStackRoom room(place, [outermost] { return outermost; });
    if (!room.isAnotherStack())
        return room.getLeft() > LuaStackRoom::RESERVE_OF_HOST_CALL;
    // The host has switched stacks, so this is the outermost call on this one.
    m_slot->setPlaces({place, place});
    return true;
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

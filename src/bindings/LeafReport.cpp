#include "bindings/BindingMessages.h"
#include "core/ExceptionContainment.h"
#include "core/LogSources.h"

#include "tbScripts/LogManager.h"
#include "tbScripts/typed/LeafResult.h"

namespace tbScripts
{

void typed::reportLeafThrew() noexcept
{
    contain(
        [] { LogManager::getInstance()->log(messages::LEAF_HAS_THROWN, LOG_SOURCE_LUA_FUNCTION); },
        [] {});
}

} // namespace tbScripts

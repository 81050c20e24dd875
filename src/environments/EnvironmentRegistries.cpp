// The registries of an environment: host bindings by name.

#include "core/LogSources.h"
#include "environments/EnvironmentBindings.h"
#include "environments/EnvironmentMessages.h"
#include "environments/EnvironmentStrategy.h"

#include "tbScripts/Environment.h"
#include "tbScripts/Function.h"
#include "tbScripts/LogManager.h"

#include <string_view>
#include <utility>

namespace tbScripts
{

namespace
{

std::string keyOf(const tbMemory::StringView& name)
{
    return std::string(std::string_view(name));
}

} // namespace

Function* Environment::setFunc(const tbMemory::StringView& name)
{
    if (m_strategy->isTearingDown())
        return nullptr;
    if (!isFuncSet(name))
        return _declareFunc(name);

    const std::weak_ptr<const char> life = m_life;
    LogManager::getInstance()->log(messages::functionAlreadyExistant(name), LOG_SOURCE_ENVIRONMENT);
    if (life.expired())
        return nullptr; // the receiver has destroyed this environment
    Function* const function = getFunc(name);
    if (!function)
        return _declareFunc(name);
    function->reset();
    if (life.expired())
        return nullptr; // the end of the old callable has
    m_strategy->installFunction(*function);
    return life.expired() ? nullptr : function;
}

bool Environment::isFuncSet(const tbMemory::StringView& name) const
{
    return m_functions.count(keyOf(name)) > 0;
}

Function* Environment::getFunc(const tbMemory::StringView& name) const
{
    const auto known = m_functions.find(keyOf(name));
    return known == m_functions.end() ? nullptr : known->second;
}

Function* Environment::_declareFunc(const tbMemory::StringView& name)
{
    const std::weak_ptr<const char> life = m_life;
    std::unique_ptr<Function> created = m_strategy->createFunction(name);
    if (life.expired())
        return nullptr; // a metamethod of the globals has destroyed this environment
    Function* const function = created.get();
    if (created)
        m_bindings->functions.push_back(std::move(created));
    m_functions[keyOf(name)] = function; // null entries too: the name counts as declared
    return function;
}

} // namespace tbScripts

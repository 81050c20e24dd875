#include "environments/DummyEnvironmentStrategy.h"

#include "core/LogSources.h"
#include "environments/EnvironmentMessages.h"

#include "tbScripts/Function.h"
#include "tbScripts/LogManager.h"
#include "tbScripts/Namespace.h"
#include "tbScripts/UserType.h"

namespace tbScripts
{

namespace
{

constexpr const char* SETTING_VARIABLE = "Setting a variable in environment '";
constexpr const char* REQUESTING_VARIABLE = "Requesting a variable in environment '";

} // namespace

bool DummyEnvironmentStrategy::execute(const Script& /*script*/)
{
    resetResult();
    setFailure(messages::EXECUTION_WITHOUT_INTERPRETER, EXECUTION_NO_INTERPRETER);
    LogManager::getInstance()->log(messages::EXECUTION_WITHOUT_INTERPRETER, LOG_SOURCE_ENVIRONMENT);
    return false;
}

void DummyEnvironmentStrategy::requestGarbageCollection()
{
    _warn("Requesting a garbage collection in environment '", messages::HAS_NO_INTERPRETER);
}

void DummyEnvironmentStrategy::clearGlobals() {}

void DummyEnvironmentStrategy::setVarObjectReference(
    const tbMemory::StringView& /*name*/, const ScriptObjectReference& /*value*/)
{
    _warn(SETTING_VARIABLE, messages::HAS_NO_INTERPRETER);
}

void DummyEnvironmentStrategy::setVarString(
    const tbMemory::StringView& /*name*/, const tbMemory::StringView& /*value*/)
{
    _warn(SETTING_VARIABLE, messages::HAS_NO_INTERPRETER);
}

void DummyEnvironmentStrategy::setVarDouble(const tbMemory::StringView& /*name*/, double /*value*/)
{
    _warn(SETTING_VARIABLE, messages::HAS_NO_INTERPRETER);
}

void DummyEnvironmentStrategy::setVarFloat(const tbMemory::StringView& /*name*/, float /*value*/)
{
    _warn(SETTING_VARIABLE, messages::HAS_NO_INTERPRETER);
}

void DummyEnvironmentStrategy::setVarInt(
    const tbMemory::StringView& /*name*/, std::int32_t /*value*/)
{
    _warn(SETTING_VARIABLE, messages::HAS_NO_INTERPRETER);
}

void DummyEnvironmentStrategy::setVarBool(const tbMemory::StringView& /*name*/, bool /*value*/)
{
    _warn(SETTING_VARIABLE, messages::HAS_NO_INTERPRETER);
}

void DummyEnvironmentStrategy::setObject(
    const tbMemory::StringView& /*name*/,
    const tbMemory::StringView& /*userTypeName*/,
    void* /*object*/)
{
    _warn("Setting an object in environment '", messages::HAS_NO_INTERPRETER);
}

bool DummyEnvironmentStrategy::isVarSet(const tbMemory::StringView& /*name*/)
{
    // Compatibility: the article is doubled, and hosts compare the message (decision 0006).
    _warn("Querying if a a variable is set in environment '", messages::HAS_NO_INTERPRETER);
    return false;
}

ScriptObjectReference
DummyEnvironmentStrategy::getVarObjectReference(const tbMemory::StringView& /*name*/)
{
    _warn(REQUESTING_VARIABLE, messages::HAS_NO_INTERPRETER);
    return ScriptObjectReference();
}

tbMemory::StringView DummyEnvironmentStrategy::getVarString(
    const tbMemory::StringView& /*name*/, const tbMemory::StringView& defaultValue)
{
    _warn(REQUESTING_VARIABLE, messages::HAS_NO_INTERPRETER);
    return defaultValue;
}

double
DummyEnvironmentStrategy::getVarDouble(const tbMemory::StringView& /*name*/, double defaultValue)
{
    _warn(REQUESTING_VARIABLE, messages::HAS_NO_INTERPRETER);
    return defaultValue;
}

float DummyEnvironmentStrategy::getVarFloat(
    const tbMemory::StringView& /*name*/, float defaultValue)
{
    _warn(REQUESTING_VARIABLE, messages::HAS_NO_INTERPRETER);
    return defaultValue;
}

std::int32_t
DummyEnvironmentStrategy::getVarInt(const tbMemory::StringView& /*name*/, std::int32_t defaultValue)
{
    _warn(REQUESTING_VARIABLE, messages::HAS_NO_INTERPRETER);
    return defaultValue;
}

bool DummyEnvironmentStrategy::getVarBool(const tbMemory::StringView& /*name*/, bool defaultValue)
{
    _warn(REQUESTING_VARIABLE, messages::HAS_NO_INTERPRETER);
    return defaultValue;
}

void* DummyEnvironmentStrategy::getObject(
    const tbMemory::StringView& /*name*/, const tbMemory::StringView& /*userTypeName*/)
{
    _warn("Requesting an object variable in environment '", messages::HAS_NO_INTERPRETER);
    return nullptr;
}

ScriptObjectReference
DummyEnvironmentStrategy::getScriptFunction(const tbMemory::StringView& /*name*/)
{
    _warn("Requesting a script function in environment '", messages::HAS_NO_INTERPRETER);
    return ScriptObjectReference();
}

std::unique_ptr<Function>
DummyEnvironmentStrategy::createFunction(const tbMemory::StringView& /*name*/)
{
    _warn("Requesting a function in environment '", messages::HAS_NO_INTERPRETER_NULL);
    return nullptr;
}

std::unique_ptr<UserType>
DummyEnvironmentStrategy::createUserType(const tbMemory::StringView& /*name*/)
{
    _warn("Requesting a user type in environment '", messages::HAS_NO_INTERPRETER_NULL);
    return nullptr;
}

std::unique_ptr<Namespace>
DummyEnvironmentStrategy::createNamespace(const tbMemory::StringView& /*name*/)
{
    _warn("Requesting a namespace in environment '", messages::HAS_NO_INTERPRETER_NULL);
    return nullptr;
}

bool DummyEnvironmentStrategy::callScriptFunction(
    const ScriptObjectReference& /*function*/,
    const tbMemory::BufferView<FunctionParameter>& /*inputs*/,
    tbMemory::BufferView<FunctionParameter>& /*outputs*/)
{
    _warn("Requesting a script function call in environment '", messages::HAS_NO_INTERPRETER_VOID);
    return false;
}

tbMemory::Buffer DummyEnvironmentStrategy::serializeScriptObject(
    const ScriptObjectReference& /*object*/, bool /*transferOwnership*/)
{
    _warn(
        "Requesting a script object serialization in environment '",
        messages::HAS_NO_INTERPRETER_EMPTY_BUFFER);
    return tbMemory::Buffer();
}

ScriptObjectReference DummyEnvironmentStrategy::deserializeScriptObject(
    const tbMemory::BufferView<unsigned char>& /*bytes*/)
{
    _warn(
        "Requesting a script object deserialization in environment '",
        messages::HAS_NO_INTERPRETER);
    return ScriptObjectReference();
}

void DummyEnvironmentStrategy::installFunction(Function& /*function*/) {}

void DummyEnvironmentStrategy::installUserType(UserType& /*type*/) {}

void DummyEnvironmentStrategy::installNamespace(Namespace& /*scope*/) {}

bool DummyEnvironmentStrategy::isRunning() const
{
    return false;
}

bool DummyEnvironmentStrategy::isTearingDown() const
{
    return m_isTearingDown;
}

void DummyEnvironmentStrategy::beginTeardown()
{
    m_isTearingDown = true;
}

void DummyEnvironmentStrategy::shutDown() {}

void DummyEnvironmentStrategy::defer(std::function<void()> /*action*/) {}

void DummyEnvironmentStrategy::_warn(const char* request, const char* suffix) const
{
    LogManager::getInstance()->log(
        request + tbMemory::String(getEnvironmentName()) + suffix, LOG_SOURCE_ENVIRONMENT);
}

} // namespace tbScripts

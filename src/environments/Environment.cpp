#include "tbScripts/Environment.h"

#include "environments/EnvironmentCore.h"

// Each operation works through a hold on the core: this object may be destroyed during the
// operation.
namespace tbScripts
{

Environment::Environment()
    : m_core(makeCounted<EnvironmentCore>().detach())
{
}

Environment::Environment(const Environment& other)
    : m_core(makeCounted<EnvironmentCore>(*other.m_core).detach())
{
}

Environment& Environment::operator=(const Environment& other)
{
    if (this != &other)
        EnvironmentHold(m_core)->assign(*other.m_core);
    return *this;
}

Environment::~Environment()
{
    m_core->end();
    EnvironmentHold::letGo(*m_core);
}

tbMemory::StringView Environment::getName() const
{
    return m_core->getName();
}

void Environment::setName(const tbMemory::StringView& name)
{
    m_core->getName() = name;
}

const ExecutionResult& Environment::getLastExecutionResult() const
{
    return m_core->getLastExecutionResult();
}

void Environment::setEnvironmentFor(INTERPRETER interpreter)
{
    EnvironmentHold(m_core)->switchInterpreter(interpreter);
}

bool Environment::execute(const Script& script)
{
    return EnvironmentHold(m_core)->getStrategy().execute(script);
}

void Environment::requestGarbageCollection()
{
    EnvironmentHold(m_core)->getStrategy().requestGarbageCollection();
}

void Environment::setVar(const tbMemory::StringView& name, bool value)
{
    EnvironmentHold(m_core)->getStrategy().setVarBool(name, value);
}

void Environment::setVar(const tbMemory::StringView& name, int value)
{
    EnvironmentHold(m_core)->getStrategy().setVarInt(name, value);
}

void Environment::setVar(const tbMemory::StringView& name, float value)
{
    EnvironmentHold(m_core)->getStrategy().setVarFloat(name, value);
}

void Environment::setVar(const tbMemory::StringView& name, double value)
{
    EnvironmentHold(m_core)->getStrategy().setVarDouble(name, value);
}

void Environment::setVar(const tbMemory::StringView& name, const char* value)
{
    EnvironmentHold(m_core)->getStrategy().setVarString(name, value);
}

void Environment::setVar(const tbMemory::StringView& name, const tbMemory::StringView& value)
{
    EnvironmentHold(m_core)->getStrategy().setVarString(name, value);
}

void Environment::setVar(const tbMemory::StringView& name, const ScriptObjectReference& value)
{
    EnvironmentHold(m_core)->getStrategy().setVarObjectReference(name, value);
}

void Environment::setObject(
    const tbMemory::StringView& name, const tbMemory::StringView& userTypeName, void* object)
{
    EnvironmentHold(m_core)->getStrategy().setObject(name, userTypeName, object);
}

bool Environment::isVarSet(const tbMemory::StringView& name) const
{
    return EnvironmentHold(m_core)->getStrategy().isVarSet(name);
}

bool Environment::getVar(const tbMemory::StringView& name, bool defaultValue) const
{
    return EnvironmentHold(m_core)->getStrategy().getVarBool(name, defaultValue);
}

int Environment::getVar(const tbMemory::StringView& name, int defaultValue) const
{
    return EnvironmentHold(m_core)->getStrategy().getVarInt(name, defaultValue);
}

float Environment::getVar(const tbMemory::StringView& name, float defaultValue) const
{
    return EnvironmentHold(m_core)->getStrategy().getVarFloat(name, defaultValue);
}

double Environment::getVar(const tbMemory::StringView& name, double defaultValue) const
{
    return EnvironmentHold(m_core)->getStrategy().getVarDouble(name, defaultValue);
}

tbMemory::StringView
Environment::getVar(const tbMemory::StringView& name, const char* defaultValue) const
{
    return EnvironmentHold(m_core)->getStrategy().getVarString(name, defaultValue);
}

tbMemory::StringView Environment::getVar(
    const tbMemory::StringView& name, const tbMemory::StringView& defaultValue) const
{
    return EnvironmentHold(m_core)->getStrategy().getVarString(name, defaultValue);
}

ScriptObjectReference Environment::getVar(const tbMemory::StringView& name) const
{
    return EnvironmentHold(m_core)->getStrategy().getVarObjectReference(name);
}

void* Environment::getObject(
    const tbMemory::StringView& name, const tbMemory::StringView& userTypeName) const
{
    return EnvironmentHold(m_core)->getStrategy().getObject(name, userTypeName);
}

ScriptObjectReference Environment::getScriptFunction(const tbMemory::StringView& name) const
{
    return EnvironmentHold(m_core)->getStrategy().getScriptFunction(name);
}

bool Environment::callScriptFunction(
    const ScriptObjectReference& function,
    const tbMemory::BufferView<FunctionParameter>& inputs,
    tbMemory::BufferView<FunctionParameter>& outputs)
{
    return EnvironmentHold(m_core)->getStrategy().callScriptFunction(function, inputs, outputs);
}

tbMemory::Buffer
Environment::serializeScriptObject(const ScriptObjectReference& object, bool transferOwnership)
{
    return EnvironmentHold(m_core)->getStrategy().serializeScriptObject(object, transferOwnership);
}

ScriptObjectReference
Environment::deserializeScriptObject(const tbMemory::BufferView<unsigned char>& bytes)
{
    return EnvironmentHold(m_core)->getStrategy().deserializeScriptObject(bytes);
}

void Environment::setSerializationLimit(std::size_t bytes)
{
    m_core->getStrategy().setSerializationLimit(bytes);
}

std::size_t Environment::getSerializationLimit() const
{
    return m_core->getStrategy().getSerializationLimit();
}

Function* Environment::setFunc(const tbMemory::StringView& name)
{
    return EnvironmentHold(m_core)->setFunction(name);
}

bool Environment::isFuncSet(const tbMemory::StringView& name) const
{
    return m_core->isFunctionSet(name);
}

Function* Environment::getFunc(const tbMemory::StringView& name) const
{
    return m_core->findFunction(name);
}

UserType* Environment::setUserType(const tbMemory::StringView& name)
{
    return EnvironmentHold(m_core)->setUserType(name);
}

bool Environment::isUserTypeSet(const tbMemory::StringView& name) const
{
    return m_core->isUserTypeSet(name);
}

UserType* Environment::getUserType(const tbMemory::StringView& name) const
{
    return m_core->findUserType(name);
}

Namespace* Environment::setNamespace(const tbMemory::StringView& name)
{
    return EnvironmentHold(m_core)->setNamespace(name);
}

bool Environment::isNamespaceSet(const tbMemory::StringView& name) const
{
    return m_core->isNamespaceSet(name);
}

Namespace* Environment::getNamespace(const tbMemory::StringView& name) const
{
    return m_core->findNamespace(name);
}

} // namespace tbScripts

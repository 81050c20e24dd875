#include "environments/lua/LuaEnvironmentStrategy.h"

#include "bindings/lua/LuaDuplicateDeclaration.h"
#include "bindings/lua/functions/LuaFunction.h"
#include "bindings/lua/namespaces/LuaNamespace.h"
#include "bindings/lua/types/LuaUserType.h"
#include "bindings/lua/values/LuaInstanceBox.h"
#include "core/LogSources.h"
#include "core/lua/LuaNumber.h"
#include "core/lua/LuaTables.h"
#include "core/lua/LuaText.h"
#include "core/lua/calls/LuaHostCall.h"
#include "core/lua/references/LuaScriptObjectInterpreterReference.h"
#include "environments/EnvironmentMessages.h"
#include "environments/lua/LuaGlobals.h"
#include "environments/lua/LuaScriptCalls.h"
#include "environments/lua/bytes/LuaValueReader.h"
#include "environments/lua/bytes/LuaValueWriter.h"
#include "scripts/lua/LuaScriptStrategy.h"

#include "tbScripts/LogManager.h"
#include "tbScripts/Script.h"

#include <utility>

namespace tbScripts::lua
{

namespace
{

constexpr std::int32_t CODE_OTHER_INTERPRETER = 3;
constexpr std::int32_t CODE_NO_BYTECODE = 4;

// Functions are left out: they are obtained as functions.
bool isObjectType(int luaType)
{
    return luaType == LUA_TBOOLEAN || luaType == LUA_TNUMBER || luaType == LUA_TSTRING ||
           luaType == LUA_TTABLE || luaType == LUA_TUSERDATA;
}

bool isFunctionType(int luaType)
{
    return luaType == LUA_TFUNCTION;
}

template <typename T, typename Front>
void resolveDuplicateTo(Front& made, Front& known, const LuaStateHandle& handle)
{
    auto* const ours = dynamic_cast<T*>(&made);
    auto* const others = dynamic_cast<T*>(&known);
    if (ours && others)
        lua::resolveDuplicate(*ours, *others, handle);
}

} // namespace

LuaEnvironmentStrategy::LuaEnvironmentStrategy(Name environmentName)
    : EnvironmentStrategy(std::move(environmentName))
    , m_handle(LuaStateHandle::open())
{
}

LuaEnvironmentStrategy::~LuaEnvironmentStrategy()
{
    m_handle.close();
}

bool LuaEnvironmentStrategy::hasState() const
{
    return m_handle.get() != nullptr;
}

const LuaStateHandle& LuaEnvironmentStrategy::getHandle() const
{
    return m_handle;
}

bool LuaEnvironmentStrategy::execute(const Script& script)
{
    LuaHostCall call(m_handle);
    if (call.isRefused())
        return false;
    resetResult();
    // The run may destroy the script: what is needed of it is held.
    const std::shared_ptr<const tbMemory::String> scriptName = script.m_name;
    if (script.getTargetInterpreter() != INTERPRETER_LUA)
        return _fail(messages::scriptOfOtherInterpreter(*scriptName), CODE_OTHER_INTERPRETER);

    // A disabled script still says that it is one for Lua.
    const auto* const compiler = dynamic_cast<const LuaScriptStrategy*>(script._getStrategy());
    const std::shared_ptr<const LuaBytecode> bytecode =
        compiler ? compiler->getBytecode() : nullptr;
    if (!bytecode)
        return _fail(messages::scriptWithoutBytecode(*scriptName), CODE_NO_BYTECODE);

    const LuaCallOutcome outcome = runChunk(call, m_handle, m_chunks, *bytecode, *scriptName);
    if (outcome.code != 0)
        return _fail(messages::executionFailed(*scriptName, outcome.errorText), outcome.code);
    resetResult(); // calls inside the run have left theirs
    return true;
}

void LuaEnvironmentStrategy::requestGarbageCollection()
{
    LuaHostCall call(m_handle, LuaHostCall::entryOfCollection(m_handle));
    collectGarbageTwice(call);
}

void LuaEnvironmentStrategy::clearGlobals()
{
    LuaHostCall call(m_handle, LuaHostCall::ENTRY::UPKEEP);
    call.run(&keepForeignTables);
    call.run([this](lua_State* state) { clearAllGlobals(*m_handle.getSlot(), state); });
    collectGarbageTwice(call);
}

void LuaEnvironmentStrategy::setVarObjectReference(
    const tbMemory::StringView& name, const ScriptObjectReference& value)
{
    _setGlobal(name, [&](lua_State* state) { pushReferenced(state, value, m_handle); });
}

void LuaEnvironmentStrategy::setVarString(
    const tbMemory::StringView& name, const tbMemory::StringView& value)
{
    _setGlobal(name, [&](lua_State* state) { pushText(state, value); });
}

void LuaEnvironmentStrategy::setVarDouble(const tbMemory::StringView& name, double value)
{
    _setGlobal(name, [value](lua_State* state) { lua_pushnumber(state, value); });
}

void LuaEnvironmentStrategy::setVarFloat(const tbMemory::StringView& name, float value)
{
    setVarDouble(name, static_cast<double>(value));
}

void LuaEnvironmentStrategy::setVarInt(const tbMemory::StringView& name, std::int32_t value)
{
    _setGlobal(name, [value](lua_State* state) { lua_pushinteger(state, value); });
}

void LuaEnvironmentStrategy::setVarBool(const tbMemory::StringView& name, bool value)
{
    _setGlobal(name, [value](lua_State* state) { lua_pushboolean(state, value ? 1 : 0); });
}

void LuaEnvironmentStrategy::setObject(
    const tbMemory::StringView& name, const tbMemory::StringView& userTypeName, void* object)
{
    _setGlobal(
        name,
        [&](lua_State* state)
        { pushHostObject(*m_handle.getSlot(), state, object, userTypeName); });
}

bool LuaEnvironmentStrategy::isVarSet(const tbMemory::StringView& name)
{
    bool isSet = false;
    _readGlobal(name, [&](lua_State* state) { isSet = !lua_isnil(state, -1); });
    return isSet;
}

ScriptObjectReference
LuaEnvironmentStrategy::getVarObjectReference(const tbMemory::StringView& name)
{
    return _anchorGlobal(name, PARAM_TYPE_SCRIPT_OBJECT, &isObjectType);
}

tbMemory::StringView LuaEnvironmentStrategy::getVarString(
    const tbMemory::StringView& name, const tbMemory::StringView& defaultValue)
{
    tbMemory::StringView value = defaultValue;
    _readGlobal(
        name,
        [&](lua_State* state)
        {
            const int type = lua_type(state, -1);
            if (type == LUA_TSTRING)
            {
                value = textAt(state, -1);
            }
            else if (type == LUA_TNUMBER)
            {
                // The text is made here and nothing in the script refers to it.
                m_textOfNumber = textAt(state, -1);
                value = m_textOfNumber;
            }
        });
    return value;
}

double LuaEnvironmentStrategy::getVarDouble(const tbMemory::StringView& name, double defaultValue)
{
    double value = defaultValue;
    _readNumber(name, [&value](double number) { value = number; });
    return value;
}

float LuaEnvironmentStrategy::getVarFloat(const tbMemory::StringView& name, float defaultValue)
{
    float value = defaultValue;
    _readNumber(name, [&value](double number) { value = narrowToFloat(number); });
    return value;
}

std::int32_t
LuaEnvironmentStrategy::getVarInt(const tbMemory::StringView& name, std::int32_t defaultValue)
{
    std::int32_t value = defaultValue;
    _readNumber(name, [&value](double number) { value = lowBitsToInt(number); });
    return value;
}

bool LuaEnvironmentStrategy::getVarBool(const tbMemory::StringView& name, bool defaultValue)
{
    bool value = defaultValue;
    _readGlobal(
        name,
        [&value](lua_State* state)
        {
            if (lua_isboolean(state, -1))
                value = lua_toboolean(state, -1) != 0;
        });
    return value;
}

void* LuaEnvironmentStrategy::getObject(
    const tbMemory::StringView& name, const tbMemory::StringView& userTypeName)
{
    void* object = nullptr;
    _readGlobal(
        name,
        [&](lua_State* state)
        {
            const LuaStateSlot& slot = *m_handle.getSlot();
            if (userTypeName.isNull())
            {
                object = untypedObjectAt(slot, state, -1);
                return;
            }
            const LuaInstance instance = instanceAt(slot, state, -1);
            if (instance.box && instance.typeName == userTypeName)
                object = instance.box->object;
        });
    return object;
}

ScriptObjectReference LuaEnvironmentStrategy::getScriptFunction(const tbMemory::StringView& name)
{
    return _anchorGlobal(name, PARAM_TYPE_SCRIPT_FUNCTION, &isFunctionType);
}

std::unique_ptr<Function> LuaEnvironmentStrategy::createFunction(const tbMemory::StringView& name)
{
    auto function = std::make_unique<LuaFunction>(name, m_handle);
    if (!function->isInstalled())
        return nullptr;
    return function;
}

std::unique_ptr<UserType> LuaEnvironmentStrategy::createUserType(const tbMemory::StringView& name)
{
    auto type = std::make_unique<LuaUserType>(name, m_handle);
    if (!type->isInstalled())
        return nullptr;
    return type;
}

std::unique_ptr<Namespace> LuaEnvironmentStrategy::createNamespace(const tbMemory::StringView& name)
{
    auto created = std::make_unique<LuaNamespace>(name, m_handle);
    if (!created->isInstalled())
        return nullptr;
    return created;
}

bool LuaEnvironmentStrategy::callScriptFunction(
    const ScriptObjectReference& function,
    const tbMemory::BufferView<FunctionParameter>& inputs,
    tbMemory::BufferView<FunctionParameter>& outputs)
{
    LuaHostCall call(m_handle);
    if (call.isRefused())
        return false;
    resetResult();
    std::size_t mismatch = outputs.size();
    const LuaCallOutcome outcome =
        callFunction(call, m_handle, function, inputs, outputs, mismatch);
    if (outcome.code != 0)
        return _fail(outcome.errorText, outcome.code);
    if (mismatch < outputs.size())
    {
        LogManager::getInstance()->log(
            messages::outputNotUnpacked(std::to_string(mismatch)),
            LOG_SOURCE_LUA_ENVIRONMENT_STRATEGY);
    }
    resetResult(); // calls inside the function have left theirs
    return true;
}

tbMemory::Buffer LuaEnvironmentStrategy::serializeScriptObject(
    const ScriptObjectReference& object, bool transferOwnership)
{
    LuaHostCall call(m_handle);
    if (call.isRefused())
        return tbMemory::Buffer();
    LuaValueWriter writer(*m_handle.getSlot(), transferOwnership);
    call.run(
        [&](lua_State* state)
        {
            pushReferenced(state, object, m_handle);
            writer.write(state);
        });
    return writer.takeBuffer();
}

ScriptObjectReference
LuaEnvironmentStrategy::deserializeScriptObject(const tbMemory::BufferView<unsigned char>& bytes)
{
    LuaHostCall call(m_handle);
    if (call.isRefused())
        return ScriptObjectReference();
    LuaValueReader reader(*m_handle.getSlot(), bytes);
    // All of it is made beforehand: an anchored value that nobody holds would stay in the registry,
    // and own objects that still belong to the bytes.
    ScriptObjectReference value =
        LuaScriptObjectInterpreterReference::make(m_handle, reader.getType());
    bool isAnchored = false;
    call.run(
        [&](lua_State* state)
        {
            if (!reader.read(state))
                return;
            LuaScriptObjectInterpreterReference::of(value).anchor(state);
            reader.handOverOwnership(state);
            isAnchored = true;
        });
    if (!isAnchored)
        value = ScriptObjectReference();
    return value;
}

void LuaEnvironmentStrategy::installFunction(Function& function)
{
    if (auto* const published = dynamic_cast<LuaFunction*>(&function))
        published->install(m_handle);
}

void LuaEnvironmentStrategy::installUserType(UserType& type)
{
    if (auto* const published = dynamic_cast<LuaUserType*>(&type))
        published->install(m_handle);
}

void LuaEnvironmentStrategy::installNamespace(Namespace& scope)
{
    if (auto* const published = dynamic_cast<LuaNamespace*>(&scope))
        published->install(m_handle);
}

void LuaEnvironmentStrategy::resolveDuplicate(std::unique_ptr<Function> made, Function& known)
{
    LuaHostCall call(m_handle, LuaHostCall::ENTRY::UPKEEP); // keeps both to its end
    resolveDuplicateTo<LuaFunction>(*made, known, m_handle);
    known.reset();
}

void LuaEnvironmentStrategy::resolveDuplicate(std::unique_ptr<UserType> made, UserType& known)
{
    resolveDuplicateTo<LuaUserType>(*made, known, m_handle);
}

void LuaEnvironmentStrategy::resolveDuplicate(std::unique_ptr<Namespace> made, Namespace& known)
{
    resolveDuplicateTo<LuaNamespace>(*made, known, m_handle);
}

bool LuaEnvironmentStrategy::isRunning() const
{
    const LuaStateSlot* const slot = m_handle.getSlot();
    return slot && (slot->hostCalls > 0 || slot->isClosing);
}

bool LuaEnvironmentStrategy::isTearingDown() const
{
    return !m_handle.get() || m_handle.getSlot()->isTearingDown;
}

void LuaEnvironmentStrategy::beginTeardown()
{
    if (m_handle.getSlot())
        m_handle.getSlot()->isTearingDown = true;
}

void LuaEnvironmentStrategy::shutDown()
{
    m_handle.close();
}

void LuaEnvironmentStrategy::putOff(std::function<void()> action)
{
    m_handle.getSlot()->putOff.push_back(std::move(action));
}

bool LuaEnvironmentStrategy::_fail(const tbMemory::StringView& message, std::int32_t code)
{
    setFailure(message, code);
    LogManager::getInstance()->log(message, LOG_SOURCE_LUA_ENVIRONMENT);
    setFailure(message, code); // again: calls of the receiver have left theirs
    return false;
}

template <typename PushValue>
void LuaEnvironmentStrategy::_setGlobal(const tbMemory::StringView& name, PushValue&& pushValue)
{
    LuaHostCall call(m_handle);
    call.run<STACK_AFTER_WORK::AS_BEFORE>(
        [&](lua_State* state) { setGlobal(*m_handle.getSlot(), state, name, pushValue); });
}

template <typename Read>
void LuaEnvironmentStrategy::_readGlobal(const tbMemory::StringView& name, Read&& read)
{
    LuaHostCall call(m_handle);
    call.run(
        [&](lua_State* state)
        {
            pushGlobal(*m_handle.getSlot(), state, name);
            read(state);
        });
}

template <typename TakeNumber>
void LuaEnvironmentStrategy::_readNumber(const tbMemory::StringView& name, TakeNumber&& takeNumber)
{
    _readGlobal(
        name,
        [&](lua_State* state)
        {
            // Not a number reads as 0, so that only a 0 has to be looked at twice.
            const double number = lua_tonumber(state, -1);
            if (number != 0.0 || lua_isnumber(state, -1))
                takeNumber(number);
        });
}

ScriptObjectReference LuaEnvironmentStrategy::_anchorGlobal(
    const tbMemory::StringView& name, FUNCTION_PARAMETER_TYPE type, bool (*accepts)(int luaType))
{
    // Made beforehand: an anchored value that nobody holds would stay in the registry.
    ScriptObjectReference anchored = LuaScriptObjectInterpreterReference::make(m_handle, type);
    bool isAnchored = false;
    _readGlobal(
        name,
        [&](lua_State* state)
        {
            if (!accepts(lua_type(state, -1)))
                return;
            LuaScriptObjectInterpreterReference::of(anchored).anchor(state);
            isAnchored = true;
        });
    if (!isAnchored)
        anchored = ScriptObjectReference();
    return anchored;
}

} // namespace tbScripts::lua

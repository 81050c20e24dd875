#include "bindings/lua/namespaces/LuaNamespace.h"

#include "bindings/BindingMessages.h"
#include "bindings/lua/LuaDuplicateDeclaration.h"
#include "bindings/lua/LuaNamedTables.h"
#include "bindings/lua/functions/LuaFunction.h"
#include "bindings/lua/functions/LuaFunctionClosure.h"
#include "bindings/lua/types/LuaFinalisers.h"
#include "bindings/lua/types/LuaTypeTable.h"
#include "bindings/lua/types/LuaUserType.h"
#include "bindings/lua/values/LuaInstanceBox.h"
#include "core/ExceptionContainment.h"
#include "core/LogSources.h"
#include "core/lua/LuaTables.h"
#include "core/lua/LuaText.h"
#include "core/lua/calls/LuaHostCall.h"
#include "core/lua/references/LuaScriptObjectInterpreterReference.h"

#include "tbScripts/LogManager.h"

#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

namespace tbScripts::lua
{

namespace
{

constexpr const char* SEPARATOR = "::";

void warn(const tbMemory::StringView& message)
{
    LogManager::getInstance()->log(message, LOG_SOURCE_LUA_NAMESPACE);
}

// Valid during a host call: until the call returns nothing is destroyed.
template <typename T>
std::vector<T*> objectsOf(const OwningRegistry<T>& registry)
{
    std::vector<T*> objects;
    objects.reserve(registry.size());
    for (const auto& [name, object] : registry)
        objects.push_back(object.get());
    return objects;
}

// Uninstalls and destroys each object, which has left its registry. `handle` is the owner's; the
// object may belong to another state, that of a copy of the environment.
template <typename T>
void dropAll(OwningRegistry<T> objects, const LuaStateHandle& handle)
{
    for (auto& [name, object] : objects)
    {
        object->uninstall();
        const LuaStateHandle own = object->getHandle();
        destroyWhenIdle(own, handle, std::move(object));
    }
}

// The same; the captures of callables are destroyed at once, the functions themselves maybe later.
// NOLINTNEXTLINE(performance-unnecessary-value-param): takes them
void dropAll(OwningRegistry<LuaFunction> functions, const LuaStateHandle& handle)
{
    for (auto& [name, function] : functions)
    {
        function->uninstall();
        function->reset();
        const LuaStateHandle own = function->getHandle();
        destroyWhenIdle(own, handle, std::move(function));
    }
}

// Returns whether what the value at `index` refers to may be an instance, or lead to one. Tables of
// types and namespaces do not count: the registry holds them too.
bool mayLeadToInstances(const LuaStateSlot& slot, lua_State* state, int index)
{
    switch (lua_type(state, index))
    {
    case LUA_TNIL:
    case LUA_TBOOLEAN:
    case LUA_TNUMBER:
    case LUA_TSTRING:
    case LUA_TLIGHTUSERDATA:
        return false;
    case LUA_TFUNCTION:
        return lua_tocfunction(state, index) != &callHostFunction;
    case LUA_TTABLE:
    {
        lua_pushvalue(state, index);
        const NAMED_TABLE kind = kindOfTable(slot, state);
        lua_pop(state, 1);
        return kind == NAMED_TABLE::FOREIGN;
    }
    default:
        return true;
    }
}

// Looks at the fields of the table on top of the stack. Stack: +0.
bool mayHoldInstances(const LuaStateSlot& slot, lua_State* state)
{
    const int tableIndex = lua_gettop(state);
    bool mayHold = false;
    lua_pushnil(state);
    while (!mayHold && lua_next(state, tableIndex))
    {
        mayHold = mayLeadToInstances(slot, state, tableIndex + 1) ||
                  mayLeadToInstances(slot, state, tableIndex + 2);
        lua_pop(state, 1);
    }
    lua_settop(state, tableIndex);
    return mayHold;
}

} // namespace

LuaNamespace::LuaNamespace(const tbMemory::StringView& name, const LuaStateHandle& handle)
    : LuaNamespace(name, name, LuaOwner::globals(), handle)
{
}

LuaNamespace::LuaNamespace(
    const tbMemory::StringView& name,
    const tbMemory::StringView& parentFullName,
    const LuaStateHandle& handle)
    : LuaNamespace(
          name,
          tbMemory::String(parentFullName) + SEPARATOR + name,
          LuaOwner::table(parentFullName),
          handle)
{
}

LuaNamespace::LuaNamespace(
    const tbMemory::StringView& name,
    const tbMemory::StringView& fullName,
    LuaOwner owner,
    const LuaStateHandle& handle)
    : Namespace(name)
    , m_fullName(fullName)
    , m_owner(std::move(owner))
{
    install(handle);
}

LuaNamespace::~LuaNamespace()
{
    contain([this] { uninstall(); }, [] {}); // a lack of memory must not end the process
}

bool LuaNamespace::install(const LuaStateHandle& handle)
{
    if (isInstalled() && m_handle.sharesStateWith(handle))
        return true;
    LuaHostCall call(handle); // first: leaving another state may run code of scripts and host
    if (call.isRefused())
        return false;
    _unpublish(); // its declarations stay, until the host declares them again
    m_handle = handle;

    NAMED_TABLE before = NAMED_TABLE::FOREIGN;
    const bool isDone = call.run(
        [&](lua_State* state)
        {
            const LuaStateSlot& slot = *m_handle.getSlot();
            before = makeNamedTable(slot, state, m_fullName);
            if (before == NAMED_TABLE::FOREIGN)
                return;
            registerNamespaceTable(slot, state);
            m_isPublished = true;
            m_owner.publish(slot, state, getName()); // last: this may destroy the namespace
        });
    if (!isDone)
    {
        m_isPublished = false;
        if (before == NAMED_TABLE::NONE)
            call.run([this](lua_State* state) { removeNamedTable(state, m_fullName); });
    }
    else if (before == NAMED_TABLE::FOREIGN)
    {
        warn(messages::nameIsReserved(m_fullName));
    }
    return isInstalled();
}

void LuaNamespace::uninstall()
{
    LuaHostCall call(m_handle, LuaHostCall::ENTRY::UPKEEP);
    if (!m_isReleased)
        release();
    _unpublish();
}

bool LuaNamespace::isInstalled() const
{
    return m_isPublished && m_handle.get();
}

Namespace* LuaNamespace::getNamespace(const tbMemory::StringView& name) const
{
    return findIn(m_namespaces, name);
}

UserType* LuaNamespace::getUserType(const tbMemory::StringView& name) const
{
    return findIn(m_userTypes, name);
}

void LuaNamespace::setVar(const tbMemory::StringView& name, const ScriptObjectReference& value)
{
    _setField(name, [&](lua_State* state) { pushReferenced(state, value, m_handle); });
}

void LuaNamespace::setVar(const tbMemory::StringView& name, const tbMemory::StringView& value)
{
    _setField(name, [&](lua_State* state) { pushText(state, value); });
}

void LuaNamespace::setVar(const tbMemory::StringView& name, double value)
{
    _setField(name, [value](lua_State* state) { lua_pushnumber(state, value); });
}

void LuaNamespace::setVar(const tbMemory::StringView& name, float value)
{
    setVar(name, static_cast<double>(value));
}

void LuaNamespace::setVar(const tbMemory::StringView& name, int value)
{
    _setField(name, [value](lua_State* state) { lua_pushinteger(state, value); });
}

void LuaNamespace::setVar(const tbMemory::StringView& name, bool value)
{
    _setField(name, [value](lua_State* state) { lua_pushboolean(state, value ? 1 : 0); });
}

void LuaNamespace::setVar(
    const tbMemory::StringView& name, const tbMemory::StringView& userTypeName, void* object)
{
    _setField(
        name,
        [&](lua_State* state)
        { pushHostObject(*m_handle.getSlot(), state, object, userTypeName); });
}

bool LuaNamespace::setEnumeration(
    const typed::TypeId& type, const typed::Enumerator* enumerators, int count)
{
    LuaHostCall call(m_handle);
    if (!_beginChange(call))
        return false;
    std::vector<double> values;
    values.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i)
        values.push_back(static_cast<double>(enumerators[i].value));
    call.getSlot().setEnumValues(type, std::move(values));
    return call.run(
        [&](lua_State* state)
        {
            pushNamedTable(state, m_fullName);
            for (int i = 0; i < count; ++i)
            {
                const auto value = static_cast<lua_Number>(enumerators[i].value);
                pushName(state, enumerators[i].name);
                lua_pushnumber(state, value);
                lua_rawset(state, -3);
                lua_pushnumber(state, value);
                pushName(state, enumerators[i].name);
                lua_rawset(state, -3);
            }
        });
}

Namespace* LuaNamespace::setNamespace(const tbMemory::StringView& name)
{
    return _declareIn(m_namespaces, name, [&] { return _declareNamespace(name); });
}

UserType* LuaNamespace::setUserType(const tbMemory::StringView& name)
{
    return _declareIn(m_userTypes, name, [&] { return _declareUserType(name); });
}

Function* LuaNamespace::setFunction(const tbMemory::StringView& name)
{
    return _declareIn(m_functions, name, [&] { return _declareFunction(name); });
}

void LuaNamespace::clear()
{
    LuaHostCall call(m_handle, LuaHostCall::entryOfCollection(m_handle));
    if (isInstalled() && call.run([](lua_State*) {}))
        _clear();
}

void LuaNamespace::release()
{
    LuaHostCall call(m_handle, LuaHostCall::ENTRY::UPKEEP);
    m_isReleased =
        true; // first: declarations made during the release have to be removed at the end
    if (!isInstalled())
    {
        _releaseWithoutState();
        return;
    }
    dropAll(std::exchange(m_functions, {}), m_handle);
    for (LuaNamespace* const inner : objectsOf(m_namespaces))
        inner->release();
    for (LuaUserType* const type : objectsOf(m_userTypes))
        type->clear();
    _clear();
    dropAll(std::exchange(m_namespaces, {}), m_handle);
    dropAll(std::exchange(m_userTypes, {}), m_handle);
}

void LuaNamespace::_releaseWithoutState()
{
    // No host call keeps this namespace alive: the destructors that run here may destroy it.
    const LuaStateHandle handle = m_handle;
    OwningRegistry<LuaFunction> functions = std::exchange(m_functions, {});
    OwningRegistry<LuaNamespace> namespaces = std::exchange(m_namespaces, {});
    OwningRegistry<LuaUserType> userTypes = std::exchange(m_userTypes, {});
    dropAll(std::move(functions), handle);
    dropAll(std::move(namespaces), handle);
    dropAll(std::move(userTypes), handle);
}

LuaNamespace* LuaNamespace::_declareNamespace(const tbMemory::StringView& name)
{
    LuaHostCall call(m_handle);
    if (!_beginChange(call))
        return nullptr;
    if (findIn(m_namespaces, name))
        warn(messages::namespaceAlreadyRegistered(name, getName()));
    return _installOrMake(
        m_namespaces,
        name,
        [&] { return std::make_unique<LuaNamespace>(name, m_fullName, m_handle); });
}

LuaUserType* LuaNamespace::_declareUserType(const tbMemory::StringView& name)
{
    LuaHostCall call(m_handle);
    if (!_beginChange(call))
        return nullptr;
    if (findIn(m_userTypes, name))
        warn(messages::userTypeAlreadyRegistered(name, getName()));
    LuaUserType* const type = _installOrMake(
        m_userTypes,
        name,
        [&] { return std::make_unique<LuaUserType>(name, m_fullName, m_handle); });
    if (!type)
        return nullptr;
    type->clear();
    return findIn(m_userTypes, name); // a callable's destructor may have released this namespace
}

LuaFunction* LuaNamespace::_declareFunction(const tbMemory::StringView& name)
{
    LuaHostCall call(m_handle);
    if (!_beginChange(call))
        return nullptr;
    if (findIn(m_functions, name))
        warn(messages::functionAlreadyRegistered(name, getName()));
    LuaFunction* const function = _installOrMake(
        m_functions,
        name,
        [&] { return std::make_unique<LuaFunction>(name, LuaOwner::table(m_fullName), m_handle); });
    if (!function)
        return nullptr;
    function->reset();
    return findIn(m_functions, name); // a callable's destructor may have released this namespace
}

bool LuaNamespace::_beginChange(const LuaHostCall& call)
{
    if (call.isRefused() || !isInstalled())
        return false;
    m_isReleased = false;
    return true;
}

template <typename T, typename Declare>
T* LuaNamespace::_declareIn(
    const OwningRegistry<T>& registry, const tbMemory::StringView& name, Declare&& declare)
{
    const std::weak_ptr<const char> life = m_life;
    const LuaStateHandle handle = m_handle;
    const tbMemory::String keptName(name); // the view may be of a destroyed object
    if (!declare() || life.expired() || !handle.get())
        return nullptr;
    return findIn(registry, keptName);
}

template <typename T, typename Make>
T* LuaNamespace::_installOrMake(
    OwningRegistry<T>& registry, const tbMemory::StringView& name, Make&& make)
{
    // Looked up here: the log receiver may have released this namespace.
    if (!isInstalled())
        return nullptr;
    if (T* const known = findIn(registry, name))
        return known->install(m_handle) && isInstalled() ? findIn(registry, name) : nullptr;
    std::unique_ptr<T> made = make();
    if (!made->isInstalled() || !isInstalled())
        return nullptr;
    if (T* const known = findIn(registry, name))
        resolveDuplicate(*made, *known, m_handle);
    else
        registry[keyOf(name)] = std::move(made);
    return findIn(registry, name);
}

template <typename PushValue>
void LuaNamespace::_setField(const tbMemory::StringView& name, PushValue&& pushValue)
{
    LuaHostCall call(m_handle);
    if (!_beginChange(call))
        return;
    call.run(
        [&](lua_State* state)
        {
            pushNamedTable(state, m_fullName);
            pushName(state, name);
            pushValue(state);
            lua_settable(state, -3);
        });
}

void LuaNamespace::_unpublish()
{
    const bool wasInstalled = isInstalled();
    m_isPublished = false;
    if (!wasInstalled)
        return;
    LuaHostCall call(m_handle, LuaHostCall::ENTRY::UPKEEP);
    call.run([this](lua_State* state)
             { m_owner.unpublish(*m_handle.getSlot(), state, getName()); });
    call.run([this](lua_State* state) { removeNamedTable(state, m_fullName); });
}

void LuaNamespace::_clear()
{
    LuaHostCall call(m_handle, LuaHostCall::ENTRY::UPKEEP);
    const LuaStateSlot* const slot = m_handle.getSlot();
    const unsigned freedBefore = slot ? slot->countFreedKeys() : 0;
    bool mayLeaveInstances = true;
    for (LuaFunction* const function : objectsOf(m_functions))
        function->reset();
    for (LuaNamespace* const inner : objectsOf(m_namespaces))
    {
        if (inner->isInstalled())
            inner->_clear();
    }
    call.run(
        [&](lua_State* state)
        {
            pushNamedTable(state, m_fullName);
            if (!lua_istable(state, -1))
                return;
            mayLeaveInstances = mayHoldInstances(*slot, state);
            LuaTypeTable::clearShared(*slot, state);
        });
    // The teardown clears all namespaces and collects once more at its end. A collection for each
    // would take quadratic time, so only those are collected whose instances are destroyed by that,
    // in the order of the namespaces.
    if (slot && slot->isTearingDown() && !mayLeaveInstances &&
        slot->countFreedKeys() == freedBefore)
        return;
    restoreFinalisers(call);
    collectGarbageTwice(call);
}

} // namespace tbScripts::lua

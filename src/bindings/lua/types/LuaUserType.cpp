#include "bindings/lua/types/LuaUserType.h"

#include "bindings/BindingMessages.h"
#include "bindings/FunctionAccess.h"
#include "bindings/lua/LuaNamedTables.h"
#include "bindings/lua/functions/LuaFunction.h"
#include "bindings/lua/typed/LuaPairs.h"
#include "bindings/lua/types/LuaTypeTable.h"
#include "core/ExceptionContainment.h"
#include "core/LogSources.h"
#include "core/lua/calls/LuaHostCall.h"
#include "core/lua/references/LuaRegistry.h"

#include "tbScripts/LogManager.h"

#include <array>
#include <cstddef>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace tbScripts::lua
{

namespace
{

constexpr const char* SEPARATOR = "::";
constexpr const char* WALK = "__pairs";
constexpr const char* ARRAY_READ = "__arrayRead";
constexpr const char* ARRAY_WRITE = "__arrayWrite";

struct Operator
{
    const char* name;
    bool isBinary;
};

constexpr std::array<Operator, 12> OPERATORS{
    {{"__tostring", false},
     {"__unm", false},
     {"__add", true},
     {"__sub", true},
     {"__mul", true},
     {"__div", true},
     {"__mod", true},
     {"__pow", true},
     {"__concat", true},
     {"__eq", true},
     {"__lt", true},
     {"__le", true}}};

// Getter and setter of a field share its name.
Counted<SharedName> nameOf(const LuaTypeField& field, const tbMemory::StringView& name)
{
    if (field.getter)
        return field.getter->getSharedName();
    return field.setter ? field.setter->getSharedName() : makeCounted<SharedName>(name);
}

// Swapped, so that the old callable is destroyed last: its destructor may run code of the host.
template <typename Definition>
void setCallable(
    Counted<Definition>& definition,
    const Counted<SharedName>& name,
    typename Definition::Callable& callable)
{
    if (!definition)
        definition = makeCounted<Definition>(name);
    editDefinition(definition).setCallable(callable);
}

// The same for a callable of the typed layer.
template <typename Definition>
void setTyped(
    Counted<Definition>& definition,
    const Counted<SharedName>& name,
    Counted<TypedCallable>& callable)
{
    if (!definition)
        definition = makeCounted<Definition>(name);
    Definition& edited = editDefinition(definition);
    edited.endLeaf();
    std::swap(edited.typed, callable);
}

void dropMethods(LuaTypeCore& core)
{
    // Each has left the registry before it is destroyed, because the destructor of its callable may
    // run code of the host.
    auto methods = std::exchange(core.methods, {});
    core.arrayRead = nullptr;
    for (auto& [name, method] : methods)
    {
        method->uninstall();
        method->reset(); // drops the captures now, even if the method has to stay
        destroyWhenIdle(core.handle, std::move(method));
    }
}

void dropFields(LuaTypeCore& core)
{
    std::vector<Counted<GetterDefinition>> getters;
    std::vector<Counted<SetterDefinition>> setters;
    for (auto& [name, field] : core.fields)
    {
        if (field.setter)
            field.setter->endLeaf(); // what runs may hold the definition for long
        getters.push_back(std::move(field.getter));
        setters.push_back(std::move(field.setter));
        field.isReadDirectly = false;
        field.isWrittenDirectly = false;
    }
}

void dropFurther(LuaTypeCore& core)
{
    const Counted<TypedCallable> readByName = std::exchange(core.readByName, {});
    const Counted<TypedCallable> writeByName = std::exchange(core.writeByName, {});
    const auto baseCores = std::exchange(core.baseCores, {});
    core.bases.clear();
}

// Returns the method that `declare` creates, looked up after its host call has ended: deferred
// actions may have destroyed or cleared the type.
template <typename Declare>
Function* declareMethodIn(
    // NOLINTNEXTLINE(performance-unnecessary-value-param): keeps the core alive during the call
    std::shared_ptr<const LuaTypeCore> core,
    const tbMemory::StringView& name,
    Declare&& declare)
{
    const tbMemory::String keptName(name); // the view may be of a destroyed method
    if (!declare() || !core->isAlive || !core->handle.get())
        return nullptr;
    return findIn(core->methods, keptName);
}

} // namespace

LuaUserType::LuaUserType(const tbMemory::StringView& name, const LuaStateHandle& handle)
    : LuaUserType(name, name, LuaOwner::globals(), handle)
{
}

LuaUserType::LuaUserType(
    const tbMemory::StringView& name,
    const tbMemory::StringView& namespaceFullName,
    const LuaStateHandle& handle)
    : LuaUserType(
          name,
          tbMemory::String(namespaceFullName) + SEPARATOR + name,
          LuaOwner::table(namespaceFullName),
          handle)
{
}

LuaUserType::LuaUserType(
    const tbMemory::StringView& name,
    const tbMemory::StringView& fullName,
    LuaOwner owner,
    const LuaStateHandle& handle)
    : UserType(name)
    , m_owner(std::move(owner))
    , m_core(std::make_shared<LuaTypeCore>(LuaStateHandle(), fullName))
{
    setFullName(fullName);
    Destructor doNothing = [](void*) {};
    setCallable(m_core->destructor, makeCounted<SharedName>(fullName), doNothing);
    install(handle);
}

LuaUserType::~LuaUserType()
{
    contain([this] { uninstall(); }, [] {}); // a lack of memory must not end the process
}

bool LuaUserType::install(const LuaStateHandle& handle)
{
    if (isInstalled() && m_core->handle.sharesStateWith(handle))
        return true;
    LuaHostCall call(handle); // first: leaving another state may run code of scripts and host
    if (call.isRefused())
        return false;
    uninstall();

    // A new core for each state: instances of an earlier state still need its core.
    auto core = std::make_shared<LuaTypeCore>(handle, getFullName());
    core->constructor = std::move(m_core->constructor);
    Destructor destructor = (*m_core->destructor).callable;
    setCallable(core->destructor, makeCounted<SharedName>(getFullName()), destructor);
    core->hasOwnDestructor = m_core->hasOwnDestructor;
    const typed::TypeId* const boundType = m_core->type;
    m_core = std::move(core);

    NAMED_TABLE before = NAMED_TABLE::FOREIGN;
    const bool isDone = call.run(
        [&](lua_State* state)
        {
            LuaStateSlot& slot = *m_core->handle.getSlot();
            before = LuaTypeTable::pushParts(slot, state, m_core);
            if (before == NAMED_TABLE::FOREIGN)
                return;
            if (m_core->constructor)
                LuaTypeTable::publishFactory(state);
            lua_pushvalue(state, -1);
            if (boundType && (!m_core->type || m_core->type == boundType))
                m_core->bindTo(*boundType);
            m_core->partsKey = takeRegistrySlot(slot, state);
            slot.addTypeParts(m_core->partsKey);
            LuaTypeTable::pushTable(state);
            m_owner.publish(slot, state, getName()); // this may change or destroy the type
            LuaTypeTable::replaceEarlier(*m_core, state);
            LuaTypeTable::forgetFormer(state);
        });
    if (!isDone)
        _abandon(call, before);
    m_core->isAlive = isInstalled();
    if (isDone && before == NAMED_TABLE::FOREIGN)
    {
        LogManager::getInstance()->log(
            messages::nameIsReserved(getFullName()), LOG_SOURCE_LUA_USER_TYPE);
    }
    return isInstalled();
}

void LuaUserType::uninstall()
{
    m_core->isAlive = false; // first: from here on nothing can be declared
    m_core->forgetTable();
    if (!isInstalled())
    {
        m_core->partsKey = LUA_NOREF;
        _dropMembers();
        return;
    }
    LuaHostCall call(m_core->handle, LuaHostCall::ENTRY::UPKEEP);
    clear();
    if (!isInstalled())
        return; // the destructor of a callable has destroyed this type
    LuaStateSlot& slot = *m_core->handle.getSlot();
    _runWithParts(call, &LuaTypeTable::restoreFinaliser);
    if (!isInstalled())
        return; // a finaliser has destroyed this type
    _freeParts(slot);
    call.run([&](lua_State* state) { m_owner.unpublish(slot, state, getName()); });
    call.run([this](lua_State* state) { removeNamedTable(state, getFullName()); });
}

bool LuaUserType::isInstalled() const
{
    return m_core->partsKey != LUA_NOREF && m_core->handle.get();
}

Function* LuaUserType::getMethod(const tbMemory::StringView& name) const
{
    return _findMethod(name);
}

Function* LuaUserType::getStaticMethod(const tbMemory::StringView& name) const
{
    return _findMethod(name);
}

void LuaUserType::setConstructor(Constructor constructor)
{
    LuaHostCall call(m_core->handle);
    if (!_isUsable(call))
        return;
    setCallable(m_core->constructor, makeCounted<SharedName>(getFullName()), constructor);
    _runWithParts(call, [](lua_State* state) { LuaTypeTable::publishFactory(state); });
}

void LuaUserType::setDestructor(Destructor destructor)
{
    LuaHostCall call(m_core->handle);
    if (!_isUsable(call))
        return;
    setCallable(m_core->destructor, makeCounted<SharedName>(getFullName()), destructor);
    m_core->hasOwnDestructor = true;
    _runWithParts(call, [](lua_State* state) { LuaTypeTable::publishFinaliser(state); });
}

Function* LuaUserType::setMethod(const tbMemory::StringView& name, bool selfOwnedByScript)
{
    const FUNCTION_PARAMETER_TYPE selfType =
        selfOwnedByScript ? PARAM_TYPE_USER_TYPE_OWNED : PARAM_TYPE_USER_TYPE;
    return declareMethodIn(m_core, name, [&] { return _declareMethod(name, {selfType}); });
}

Function* LuaUserType::setStaticMethod(const tbMemory::StringView& name)
{
    return declareMethodIn(m_core, name, [&] { return _declareMethod(name, {}); });
}

Function* LuaUserType::setOperator(BUILT_IN_FUNCTION op)
{
    const auto number = static_cast<std::size_t>(op);
    if (number >= OPERATORS.size())
    {
        LuaHostCall call(m_core->handle);
        if (_isUsable(call))
        {
            LogManager::getInstance()->log(
                messages::unknownOperator(getFullName()), LOG_SOURCE_LUA_USER_TYPE);
        }
        return nullptr;
    }
    const Operator& known = OPERATORS.at(number);
    return declareMethodIn(
        m_core,
        known.name,
        [&]
        {
            return known.isBinary
                       ? _declareMethod(
                             known.name, {PARAM_TYPE_USER_TYPE, PARAM_TYPE_USER_TYPE_OWNED})
                       : _declareMethod(known.name, {PARAM_TYPE_USER_TYPE});
        });
}

void LuaUserType::setField(UserTypeFieldDescriptor descriptor)
{
    LuaHostCall call(m_core->handle);
    if (!_isUsable(call))
        return;
    if (descriptor.getter)
        _setGetter(call, descriptor.name, descriptor.getter);
    if (!descriptor.setter || !_isUsable(call))
        return;
    _setSetter(
        call,
        descriptor.name,
        descriptor.setter,
        {FunctionParameter::ofType(PARAM_TYPE_USER_TYPE_OWNED, getFullName()),
         FunctionParameter::ofType(descriptor.type, descriptor.userTypeName)});
}

void LuaUserType::setArrayAccess(UserTypeArrayDescriptor descriptor)
{
    LuaHostCall call(m_core->handle);
    if (!_isUsable(call))
        return;
    if (descriptor.read)
    {
        if (Function* const function =
                _declareMethod(ARRAY_READ, {PARAM_TYPE_USER_TYPE, PARAM_TYPE_INT}))
            function->setFunction(std::move(descriptor.read));
    }
    if (!descriptor.write || !_isUsable(call))
        return;
    _setSetter(
        call,
        ARRAY_WRITE,
        descriptor.write,
        {FunctionParameter::ofType(PARAM_TYPE_USER_TYPE_OWNED, getFullName()),
         FunctionParameter::ofType(PARAM_TYPE_INT),
         FunctionParameter::ofType(descriptor.type, descriptor.userTypeName)});
}

bool LuaUserType::setType(const typed::TypeId& type)
{
    std::shared_ptr<LuaTypeCore> core = m_core;
    {
        LuaHostCall call(core->handle);
        if (!_isUsable(call))
            return true;
        if (core->type && core->type != &type)
        {
            // The instances that exist are objects of another class: they stay with the table they
            // have.
            const Counted<ConstructorDefinition> dropped = std::exchange(core->constructor, {});
            uninstall();
            if (!install(core->handle))
                return true;
            core = m_core;
        }
        core->bindTo(type);
    }
    return core->isAlive;
}

void LuaUserType::setTypedConstructor(Counted<TypedCallable> constructor)
{
    LuaHostCall call(m_core->handle);
    if (!_isUsable(call))
        return;
    setTyped(m_core->constructor, makeCounted<SharedName>(getFullName()), constructor);
    _runWithParts(call, [](lua_State* state) { LuaTypeTable::publishFactory(state); });
}

void LuaUserType::setMember(const tbMemory::StringView& name, const typed::Member& member)
{
    LuaHostCall call(m_core->handle);
    if (!_isUsable(call))
        return;
    const std::shared_ptr<LuaTypeCore> core = m_core; // publishing may end this type
    LuaTypeField& field = core->fields[keyOf(name)];
    field.member = member;
    field.memberName = name;
    field.isReadDirectly = true;
    field.isWrittenDirectly = !member.isReadOnly;
    _runWithParts(
        call,
        [&](lua_State* state)
        {
            LuaTypeTable::publishGetter(state, name, field);
            if (field.isWrittenDirectly)
                LuaTypeTable::publishSetter(state, name, field);
        });
}

void LuaUserType::setTypedProperty(
    const tbMemory::StringView& name, Counted<TypedCallable> getter, Counted<TypedCallable> setter)
{
    LuaHostCall call(m_core->handle);
    if (!_isUsable(call))
        return;
    const std::shared_ptr<LuaTypeCore> core = m_core; // publishing may end this type
    LuaTypeField& field = core->fields[keyOf(name)];
    const bool hasGetter = static_cast<bool>(getter);
    const bool hasSetter = static_cast<bool>(setter);
    if (hasGetter)
    {
        field.isReadDirectly = false;
        setTyped(field.getter, nameOf(field, name), getter);
    }
    if (hasSetter)
    {
        field.isWrittenDirectly = false;
        setTyped(field.setter, nameOf(field, name), setter);
    }
    _runWithParts(
        call,
        [&](lua_State* state)
        {
            if (hasGetter)
                LuaTypeTable::publishGetter(state, name, field);
            if (hasSetter)
                LuaTypeTable::publishSetter(state, name, field);
        });
}

void LuaUserType::setTypedIndex(Counted<TypedCallable> read, Counted<TypedCallable> write)
{
    LuaHostCall call(m_core->handle);
    if (!_isUsable(call))
        return;
    if (read)
    {
        if (Function* const function = _declareMethod(ARRAY_READ, {}))
            FunctionAccess::bindTyped(*function, read);
        if (_isUsable(call) && m_core->arrayRead)
        {
            FunctionDefinition& definition = m_core->arrayRead->getDefinition();
            _publishElementLeaf(
                call, ELEMENT_ACCESS::READ, Counted<FunctionDefinition>(&definition));
        }
    }
    if (!write || !_isUsable(call))
        return;
    LuaTypeField& field = m_core->fields[keyOf(ARRAY_WRITE)];
    setTyped(field.setter, nameOf(field, ARRAY_WRITE), write);
    m_core->arrayWrite = &field;
    _publishElementLeaf(call, ELEMENT_ACCESS::WRITE, field.setter);
}

void LuaUserType::setTypedNames(Counted<TypedCallable> read, Counted<TypedCallable> write)
{
    LuaHostCall call(m_core->handle);
    if (!_isUsable(call))
        return;
    if (read)
        std::swap(m_core->readByName, read);
    if (write)
        std::swap(m_core->writeByName, write);
}

void LuaUserType::setTypedIteration(Counted<TypedCallable> walk)
{
    LuaHostCall call(m_core->handle);
    if (!_isUsable(call))
        return;
    if (Function* const function = setStaticMethod(WALK))
        FunctionAccess::bindTyped(*function, walk);
    call.run([&](lua_State* state) { teachPairs(call.getSlot(), state); });
}

bool LuaUserType::addBase(const typed::TypeId& base, void* (*toBase)(void* object))
{
    LuaHostCall call(m_core->handle);
    if (!_isUsable(call))
        return true; // not for want of the base class
    const LuaTypeIdentity* const bound = call.getSlot().findBoundType(base);
    if (!bound)
        return false;
    // Only cores are registered as types, and each belongs to a shared pointer.
    const auto& baseCore = static_cast<const LuaTypeCore&>(*bound);
    m_core->bases.push_back({&base, toBase});
    m_core->baseCores.push_back(baseCore.getShared());
    return _runWithParts(
        call,
        [&](lua_State* state)
        {
            baseCore.pushTable(state);
            LuaTypeTable::inheritOperators(state);
        });
}

void LuaUserType::clear()
{
    LuaHostCall call(m_core->handle, LuaHostCall::ENTRY::UPKEEP);
    if (isInstalled())
        _runWithParts(call, &LuaTypeTable::forgetFields);
    _dropMembers();
}

template <typename Definition>
void LuaUserType::_publishElementLeaf(
    LuaHostCall& call, ELEMENT_ACCESS access, Counted<Definition> definition)
{
    const Counted<TypedCallable> typed = definition->typed;
    if (!typed || !typed->getSignature().leaf)
        return;
    std::unique_ptr<CompiledLeaf> leaf;
    const LuaStateHandle handle = m_core->handle;
    _runWithParts(
        call,
        [&](lua_State* state)
        { leaf = LuaTypeTable::publishElementLeaf(handle, state, access, typed->getSignature()); });
    // A finaliser that ran meanwhile may have bound another callable, or ended the type.
    if (_isUsable(call) && definition->typed.get() == typed.get())
        definition->leaf = std::move(leaf);
}

bool LuaUserType::_isUsable(const LuaHostCall& call) const
{
    return !call.isRefused() && isInstalled() && m_core->isAlive;
}

void LuaUserType::_abandon(LuaHostCall& call, NAMED_TABLE before)
{
    m_core->isAlive = false;
    m_core->forgetTable();
    if (before == NAMED_TABLE::OF_USER_TYPE && m_core->partsKey != LUA_NOREF)
        _runWithParts(call, &LuaTypeTable::restoreFormer);
    if (LuaStateSlot* const slot = m_core->handle.getSlot())
        _freeParts(*slot);
    _dropMembers(); // which may have been declared during the publishing
    if (before == NAMED_TABLE::NONE)
        call.run([this](lua_State* state) { removeNamedTable(state, getFullName()); });
}

LuaFunction* LuaUserType::_findMethod(const tbMemory::StringView& name) const
{
    return findIn(m_core->methods, name);
}

LuaFunction* LuaUserType::_declareMethod(
    const tbMemory::StringView& name, std::initializer_list<FUNCTION_PARAMETER_TYPE> parameters)
{
    LuaHostCall call(m_core->handle);
    if (!_isUsable(call))
        return nullptr;
    if (_findMethod(name))
    {
        LogManager::getInstance()->log(
            messages::methodAlreadyRegistered(name, getName()), LOG_SOURCE_LUA_USER_TYPE);
    }
    // Looked up again: the receiver may have cleared this type.
    LuaFunction* const known = _findMethod(name);
    LuaFunction* const method = known ? known : _makeMethod(name);
    if (!method || !_isUsable(call))
        return nullptr;
    method->reset();
    if (_findMethod(name) != method)
        return nullptr; // the destructor of the old callable has cleared this type
    for (const FUNCTION_PARAMETER_TYPE type : parameters)
        method->addParameter(type, getFullName());
    return method;
}

LuaFunction* LuaUserType::_makeMethod(const tbMemory::StringView& name)
{
    m_ownerOfMethods.becomeTable(getFullName());
    auto made = std::make_unique<LuaFunction>(name, m_ownerOfMethods, m_core->handle);
    if (!made->isInstalled() || !isInstalled())
        return nullptr;
    if (_findMethod(name))
    {
        // A metamethod that ran during the publishing has declared the same method. That
        // declaration wins; destroying ours removes the entry, so the winner is published again.
        made.reset();
        LuaFunction* const known = _findMethod(name);
        if (known)
        {
            known->uninstall();
            known->install(m_core->handle);
        }
        return known;
    }
    LuaFunction* const method = made.get();
    m_core->methods[keyOf(name)] = std::move(made);
    if (name == tbMemory::StringView(ARRAY_READ))
        m_core->arrayRead = method;
    return method;
}

void LuaUserType::_setGetter(
    LuaHostCall& call,
    const tbMemory::StringView& name,
    decltype(UserTypeFieldDescriptor::getter)& getter)
{
    LuaTypeField& field = m_core->fields[keyOf(name)];
    field.isReadDirectly = false;
    setCallable(field.getter, nameOf(field, name), getter);
    _runWithParts(call, [&](lua_State* state) { LuaTypeTable::publishGetter(state, name, field); });
}

void LuaUserType::_setSetter(
    LuaHostCall& call,
    const tbMemory::StringView& name,
    decltype(UserTypeFieldDescriptor::setter)& setter,
    std::initializer_list<FunctionParameter> parameters)
{
    LuaTypeField& field = m_core->fields[keyOf(name)];
    field.isWrittenDirectly = false;
    setCallable(field.setter, nameOf(field, name), setter);
    for (const FunctionParameter& parameter : parameters)
        (*field.setter).addParameter(parameter);
    if (name == tbMemory::StringView(ARRAY_WRITE))
        m_core->arrayWrite = &field;
    _runWithParts(call, [&](lua_State* state) { LuaTypeTable::publishSetter(state, name, field); });
}

template <typename Work>
bool LuaUserType::_runWithParts(LuaHostCall& call, Work&& work)
{
    bool hasParts = false;
    const bool isDone = call.run(
        [&](lua_State* state)
        {
            lua_rawgeti(state, LUA_REGISTRYINDEX, m_core->partsKey);
            hasParts = lua_istable(state, -1); // see reserveReferences in LuaStateSlot.cpp
            if (hasParts)
                work(state);
        });
    return isDone && hasParts;
}

void LuaUserType::_freeParts(LuaStateSlot& slot)
{
    slot.removeTypeParts(m_core->partsKey);
    freeRegistrySlot(slot, std::exchange(m_core->partsKey, LUA_NOREF));
}

void LuaUserType::_dropMembers()
{
    // Without interpreter no host call keeps this type alive: the destructors that run here may
    // destroy it.
    const std::shared_ptr<LuaTypeCore> core = m_core;
    dropMethods(*core);
    dropFields(*core);
    dropFurther(*core);
}

} // namespace tbScripts::lua

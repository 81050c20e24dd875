#include "bindings/lua/types/LuaTypeClosures.h"

#include "bindings/BindingMessages.h"
#include "bindings/lua/LuaRaise.h"
#include "bindings/lua/functions/LuaFunction.h"
#include "bindings/lua/typed/LuaTypedCall.h"
#include "bindings/lua/typed/LuaTypedRun.h"
#include "bindings/lua/types/LuaTypeCore.h"
#include "bindings/lua/types/LuaTypeTable.h"
#include "bindings/lua/values/LuaCallBridge.h"
#include "core/lua/LuaNumber.h"
#include "core/lua/LuaText.h"
#include "core/lua/calls/LuaCallbackScope.h"

#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace tbScripts::lua
{

namespace
{

LuaTypeAnchor* anchorOf(lua_State* state)
{
    return static_cast<LuaTypeAnchor*>(firstUpvalueOf(state));
}

// Null if the interpreter has finalised the anchor: the type cannot be used any more.
LuaTypeCore* coreOf(lua_State* state)
{
    const LuaTypeAnchor* const anchor = anchorOf(state);
    return anchor ? anchor->core : nullptr;
}

int raiseTypeIsGone(lua_State* state, const LuaTypeAnchor* anchor)
{
    const tbMemory::StringView name = anchor ? anchor->getName() : tbMemory::StringView();
    return raiseText(state, messages::userTypeIsGone(name).c_str());
}

int raiseTypeIsGone(lua_State* state)
{
    return raiseTypeIsGone(state, anchorOf(state));
}

int raiseNotAnInstance(lua_State* state, const LuaTypeCore& core)
{
    return raiseText(state, messages::notAnInstance(core.fullName).c_str());
}

const LuaFieldLink* linkOf(lua_State* state)
{
    return static_cast<const LuaFieldLink*>(firstUpvalueOf(state));
}

int raiseFieldIsGone(lua_State* state, const LuaFieldLink* link)
{
    return raiseTypeIsGone(state, link ? link->anchor : nullptr);
}

// Returns the box on top of the stack, null if it is none with the metatable that is the second
// upvalue. The finaliser has that table, because it serves a type that is gone, and no other.
LuaInstanceBox* boxToFinalise(lua_State* state)
{
    const int top = lua_gettop(state);
    void* const block = top > 0 ? boxSizedBlockAt(state, top) : nullptr;
    const void* const metatable = block ? metatableOf(state, top, block) : nullptr;
    const bool isOurs = metatable && metatable == lua_topointer(state, lua_upvalueindex(2)) &&
                        hasFlagsOfABox(block);
    return isOurs ? static_cast<LuaInstanceBox*>(block) : nullptr;
}

// Returns the object of an instance, as one of the base class whose field this is; null if types in
// between have lost their base classes since then.
void* objectOf(const LuaTypeCore& core, lua_State* state, const LuaFieldLink& link, void* object)
{
    return link.base ? boundObjectAt(*core.handle.getSlot(), state, 1, *link.base) : object;
}

// Runs the typed callable of `definition`, which the call holds.
template <typename Definition>
int callTyped(
    const LuaTypeCore& core,
    lua_State* state,
    Definition& definition,
    const tbMemory::String& nameInMessages)
{
    const TypedHold<Definition> hold(definition);
    return runTypedAccess(*core.handle.getSlot(), state, *definition.typed, nameInMessages);
}

int readTypedField(
    const LuaTypeCore& core, lua_State* state, const LuaFieldLink& link, void* object)
{
    if (link.field->isReadDirectly)
        return object ? pushMember(state, object, link.field->member)
                      : raiseNotAnInstance(state, core);
    return callTyped(core, state, *link.field->getter, link.field->getter->getName());
}

bool hasTypedGetter(const LuaTypeField& field)
{
    return field.isReadDirectly || (field.getter && field.getter->typed);
}

int runReadField(lua_State* state)
{
    const LuaFieldLink* const link = linkOf(state);
    const LuaTypeCore* const core = link ? link->anchor->core : nullptr;
    if (!core || !(link->field->getter || link->field->isReadDirectly))
        return raiseFieldIsGone(state, link);
    const int arguments = lua_gettop(state);
    const LuaInstanceBox* const box = core->instanceAt(state, 1);
    void* const object = box ? objectOf(*core, state, *link, box->object) : nullptr;
    if (!box || (link->base && !object))
        return raiseNotAnInstance(state, *core);
    if (hasTypedGetter(*link->field))
    {
        lua_settop(state, arguments); // the look at the instance may have left something
        return readTypedField(*core, state, *link, object);
    }

    LuaCallbackScope scope(*core->handle.getSlot(), state);
    const DefinitionCall<GetterDefinition> call(*link->field->getter);
    const FunctionParameter value = call.getCallable()(object);
    return LuaCallBridge(scope, call.getName()).pushParameter(value);
}

// Fills the parameters from the arguments and calls the setter. A string that the bridge or the
// setter throws is raised without being logged; the message has the caller's line.
template <typename Fill>
int callSetter(
    const LuaTypeCore& core,
    lua_State* state,
    SetterDefinition& definition,
    const tbMemory::String& nameInMessages,
    Fill&& fillParameters)
{
    LuaCallbackScope scope(*core.handle.getSlot(), state);
    const DefinitionCall<SetterDefinition> call(definition);
    std::unique_ptr<std::string> errorText;
    try
    {
        fillParameters(LuaCallBridge(scope, nameInMessages), call.getParameters());
        call.getCallable()(tbMemory::BufferView<FunctionParameter>(call.getParameters()));
        return 0;
    }
    catch (const std::string& thrown)
    {
        errorText = std::make_unique<std::string>(thrown);
    }
    return raiseText(state, errorText->c_str());
}

int writeMemberField(
    const LuaTypeCore& core, lua_State* state, const LuaFieldLink& link, void* object)
{
    constexpr int VALUE_INDEX = 2;
    if (!object)
        return raiseNotAnInstance(state, core);
    std::unique_ptr<std::string> errorText;
    try
    {
        writeMember(state, object, link.field->member, VALUE_INDEX, link.field->memberName);
        return 0;
    }
    catch (const std::string& thrown)
    {
        errorText = std::make_unique<std::string>(thrown);
    }
    return raiseText(state, errorText->c_str());
}

int writeTypedField(
    const LuaTypeCore& core, lua_State* state, const LuaFieldLink& link, void* object)
{
    if (link.field->isWrittenDirectly)
        return writeMemberField(core, state, link, object);
    return callTyped(core, state, *link.field->setter, link.field->setter->getName());
}

bool hasTypedSetter(const LuaTypeField& field)
{
    return field.isWrittenDirectly || (field.setter && field.setter->typed);
}

int runWriteField(lua_State* state)
{
    constexpr int VALUE_INDEX = 2;
    const LuaFieldLink* const link = linkOf(state);
    const LuaTypeCore* const core = link ? link->anchor->core : nullptr;
    if (!core || !(link->field->setter || link->field->isWrittenDirectly))
        return raiseFieldIsGone(state, link);
    const int arguments = lua_gettop(state);
    const LuaInstanceBox* const box = core->instanceAt(state, 1);
    void* const object = box ? objectOf(*core, state, *link, box->object) : nullptr;
    if (!box || (link->base && !object))
        return raiseNotAnInstance(state, *core);
    lua_settop(state, arguments);
    if (hasTypedSetter(*link->field))
        return writeTypedField(*core, state, *link, object);

    SetterDefinition& definition = *link->field->setter;
    return callSetter(
        *core,
        state,
        definition,
        definition.getName(),
        [&](const LuaCallBridge& bridge, std::vector<FunctionParameter>& parameters)
        {
            LuaCallBridge::writeObject(parameters[0], object);
            bridge.readParameter(parameters[1], VALUE_INDEX);
        });
}

int indexAt(lua_State* state, int index)
{
    return lowBitsToInt(lua_tonumber(state, index));
}

// Writes instance and index into the first two parameters. Throws if these have other kinds: the
// host may have redeclared the list.
void fillIndexed(
    const LuaTypeCore& core,
    std::vector<FunctionParameter>& parameters,
    std::size_t expectedSize,
    void* object,
    int index)
{
    if (parameters.size() < expectedSize || !LuaCallBridge::writeObject(parameters[0], object) ||
        !LuaCallBridge::writeIndex(parameters[1], index))
        throw std::string(std::string_view(messages::arrayAccessNotPrepared(core.fullName)));
}

int runReadArray(const LuaTypeCore& core, lua_State* state)
{
    constexpr int INDEX_INDEX = 2;
    constexpr std::size_t PARAMETERS = 2;
    if (!core.arrayRead)
        return 0;
    const LuaInstanceBox* const box = core.instanceAt(state, 1);
    if (!box)
        return raiseNotAnInstance(state, core);

    FunctionDefinition& definition = core.arrayRead->getDefinition();
    if (definition.typed)
    {
        lua_settop(state, INDEX_INDEX);
        return callTyped(core, state, definition, core.fullName);
    }

    LuaCallbackScope scope(*core.handle.getSlot(), state);
    const DefinitionCall<FunctionDefinition> call(definition);
    std::unique_ptr<std::string> errorText;
    try
    {
        std::vector<FunctionParameter>& parameters = call.getParameters();
        fillIndexed(core, parameters, PARAMETERS, box->object, indexAt(state, 2));
        const FunctionParameter value =
            call.getCallable()(tbMemory::BufferView<FunctionParameter>(parameters));
        return LuaCallBridge(scope, core.fullName).pushParameter(value);
    }
    catch (const std::string& thrown)
    {
        errorText = std::make_unique<std::string>(thrown);
    }
    return raiseText(state, errorText->c_str());
}

int runWriteArray(const LuaTypeCore& core, lua_State* state)
{
    constexpr int VALUE_INDEX = 3;
    constexpr std::size_t PARAMETERS = 3;
    if (!core.arrayWrite || !core.arrayWrite->setter)
        return 0;
    const LuaInstanceBox* const box = core.instanceAt(state, 1);
    if (!box)
        return raiseNotAnInstance(state, core);
    SetterDefinition& definition = *core.arrayWrite->setter;
    if (definition.typed)
    {
        lua_settop(state, VALUE_INDEX);
        return callTyped(core, state, definition, core.fullName);
    }

    return callSetter(
        core,
        state,
        definition,
        core.fullName,
        [&](const LuaCallBridge& bridge, std::vector<FunctionParameter>& parameters)
        {
            fillIndexed(core, parameters, PARAMETERS, box->object, indexAt(state, 2));
            bridge.readParameter(parameters[2], VALUE_INDEX);
        });
}

// Runs the host's look-up by name, on the arguments of the access.
// NOLINTNEXTLINE(performance-unnecessary-value-param): keeps the callable alive during the call
int runByName(const LuaTypeCore& core, lua_State* state, Counted<TypedCallable> callable)
{
    const int arguments = lua_gettop(state);
    if (!core.instanceAt(state, 1))
        return raiseNotAnInstance(state, core);
    lua_settop(state, arguments);
    return runTypedAccess(*core.handle.getSlot(), state, *callable, core.fullName);
}

// A method whose entry a script has removed from the table reads as nil, which is a result.
bool isMethod(const LuaTypeCore& core, lua_State* state, int keyIndex)
{
    return lua_type(state, keyIndex) == LUA_TSTRING &&
           findIn(core.methods, textAt(state, keyIndex)) != nullptr;
}

// Looks in the base classes for a field that `publish` can give to the type; returns whether there
// is one.
template <typename Find>
const LuaTypeCore* findBaseWith(const LuaTypeCore& core, Find&& find)
{
    for (const std::shared_ptr<LuaTypeCore>& base : core.baseCores)
    {
        if (find(*base))
            return base.get();
        if (const LuaTypeCore* const further = findBaseWith(*base, find))
            return further;
    }
    return nullptr;
}

const LuaTypeField* findField(const LuaTypeCore& core, lua_State* state, int keyIndex)
{
    const auto known = core.fields.find(keyOf(textAt(state, keyIndex)));
    return known == core.fields.end() ? nullptr : &known->second;
}

// Adds a closure for a field of a base class to the table at `partIndex`, and leaves the closure on
// the stack. Returns false if no base class has it. Upvalue 1 is the type's anchor.
bool pushInheritedField(
    const LuaTypeCore& core,
    lua_State* state,
    int partIndex,
    bool (*isOffered)(const LuaTypeField& field),
    lua_CFunction closure)
{
    const LuaTypeField* field = nullptr;
    const LuaTypeCore* const base = findBaseWith(
        core,
        [&](const LuaTypeCore& candidate)
        {
            field = candidate.type && candidate.isAlive ? findField(candidate, state, 2) : nullptr;
            if (field && !isOffered(*field))
                field = nullptr;
            return field != nullptr;
        });
    if (!base)
        return false;
    void* const block = lua_newuserdata(state, sizeof(LuaFieldLink));
    new (block) LuaFieldLink{anchorOf(state), field, base->type};
    lua_pushvalue(state, lua_upvalueindex(1));
    LuaTypeTable::pushAnchor(state, base->partsKey); // keeps the field if the type is cleared
    lua_pushcclosure(state, closure, 3);
    lua_pushvalue(state, 2);
    lua_pushvalue(state, -2);
    lua_rawset(state, partIndex);
    return true;
}

// Stack: +1, the entry of a base class for the key, and true; +0 and false if none has it.
bool pushInheritedEntry(const LuaTypeCore& core, lua_State* state)
{
    const LuaTypeCore* const base = findBaseWith(
        core,
        [&](const LuaTypeCore& candidate)
        {
            if (!candidate.isAlive)
                return false;
            candidate.pushTable(state);
            lua_pushvalue(state, 2);
            lua_rawget(state, -2);
            lua_remove(state, -2);
            if (!lua_isnil(state, -1))
                return true;
            lua_pop(state, 1);
            return false;
        });
    return base != nullptr;
}

// Reads what only the base classes or the host's look-up by name know; nil if they do not.
int readFurther(const LuaTypeCore& core, lua_State* state, int readersIndex)
{
    if (lua_type(state, 2) != LUA_TSTRING)
        return 0;
    lua_settop(state, 2);
    if (!core.baseCores.empty() &&
        pushInheritedField(core, state, readersIndex, &hasTypedGetter, &readField))
    {
        lua_pushvalue(state, 1);
        lua_call(state, 1, 1);
        return 1;
    }
    if (!core.baseCores.empty() && pushInheritedEntry(core, state))
        return 1;
    return core.readByName ? runByName(core, state, core.readByName) : 0;
}

int runReadOther(lua_State* state)
{
    const int tableIndex = lua_upvalueindex(2);
    const int readersIndex = lua_upvalueindex(3);
    lua_settop(state, 2);
    const LuaTypeCore* const core = coreOf(state);
    const bool isAlive = core && core->isAlive;
    if (lua_isnumber(state, 2))
        return isAlive ? runReadArray(*core, state) : raiseTypeIsGone(state);

    lua_pushvalue(state, 2);
    lua_rawget(state, tableIndex);
    if (!lua_isnil(state, -1))
    {
        if (isAlive && lua_type(state, 2) == LUA_TSTRING)
        {
            lua_pushvalue(state, 2);
            lua_pushboolean(state, 1);
            lua_rawset(state, readersIndex);
        }
        return 1;
    }
    if (!isAlive)
        return raiseTypeIsGone(state);
    if (isMethod(*core, state, 2))
        return 1;
    return core->hasFurtherReads() ? readFurther(*core, state, readersIndex) : 0;
}

// Writes what only the base classes or the host's look-up by name know.
int writeFurther(const LuaTypeCore& core, lua_State* state)
{
    if (lua_type(state, 2) != LUA_TSTRING)
        return 0;
    lua_settop(state, 3);
    if (!core.baseCores.empty() && core.isAlive)
    {
        LuaTypeTable::pushWriters(state, core.partsKey);
        if (pushInheritedField(core, state, lua_gettop(state), &hasTypedSetter, &writeField))
        {
            lua_pushvalue(state, 1);
            lua_pushvalue(state, 3);
            lua_call(state, 2, 0);
            return 0;
        }
        lua_settop(state, 3);
    }
    return core.writeByName ? runByName(core, state, core.writeByName) : 0;
}

int runWriteOther(lua_State* state)
{
    const LuaTypeCore* const core = coreOf(state);
    if (!core || !core->isAlive)
        return raiseTypeIsGone(state);
    if (lua_isnumber(state, 2))
        return runWriteArray(*core, state);
    return core->hasFurtherWrites() ? writeFurther(*core, state) : 0;
}

int runReadElement(lua_State* state)
{
    const LuaTypeCore* const core = coreOf(state);
    return core && core->isAlive ? runReadArray(*core, state) : raiseTypeIsGone(state);
}

int runWriteElement(lua_State* state)
{
    const LuaTypeCore* const core = coreOf(state);
    return core && core->isAlive ? runWriteArray(*core, state) : raiseTypeIsGone(state);
}

int runMakeInstance(lua_State* state)
{
    const LuaTypeCore* const core = coreOf(state);
    if (!core || !core->isAlive || !core->handle.get())
        return raiseTypeIsGone(state);
    if (core->constructor && core->constructor->typed)
    {
        ConstructorDefinition& definition = *core->constructor;
        const TypedHold<ConstructorDefinition> hold(definition);
        return runTypedConstructor(state, *core, *definition.typed, lua_upvalueindex(2));
    }
    // The block gets its metatable after its object: until then nothing must be destroyed.
    void* const block = lua_newuserdata(state, INSTANCE_BOX_SIZE);
    std::memset(block, 0, INSTANCE_BOX_SIZE);
    if (!core->isAlive || !core->constructor)
        return raiseTypeIsGone(state); // a finaliser that ran for the block has destroyed the type

    LuaCallbackScope scope(*core->handle.getSlot(), state);
    const DefinitionCall<ConstructorDefinition> call(*core->constructor);
    void* const object = call.getCallable()(tbMemory::BufferView<FunctionParameter>());

    auto* const box = static_cast<LuaInstanceBox*>(block);
    box->object = object;
    box->gcEnabled = true;
    lua_pushvalue(state, lua_upvalueindex(2));
    lua_setmetatable(state, -2);
    return 1;
}

// Gives up the share that the instance holds. Returns whether it held one.
bool releaseShare(LuaTypeCore& core, lua_State* state, LuaInstanceBox& box)
{
    const LuaCallbackScope scope(*core.handle.getSlot(), state);
    return core.releaseHolder(box);
}

int runFinaliseInstance(lua_State* state)
{
    LuaTypeCore* const core = coreOf(state);
    if (!core)
        return 0;
    LuaInstanceBox* const box = boxToFinalise(state);
    if (!box)
        return raiseNotAnInstance(state, *core);
    if (!core->holders->empty() && releaseShare(*core, state, *box))
        return 0;
    if (!box->gcEnabled || box->isDestroyed)
        return 0;

    LuaCallbackScope scope(*core->handle.getSlot(), state);
    const DefinitionCall<DestructorDefinition> call(*core->destructor); // may lack memory
    box->isDestroyed = true; // before the destructor, which may call this function again
    call.getCallable()(box->object);
    return 0;
}

// Returns whether the instance at `index` holds a share of its object: scripts cannot own it alone.
bool isShared(const LuaTypeCore& core, lua_State* state, int index, const LuaInstanceBox& box)
{
    const LuaTypeIdentity* const type =
        livingIdentityAt(*core.handle.getSlot(), state, index, &box);
    // Only cores are registered as types.
    const auto* const own = type ? static_cast<const LuaTypeCore*>(type) : &core;
    return !own->holders->empty() && own->findHolder(box);
}

int runSetGcEnabled(lua_State* state, bool isEnabled)
{
    const LuaTypeCore* const core = coreOf(state);
    if (!core)
        return raiseTypeIsGone(state);
    const int top = lua_gettop(state);
    const LuaInstance instance =
        top > 0 ? boxAt(*core->handle.getSlot(), state, top) : LuaInstance{};
    if (!instance.box)
        return raiseNotAnInstance(state, *core);
    if (!instance.box->isDestroyed && !isShared(*core, state, top, *instance.box))
        instance.box->gcEnabled = isEnabled;
    return 0;
}

int runEnableGc(lua_State* state)
{
    return runSetGcEnabled(state, true);
}

int runDisableGc(lua_State* state)
{
    return runSetGcEnabled(state, false);
}

} // namespace

int readField(lua_State* state)
{
    return closureOf<&runReadField>(state);
}

int writeField(lua_State* state)
{
    return closureOf<&runWriteField>(state);
}

int readOther(lua_State* state)
{
    return closureOf<&runReadOther>(state);
}

int writeOther(lua_State* state)
{
    return closureOf<&runWriteOther>(state);
}

int readElement(lua_State* state)
{
    return closureOf<&runReadElement>(state);
}

int writeElement(lua_State* state)
{
    return closureOf<&runWriteElement>(state);
}

int makeInstance(lua_State* state)
{
    return closureOf<&runMakeInstance>(state);
}

int finaliseInstance(lua_State* state)
{
    return closureOf<&runFinaliseInstance>(state);
}

int enableGc(lua_State* state)
{
    return closureOf<&runEnableGc>(state);
}

int disableGc(lua_State* state)
{
    return closureOf<&runDisableGc>(state);
}

} // namespace tbScripts::lua

#include "bindings/lua/types/LuaTypeTable.h"

#include "bindings/lua/LuaNamedTables.h"
#include "bindings/lua/leaves/LuaCompiledLeaf.h"
#include "bindings/lua/leaves/LuaLeaves.h"
#include "bindings/lua/types/LuaTypeClosures.h"
#include "core/lua/LuaTables.h"
#include "core/lua/LuaText.h"

#include <array>
#include <cstring>
#include <new>
#include <string>

namespace tbScripts::lua
{

namespace
{

// Indices of the parts in their table.
constexpr int PART_TABLE = 1;
constexpr int PART_ANCHOR = 2;
constexpr int PART_READERS = 3;
constexpr int PART_WRITERS = 4;
constexpr int PART_FORMER = 5; // the former entries of the table, until the type is published
constexpr int PART_READ = 6;   // the dispatchers
constexpr int PART_WRITE = 7;
constexpr int PARTS = 7;

// Readers hold the closure of each field, and `true` for other names that the type's table has.
// The calls are tail calls, so that the line that reads or writes is the caller of the closure.
constexpr const char* DISPATCHERS = R"(
local readers, writers, class, rawget, type, readOther, writeOther, readElement, writeElement = ...
local function read(self, key)
    if type(key) == 'number' then return readElement(self, key) end
    local reader = readers[key]
    if reader == true then
        local value = rawget(class, key)
        if value ~= nil then return value end
    elseif reader then
        return reader(self)
    end
    return readOther(self, key)
end
local function write(self, key, value)
    if type(key) == 'number' then return writeElement(self, key, value) end
    local writer = writers[key]
    if writer then return writer(self, value) end
    return writeOther(self, key, value)
end
return read, write
)";
constexpr const char* NAME_OF_DISPATCHERS = "=user type";

constexpr const char* FINALISER = "__gc";

// What the interpreter looks up in the instance's metatable only.
constexpr std::array<const char*, 15> INHERITED_ENTRIES{
    "__tostring",
    "__unm",
    "__add",
    "__sub",
    "__mul",
    "__div",
    "__mod",
    "__pow",
    "__concat",
    "__eq",
    "__lt",
    "__le",
    "__len",
    "__call",
    "__pairs"};

// Stack: +1, part `part` of the parts at `partsIndex`.
void pushPart(lua_State* state, int partsIndex, int part)
{
    lua_rawgeti(state, partsIndex, part);
}

// Sets field `name` of the type's table to the value on top of the stack, and pops the value. Raw,
// because a script may have given the table a metatable.
void setEntry(lua_State* state, int tableIndex, const char* name)
{
    lua_pushstring(state, name);
    lua_insert(state, -2);
    lua_rawset(state, tableIndex);
}

// Stack: +0; sets the two dispatchers as entries of the table.
void setDispatchers(const LuaStateSlot& slot, lua_State* state, int partsIndex, int tableIndex)
{
    constexpr int ARGUMENTS = 9;
    // Compiled for each type, because only then the interpreter's compiler treats the tables as
    // constants.
    if (luaL_loadbuffer(state, DISPATCHERS, std::strlen(DISPATCHERS), NAME_OF_DISPATCHERS) != 0)
        throw std::string(std::string_view(textAt(state, -1))); // no memory
    pushPart(state, partsIndex, PART_READERS);
    pushPart(state, partsIndex, PART_WRITERS);
    lua_pushvalue(state, tableIndex);
    slot.pushRawget(state);
    slot.pushType(state);
    pushPart(state, partsIndex, PART_ANCHOR);
    lua_pushvalue(state, tableIndex);
    pushPart(state, partsIndex, PART_READERS);
    lua_pushcclosure(state, &readOther, 3);
    pushPart(state, partsIndex, PART_ANCHOR);
    lua_pushcclosure(state, &writeOther, 1);
    pushPart(state, partsIndex, PART_ANCHOR);
    lua_pushcclosure(state, &readElement, 1);
    pushPart(state, partsIndex, PART_ANCHOR);
    lua_pushcclosure(state, &writeElement, 1);
    lua_call(state, ARGUMENTS, 2);
    lua_pushvalue(state, -1);
    lua_rawseti(state, partsIndex, PART_WRITE);
    lua_pushvalue(state, -2);
    lua_rawseti(state, partsIndex, PART_READ);
    lua_insert(state, -2);
    setEntry(state, tableIndex, "__index");
    setEntry(state, tableIndex, "__newindex");
}

// Sets entry `name` of the type's table to `closure` over the anchor.
void setAnchoredEntry(lua_State* state, int partsIndex, const char* name, lua_CFunction closure)
{
    pushPart(state, partsIndex, PART_TABLE);
    pushPart(state, partsIndex, PART_ANCHOR);
    lua_pushcclosure(state, closure, 1);
    setEntry(state, lua_gettop(state) - 1, name);
    lua_pop(state, 1);
}

// Puts a leaf around the closure on top of the stack, if it serves a plain member. Calling it is
// safe as long as there are instances, so nothing has to end it.
void wrapMember(lua_State* state, int part, const LuaTypeCore& core, const LuaTypeField& field)
{
    LuaStateSlot& slot = *core.handle.getSlot();
    if (part == PART_READERS && field.isReadDirectly)
        wrapReader(slot, state, *core.type, field.member, nullptr);
    else if (part == PART_WRITERS && field.isWrittenDirectly)
        wrapWriter(slot, state, *core.type, field.member, nullptr);
}

// Sets entry `name` of `part` to the closure of `field`.
void publishField(
    lua_State* state,
    int part,
    const tbMemory::StringView& name,
    LuaTypeField& field,
    lua_CFunction closure)
{
    const int partsIndex = lua_gettop(state);
    pushPart(state, partsIndex, part);
    lua_pushlstring(state, name.empty() ? "" : name.data(), name.size());
    if (!lua_isnumber(state, -1))
    {
        void* const block = lua_newuserdata(state, sizeof(LuaFieldLink));
        pushPart(state, partsIndex, PART_ANCHOR);
        const auto* const anchor = static_cast<const LuaTypeAnchor*>(lua_touserdata(state, -1));
        new (block) LuaFieldLink{anchor, &field, nullptr};
        lua_pushcclosure(state, closure, 2);
        wrapMember(state, part, *anchor->core, field);
        lua_rawset(state, -3);
    }
    lua_settop(state, partsIndex);
}

// Raw. Stack: +0.
void copyEntries(lua_State* state, int from, int to)
{
    lua_pushnil(state);
    while (lua_next(state, from))
    {
        lua_pushvalue(state, -2);
        lua_insert(state, -2);
        lua_rawset(state, to);
    }
}

// Returns whether the topmost two values are the key of finalisers and one of ours. Stack: +0.
bool isFinaliserOnTop(lua_State* state)
{
    return lua_tocfunction(state, -1) == &finaliseInstance && lua_type(state, -2) == LUA_TSTRING &&
           textAt(state, -2) == tbMemory::StringView(FINALISER);
}

// Returns the anchor of the type whose finaliser the table at `tableIndex` has, null if it has no
// finaliser of a user type. Stack: +0.
const LuaTypeAnchor* anchorOfFinaliser(lua_State* state, int tableIndex)
{
    const LuaTypeAnchor* anchor = nullptr;
    lua_pushstring(state, FINALISER);
    lua_rawget(state, tableIndex);
    if (lua_tocfunction(state, -1) == &finaliseInstance && lua_getupvalue(state, -1, 1))
    {
        anchor = static_cast<const LuaTypeAnchor*>(lua_touserdata(state, -1));
        lua_pop(state, 1);
    }
    lua_pop(state, 1);
    return anchor;
}

// Returns whether the table at `tableIndex` has a finaliser that serves instances of this table.
// That of another type that shares the table counts. Stack: +0.
bool hasOwnFinaliser(lua_State* state, int tableIndex)
{
    bool isOwn = false;
    lua_pushstring(state, FINALISER);
    lua_rawget(state, tableIndex);
    if (lua_tocfunction(state, -1) == &finaliseInstance && lua_getupvalue(state, -1, 2))
    {
        isOwn = lua_rawequal(state, -1, tableIndex) != 0;
        lua_pop(state, 1);
    }
    lua_pop(state, 1);
    return isOwn;
}

// Stops the collector, also one that a script has stopped already: the collection that follows
// starts it in any case.
class StoppedCollector
{
public:
    explicit StoppedCollector(lua_State* state)
        : m_state(state)
    {
        lua_gc(state, LUA_GCSTOP, 0);
    }

    StoppedCollector(const StoppedCollector&) = delete;
    StoppedCollector& operator=(const StoppedCollector&) = delete;

    ~StoppedCollector() { lua_gc(m_state, LUA_GCRESTART, -1); }

private:
    lua_State* m_state;
};

// Takes over what the instances of the former type of the table at `tableIndex` need: the class
// that their objects are of, the shares, and the destructor, which destroys them until the host
// sets another (docs/decisions/0018-two-types-of-one-name.md).
void inheritFormer(lua_State* state, int tableIndex, LuaTypeCore& core)
{
    const LuaTypeAnchor* const former = anchorOfFinaliser(state, tableIndex);
    if (!former || !former->core)
        return;
    core.type = former->core->type;
    core.holders = former->core->holders;
    if (!core.hasOwnDestructor)
        core.destructor = former->core->destructor;
}

// Sets upvalue `name` of the dispatcher `part` to the function on top of the stack. Stack: -1.
void setUpvalueOf(lua_State* state, int partsIndex, int part, const char* name)
{
    pushPart(state, partsIndex, part);
    lua_insert(state, -2);
    const int dispatcherIndex = lua_gettop(state) - 1;
    int number = 1;
    while (const char* const known = lua_getupvalue(state, dispatcherIndex, number))
    {
        lua_pop(state, 1);
        if (std::strcmp(known, name) == 0)
        {
            lua_setupvalue(state, dispatcherIndex, number);
            break;
        }
        ++number;
    }
    lua_settop(state, dispatcherIndex - 1);
}

void forgetIn(lua_State* state, int part)
{
    pushPart(state, lua_gettop(state), part);
    clearTable(state);
    lua_pop(state, 1);
}

} // namespace

NAMED_TABLE LuaTypeTable::pushParts(
    LuaStateSlot& slot, lua_State* state, const std::shared_ptr<LuaTypeCore>& core)
{
    lua_createtable(state, PARTS, 0);
    const int partsIndex = lua_gettop(state);
    const NAMED_TABLE before = makeNamedTable(slot, state, core->fullName);
    if (before == NAMED_TABLE::FOREIGN)
    {
        lua_remove(state, partsIndex);
        return before;
    }
    // Instances that are older than the new anchor are finalised after it, and still need its
    // destructor.
    if (before == NAMED_TABLE::OF_USER_TYPE)
        slot.keepUntilClosed(core);
    const int tableIndex = lua_gettop(state);
    if (before == NAMED_TABLE::OF_USER_TYPE)
    {
        lua_createtable(state, 0, 0);
        copyEntries(state, tableIndex, lua_gettop(state));
        lua_rawseti(state, partsIndex, PART_FORMER);
        inheritFormer(state, tableIndex, *core);
    }
    registerTypeTable(slot, state, core->fullName);
    core->setTable(lua_topointer(state, tableIndex));
    lua_pushvalue(state, tableIndex);
    lua_rawseti(state, partsIndex, PART_TABLE);
    pushTypeAnchor(state, core);
    lua_rawseti(state, partsIndex, PART_ANCHOR);
    lua_createtable(state, 0, 0);
    lua_rawseti(state, partsIndex, PART_READERS);
    lua_createtable(state, 0, 0);
    lua_rawseti(state, partsIndex, PART_WRITERS);

    setDispatchers(slot, state, partsIndex, tableIndex);
    pushName(state, core->fullName);
    setEntry(state, tableIndex, "__name");
    lua_settop(state, partsIndex);
    publishFinaliser(state);
    setAnchoredEntry(state, partsIndex, "enableGc", &enableGc);
    setAnchoredEntry(state, partsIndex, "disableGc", &disableGc);
    return before;
}

void LuaTypeTable::forgetFormer(lua_State* state)
{
    lua_pushnil(state);
    lua_rawseti(state, -2, PART_FORMER);
}

void LuaTypeTable::restoreFormer(lua_State* state)
{
    const int partsIndex = lua_gettop(state);
    pushPart(state, partsIndex, PART_ANCHOR);
    pushPart(state, partsIndex, PART_FORMER);
    pushPart(state, partsIndex, PART_TABLE);
    const int formerIndex = partsIndex + 2;
    const int tableIndex = partsIndex + 3;
    // A third type may have taken the table over since then.
    const bool isOurs =
        anchorOfFinaliser(state, tableIndex) == lua_touserdata(state, partsIndex + 1);
    if (isOurs && lua_istable(state, formerIndex))
    {
        clearTable(state);
        copyEntries(state, formerIndex, tableIndex);
    }
    lua_settop(state, partsIndex);
}

void LuaTypeTable::clearShared(const LuaStateSlot& slot, lua_State* state)
{
    const bool isOfType = kindOfTable(slot, state) == NAMED_TABLE::OF_USER_TYPE;
    clearTableExcept(
        state, [isOfType](lua_State* inner) { return isOfType && isFinaliserOnTop(inner); });
}

void LuaTypeTable::pushTable(lua_State* state)
{
    pushPart(state, lua_gettop(state), PART_TABLE);
}

void LuaTypeTable::replaceEarlier(const LuaTypeCore& core, lua_State* state)
{
    pushTable(state);
    replaceEarlierType(*core.handle.getSlot(), state, core.fullName);
    lua_pop(state, 1);
}

void LuaTypeTable::restoreFinaliser(lua_State* state)
{
    const int partsIndex = lua_gettop(state);
    pushTable(state);
    const bool isThere = hasOwnFinaliser(state, partsIndex + 1);
    lua_settop(state, partsIndex);
    if (!isThere)
        publishFinaliser(state);
}

void LuaTypeTable::restoreFinalisers(const LuaStateSlot& slot, lua_State* state)
{
    const StoppedCollector noFinaliserChangesTheTypes(state);
    for (const int key : slot.getTypeParts())
    {
        lua_rawgeti(state, LUA_REGISTRYINDEX, key);
        if (lua_istable(state, -1)) // see reserveReferences in LuaStateSlot.cpp
            restoreFinaliser(state);
        lua_pop(state, 1);
    }
}

void LuaTypeTable::pushAnchor(lua_State* state, int partsKey)
{
    lua_rawgeti(state, LUA_REGISTRYINDEX, partsKey);
    if (!lua_istable(state, -1)) // see reserveReferences in LuaStateSlot.cpp
        return;
    pushPart(state, lua_gettop(state), PART_ANCHOR);
    lua_remove(state, -2);
}

void LuaTypeTable::pushWriters(lua_State* state, int partsKey)
{
    lua_rawgeti(state, LUA_REGISTRYINDEX, partsKey);
    pushPart(state, lua_gettop(state), PART_WRITERS);
    lua_remove(state, -2);
}

void LuaTypeTable::inheritOperators(lua_State* state)
{
    const int baseIndex = lua_gettop(state);
    pushPart(state, baseIndex - 1, PART_TABLE);
    const int tableIndex = baseIndex + 1;
    for (const char* const name : INHERITED_ENTRIES)
    {
        lua_pushstring(state, name);
        lua_rawget(state, tableIndex);
        const bool isOwn = !lua_isnil(state, -1);
        lua_pop(state, 1);
        if (isOwn)
            continue;
        lua_pushstring(state, name);
        lua_rawget(state, baseIndex);
        setEntry(state, tableIndex, name);
    }
    lua_settop(state, baseIndex - 1);
}

void LuaTypeTable::publishFactory(lua_State* state)
{
    const int partsIndex = lua_gettop(state);
    pushPart(state, partsIndex, PART_TABLE);
    pushPart(state, partsIndex, PART_ANCHOR);
    lua_pushvalue(state, -2);
    lua_pushcclosure(state, &makeInstance, 2);
    setEntry(state, partsIndex + 1, "new");
    lua_settop(state, partsIndex);
}

void LuaTypeTable::publishFinaliser(lua_State* state)
{
    const int partsIndex = lua_gettop(state);
    pushPart(state, partsIndex, PART_TABLE);
    pushPart(state, partsIndex, PART_ANCHOR);
    lua_pushvalue(state, -2);
    lua_pushcclosure(state, &finaliseInstance, 2);
    setEntry(state, partsIndex + 1, FINALISER);
    lua_settop(state, partsIndex);
}

void LuaTypeTable::publishGetter(
    lua_State* state, const tbMemory::StringView& name, LuaTypeField& field)
{
    publishField(state, PART_READERS, name, field, &readField);
}

void LuaTypeTable::publishSetter(
    lua_State* state, const tbMemory::StringView& name, LuaTypeField& field)
{
    publishField(state, PART_WRITERS, name, field, &writeField);
}

std::unique_ptr<CompiledLeaf> LuaTypeTable::publishElementLeaf(
    const LuaStateHandle& handle,
    lua_State* state,
    ELEMENT_ACCESS access,
    const typed::Signature& signature)
{
    const bool isRead = access == ELEMENT_ACCESS::READ;
    const int partsIndex = lua_gettop(state);
    pushPart(state, partsIndex, PART_ANCHOR);
    std::unique_ptr<LuaCompiledLeaf> leaf = LuaCompiledLeaf::push(handle, state);
    lua_pushcclosure(state, isRead ? &readElement : &writeElement, 2);
    if (!wrapLeaf(*handle.getSlot(), state, signature, leaf->getWord()))
        return nullptr;
    setUpvalueOf(
        state,
        partsIndex,
        isRead ? PART_READ : PART_WRITE,
        isRead ? "readElement" : "writeElement");
    leaf->begin();
    return leaf;
}

void LuaTypeTable::forgetFields(lua_State* state)
{
    forgetIn(state, PART_READERS);
    forgetIn(state, PART_WRITERS);
}

} // namespace tbScripts::lua

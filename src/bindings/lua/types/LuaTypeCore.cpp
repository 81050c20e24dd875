#include "bindings/lua/types/LuaTypeCore.h"

#include <cstring>
#include <new>
#include <utility>

namespace tbScripts::lua
{

namespace
{

int releaseTypeAnchor(lua_State* state)
{
    auto* const anchor = static_cast<LuaTypeAnchor*>(lua_touserdata(state, 1));
    if (!anchor || !anchor->hold)
        return 0;
    const std::shared_ptr<LuaTypeCore> core = std::move(anchor->hold);
    LuaStateSlot& slot = *core->handle.getSlot();
    if (slot.isClosing())
        slot.keepUntilClosed(core); // instances may still be created and finalised
    else if (!core->isKeptUntilClosed())
        anchor->core =
            nullptr; // other holders may release the core before the closures are destroyed
    return 0;
}

} // namespace

LuaTypeCore::LuaTypeCore(const LuaStateHandle& stateHandle, const tbMemory::StringView& name)
    : LuaTypeIdentity(name)
    , handle(stateHandle)
{
}

LuaTypeCore::~LuaTypeCore()
{
    forgetTable();
}

void LuaTypeCore::setTable(const void* typeTable)
{
    handle.getSlot()->addType(typeTable, *this);
    table = typeTable;
    if (type)
        handle.getSlot()->getLeafTypes().setTable(*type, table);
}

void LuaTypeCore::forgetTable()
{
    const void* const forgotten = std::exchange(table, nullptr);
    if (!forgotten)
        return;
    handle.getSlot()->removeType(forgotten, *this);
    if (type)
        handle.getSlot()->unbindType(*type, *this);
}

LuaInstanceBox* LuaTypeCore::boxAt(lua_State* state, int index) const
{
    void* const block = boxSizedBlockAt(state, index);
    const void* const metatable = block ? metatableOf(state, index, block) : nullptr;
    const bool isOurs = metatable && metatable == table && hasFlagsOfABox(block);
    return isOurs ? static_cast<LuaInstanceBox*>(block) : nullptr;
}

LuaInstanceBox* LuaTypeCore::instanceAt(lua_State* state, int index) const
{
    LuaInstanceBox* const box = boxAt(state, index);
    return box && !box->isDestroyed ? box : nullptr;
}

void LuaTypeCore::bindTo(const typed::TypeId& id)
{
    if (type && type != &id)
        handle.getSlot()->unbindType(*type, *this);
    handle.getSlot()->bindType(id, *this);
    type = &id;
    if (table)
        handle.getSlot()->getLeafTypes().setTable(id, table);
}

void LuaTypeCore::pushTable(lua_State* state) const
{
    constexpr int PART_TABLE = 1; // see LuaTypeTable.cpp
    lua_rawgeti(state, LUA_REGISTRYINDEX, partsKey);
    lua_rawgeti(state, -1, PART_TABLE);
    lua_remove(state, -2);
}

void LuaTypeCore::addHolder(const LuaInstanceBox& box, const LuaHolder& holder)
{
    const auto [known, isNew] = holders->try_emplace(&box, holder);
    if (isNew)
        return;
    // Of an instance that a script took away from its finaliser, and whose block this one got.
    const LuaHolder lost = std::exchange(known->second, holder);
    lost.release(lost.holder);
}

const LuaHolder* LuaTypeCore::findHolder(const LuaInstanceBox& box) const
{
    const auto known = holders->find(&box);
    const bool isThere = known != holders->end() && known->second.object == box.object;
    return isThere ? &known->second : nullptr;
}

bool LuaTypeCore::releaseHolder(LuaInstanceBox& box)
{
    const auto known = holders->find(&box);
    if (known == holders->end())
        return false;
    // The block of an instance that a script took away from its finaliser may have become
    // another's.
    const bool isOfBox = known->second.object == box.object;
    const LuaHolder holder = known->second;
    holders->erase(known);
    if (isOfBox)
        box.isDestroyed = true;
    holder.release(holder.holder);
    return isOfBox;
}

void pushTypeAnchor(lua_State* state, const std::shared_ptr<LuaTypeCore>& core)
{
    const std::size_t nameSize = core->fullName.size();
    void* const block = lua_newuserdata(state, sizeof(LuaTypeAnchor) + nameSize);
    auto* const anchor = new (block) LuaTypeAnchor{nullptr, nullptr, nameSize};
    if (nameSize > 0)
        std::memcpy(static_cast<void*>(anchor + 1), core->fullName.data(), nameSize);

    lua_createtable(state, 0, 1);
    lua_pushcfunction(state, &releaseTypeAnchor);
    lua_setfield(state, -2, "__gc");
    anchor->core = core.get(); // last: from here on the interpreter finalises the block
    anchor->hold = core;
    lua_setmetatable(state, -2);
}

} // namespace tbScripts::lua

#include "bindings/lua/types/LuaTypeCore.h"

#include "core/ExceptionContainment.h"
#include "core/lua/calls/LuaCallbackScope.h"

#include <cstring>
#include <new>
#include <utility>

namespace tbScripts::lua
{

namespace
{

// Other holders may release the core before the closures are destroyed, so the anchor forgets it.
// While the state closes, instances may still be created and finalised.
int releaseTypeAnchor(lua_State* state)
{
    auto* const anchor = static_cast<LuaTypeAnchor*>(lua_touserdata(state, 1));
    if (!anchor || !anchor->hold)
        return 0;
    const std::shared_ptr<LuaTypeCore> core = std::move(anchor->hold);
    LuaStateSlot& slot = *core->handle.getSlot();
    if (slot.isClosing())
    {
        slot.keepUntilClosed(core);
        return 0;
    }
    if (core->isKeptUntilClosed())
        return 0;
    anchor->core = nullptr;
    const LuaCallbackScope scope(slot, state);
    core->destroyLeftObjects();
    return 0;
}

} // namespace

LuaTypeCore::LuaTypeCore(const LuaStateHandle& stateHandle, const tbMemory::StringView& name)
    : handle(stateHandle)
    , fullName(name)
{
}

LuaTypeCore::~LuaTypeCore()
{
    destroyLeftObjects();
    if (identity && identity.use_count() == 1)
        handle.getSlot()->removeType(*identity);
}

void LuaTypeCore::setTable(const void* typeTable)
{
    LuaStateSlot& slot = *handle.getSlot();
    if (LuaTypeIdentity* const shared = slot.findType(typeTable))
    {
        identity = shared->shared_from_this();
    }
    else
    {
        auto made = std::make_shared<LuaTypeIdentity>(typeTable, fullName);
        slot.addType(*made);
        identity = std::move(made);
    }
    table = typeTable;
}

void LuaTypeCore::destroyLeftObjects() noexcept
{
    if (!identity || identity.use_count() > 1)
        return;
    // Contained one by one: an exception of one destructor must not save the others their call.
    identity->owned.drain(
        [this](void* object)
        {
            contain(
                [&]
                {
                    const DefinitionCall<DestructorDefinition> call(*destructor);
                    call.getCallable()(object);
                },
                [] {});
        });
}

void pushTypeAnchor(lua_State* state, const std::shared_ptr<LuaTypeCore>& core, int tableIndex)
{
    const std::size_t nameSize = core->fullName.size();
    void* const block = lua_newuserdata(state, sizeof(LuaTypeAnchor) + nameSize);
    auto* const anchor = new (block) LuaTypeAnchor{nullptr, nullptr, nameSize};
    if (nameSize > 0)
        std::memcpy(static_cast<void*>(anchor + 1), core->fullName.data(), nameSize);

    lua_pushvalue(state, tableIndex);
    lua_setfenv(state, -2);
    lua_createtable(state, 0, 1);
    lua_pushcfunction(state, &releaseTypeAnchor);
    lua_setfield(state, -2, "__gc");
    anchor->core = core.get(); // last: from here on the interpreter finalises the block
    anchor->hold = core;
    lua_setmetatable(state, -2);
}

} // namespace tbScripts::lua

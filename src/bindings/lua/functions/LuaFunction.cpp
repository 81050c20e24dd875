#include "bindings/lua/functions/LuaFunction.h"

#include "bindings/lua/functions/LuaFunctionClosure.h"
#include "bindings/lua/leaves/LuaLeaves.h"
#include "core/lua/calls/LuaHostCall.h"
#include "core/lua/references/LuaRegistry.h"

#include <cstring>
#include <utility>

namespace tbScripts::lua
{

namespace
{

// Stack: +1, a new anchor.
LuaFunctionAnchor* pushAnchor(lua_State* state, const tbMemory::StringView& name)
{
    void* const block = lua_newuserdata(state, sizeof(LuaFunctionAnchor) + name.size());
    auto* const anchor = static_cast<LuaFunctionAnchor*>(block);
    anchor->function = nullptr;
    anchor->leaf = nullptr;
    anchor->nameSize = name.size();
    if (!name.empty())
        std::memcpy(anchor + 1, name.data(), name.size());
    return anchor;
}

} // namespace

LuaFunction::LuaFunction(const tbMemory::StringView& name, const LuaStateHandle& handle)
    : LuaFunction(name, LuaOwner::globals(), handle)
{
}

LuaFunction::LuaFunction(
    const tbMemory::StringView& name, LuaOwner owner, const LuaStateHandle& handle)
    : Function(name)
    , m_owner(std::move(owner))
{
    install(handle);
}

LuaFunction::~LuaFunction()
{
    uninstall();
}

bool LuaFunction::install(const LuaStateHandle& handle)
{
    if (isInstalled() && m_handle.sharesStateWith(handle))
        return true;
    LuaHostCall call(handle); // first: leaving another state may run code of scripts and host
    uninstall();
    m_handle = handle;
    const bool isDone = call.run(
        [&](lua_State* state)
        {
            LuaFunctionAnchor* const anchor = pushAnchor(state, getName());
            lua_pushvalue(state, -1);
            m_anchorKey = takeRegistrySlot(*m_handle.getSlot(), state);
            m_anchor = anchor;
            m_anchor->function = this;
            _pushClosure(state);
            m_owner.publish(*m_handle.getSlot(), state, getName());
        });
    if (!isDone)
        _dropAnchor();
    return isDone;
}

void LuaFunction::publishLeaf()
{
    if (!isInstalled())
        return;
    LuaHostCall call(m_handle);
    call.run(
        [&](lua_State* state)
        {
            lua_rawgeti(state, LUA_REGISTRYINDEX, m_anchorKey);
            if (lua_touserdata(state, -1) != m_anchor)
                return; // a script has written to the registry
            _pushClosure(state);
            m_owner.publish(*m_handle.getSlot(), state, getName());
        });
}

void LuaFunction::_pushClosure(lua_State* state)
{
    const Counted<TypedCallable> typed = getDefinition().typed;
    lua_pushcclosure(state, &callHostFunction, 1);
    if (!typed || !typed->getSignature().leaf)
        return;
    const bool isLeaf =
        wrapLeaf(*m_handle.getSlot(), state, typed->getSignature(), &m_anchor->leaf);
    // A finaliser that ran meanwhile may have bound another callable.
    FunctionDefinition& definition = getDefinition();
    if (!isLeaf || !m_anchor || definition.typed.get() != typed.get())
        return;
    m_anchor->leaf = typed->getSignature().leaf;
    definition.leafWord = &m_anchor->leaf;
}

bool LuaFunction::isInstalled() const
{
    return m_anchor && m_handle.get();
}

void LuaFunction::uninstall()
{
    if (isInstalled())
    {
        m_anchor->function = nullptr; // first: removing the name may fail
        getDefinition().endLeaf();
        LuaHostCall call(m_handle, LuaHostCall::ENTRY::UPKEEP);
        call.run([&](lua_State* state)
                 { m_owner.unpublish(*m_handle.getSlot(), state, getName()); });
    }
    _dropAnchor();
}

void LuaFunction::_dropAnchor()
{
    // While the state closes, finalisers may still call the closure.
    if (m_anchor && m_handle.hasMemory())
    {
        m_anchor->function = nullptr;
        m_anchor->leaf = nullptr;
    }
    getDefinition().leafWord = nullptr;
    if (LuaStateSlot* const slot = m_handle.getSlot())
        freeRegistrySlot(*slot, m_anchorKey);
    m_anchorKey = LUA_NOREF;
    m_anchor = nullptr;
}

} // namespace tbScripts::lua

#include "bindings/lua/functions/LuaFunction.h"

#include "bindings/lua/functions/LuaFunctionClosure.h"
#include "bindings/lua/leaves/LuaCompiledLeaf.h"
#include "bindings/lua/leaves/LuaLeafSource.h"
#include "bindings/lua/leaves/LuaLeaves.h"
#include "core/lua/calls/LuaHostCall.h"
#include "core/lua/references/LuaRegistry.h"

#include <cstring>
#include <memory>
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
    anchor->nameSize = name.size();
    if (!name.empty())
        std::memcpy(anchor + 1, name.data(), name.size());
    return anchor;
}

// Returns whether the value on top of the stack is a closure over `anchor`. Stack: +0.
bool isClosureOver(lua_State* state, const void* anchor)
{
    if (lua_tocfunction(state, -1) != &callHostFunction || !lua_getupvalue(state, -1, 1))
        return false;
    const bool isOver = lua_touserdata(state, -1) == anchor;
    lua_pop(state, 1);
    return isOver;
}

// The same for the script function of a leaf around such a closure.
bool isLeafOver(lua_State* state, const void* anchor)
{
    if (lua_type(state, -1) != LUA_TFUNCTION || lua_iscfunction(state, -1))
        return false;
    bool isOver = false;
    int number = 1;
    while (const char* const name = isOver ? nullptr : lua_getupvalue(state, -1, number))
    {
        isOver = std::strcmp(name, OWN_SLOW) == 0 && isClosureOver(state, anchor);
        lua_pop(state, 1);
        ++number;
    }
    return isOver;
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

bool LuaFunction::publishLeaf()
{
    if (!isInstalled())
        return true;
    const LuaStateHandle handle = m_handle;
    return _publishLeaf() && handle.get();
}

bool LuaFunction::_publishLeaf()
{
    LuaHostCall call(m_handle);
    call.run(
        [&](lua_State* state)
        {
            lua_rawgeti(state, LUA_REGISTRYINDEX, m_anchorKey);
            if (lua_touserdata(state, -1) != m_anchor)
                return; // a script has written to the registry
            if (!_isPublished(state))
                return; // or its own value under the name
            _pushClosure(state);
            if (m_anchor)
                m_owner.publish(*m_handle.getSlot(), state, getName());
        });
    return m_anchor != nullptr; // what has been ended exists until the call ends
}

void LuaFunction::_pushClosure(lua_State* state)
{
    const Counted<TypedCallable> typed = getDefinition().typed;
    if (!typed || !typed->getSignature().leaf)
    {
        lua_pushcclosure(state, &callHostFunction, 1);
        return;
    }
    std::unique_ptr<LuaCompiledLeaf> leaf = LuaCompiledLeaf::push(m_handle, state);
    lua_pushcclosure(state, &callHostFunction, 2);
    const bool isLeaf =
        wrapLeaf(*m_handle.getSlot(), state, typed->getSignature(), leaf->getWord());
    // A finaliser that ran meanwhile may have bound another callable.
    FunctionDefinition& definition = getDefinition();
    if (!isLeaf || !m_anchor || definition.leaf || definition.typed.get() != typed.get())
        return;
    leaf->begin();
    definition.leaf = std::move(leaf);
}

bool LuaFunction::_isPublished(lua_State* state) const
{
    m_owner.pushPublished(*m_handle.getSlot(), state, getName());
    const bool isPublished = isClosureOver(state, m_anchor) || isLeafOver(state, m_anchor);
    lua_pop(state, 1);
    return isPublished;
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
        m_anchor->function = nullptr;
    getDefinition().endLeaf();
    if (LuaStateSlot* const slot = m_handle.getSlot())
        freeRegistrySlot(*slot, m_anchorKey);
    m_anchorKey = LUA_NOREF;
    m_anchor = nullptr;
}

} // namespace tbScripts::lua

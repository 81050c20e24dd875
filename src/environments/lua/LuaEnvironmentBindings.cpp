// How a Lua back-end creates the bindings of an environment.

#include "bindings/lua/LuaDuplicateDeclaration.h"
#include "bindings/lua/functions/LuaFunction.h"
#include "bindings/lua/namespaces/LuaNamespace.h"
#include "bindings/lua/types/LuaUserType.h"
#include "core/lua/calls/LuaHostCall.h"
#include "environments/lua/LuaEnvironmentStrategy.h"

namespace tbScripts::lua
{

namespace
{

template <typename T>
std::unique_ptr<T> createGlobal(const tbMemory::StringView& name, const LuaStateHandle& handle)
{
    auto created = std::make_unique<T>(name, handle);
    return created->isInstalled() ? std::move(created) : nullptr;
}

template <typename T, typename Front>
void installGlobal(Front& binding, const LuaStateHandle& handle)
{
    if (auto* const ours = dynamic_cast<T*>(&binding))
        ours->install(handle);
}

template <typename T, typename Front>
void resolveDuplicateGlobal(Front& created, Front& existing, const LuaStateHandle& handle)
{
    auto* const ours = dynamic_cast<T*>(&created);
    auto* const others = dynamic_cast<T*>(&existing);
    if (ours && others)
        lua::resolveDuplicate(*ours, *others, handle);
}

} // namespace

std::unique_ptr<Function> LuaEnvironmentStrategy::createFunction(const tbMemory::StringView& name)
{
    return createGlobal<LuaFunction>(name, m_handle);
}

std::unique_ptr<UserType> LuaEnvironmentStrategy::createUserType(const tbMemory::StringView& name)
{
    return createGlobal<LuaUserType>(name, m_handle);
}

std::unique_ptr<Namespace> LuaEnvironmentStrategy::createNamespace(const tbMemory::StringView& name)
{
    return createGlobal<LuaNamespace>(name, m_handle);
}

void LuaEnvironmentStrategy::installFunction(Function& function)
{
    installGlobal<LuaFunction>(function, m_handle);
}

void LuaEnvironmentStrategy::installUserType(UserType& type)
{
    installGlobal<LuaUserType>(type, m_handle);
}

void LuaEnvironmentStrategy::installNamespace(Namespace& scope)
{
    installGlobal<LuaNamespace>(scope, m_handle);
}

void LuaEnvironmentStrategy::resolveDuplicate(std::unique_ptr<Function> created, Function& existing)
{
    LuaHostCall call(m_handle, LuaHostCall::ENTRY::UPKEEP); // keeps both alive until it ends
    resolveDuplicateGlobal<LuaFunction>(*created, existing, m_handle);
    existing.reset();
}

void LuaEnvironmentStrategy::resolveDuplicate(std::unique_ptr<UserType> created, UserType& existing)
{
    resolveDuplicateGlobal<LuaUserType>(*created, existing, m_handle);
}

void LuaEnvironmentStrategy::resolveDuplicate(
    std::unique_ptr<Namespace> created, Namespace& existing)
{
    resolveDuplicateGlobal<LuaNamespace>(*created, existing, m_handle);
}

} // namespace tbScripts::lua

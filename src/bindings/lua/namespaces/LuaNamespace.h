#pragma once

#include "bindings/TypedNamespace.h"
#include "bindings/lua/LuaOwner.h"
#include "core/NameRegistry.h"
#include "core/lua/LuaStateHandle.h"

#include "tbScripts/Namespace.h"

#include <tbMemory/String.h>
#include <tbMemory/StringView.h>

#include <memory>

namespace tbScripts::lua
{

class LuaFunction;
class LuaHostCall;
class LuaUserType;

/// Namespace that is published in a Lua state: as a global, or as a field of its parent's table.
///
/// Each operation begins with one `LuaHostCall`. A finaliser or the log receiver that runs during
/// the call may release this namespace or its parent, which are then destroyed when the call ends.
class LuaNamespace final : public Namespace, public TypedNamespace
{
public:
    /// Publishes the namespace as global `name`. `isInstalled` returns whether that worked.
    LuaNamespace(const tbMemory::StringView& name, const LuaStateHandle& handle);

    /// Publishes the namespace as field `name` of the namespace of that full name.
    LuaNamespace(
        const tbMemory::StringView& name,
        const tbMemory::StringView& parentFullName,
        const LuaStateHandle& handle);

    /// Not copyable: a namespace owns what is declared in it. Copy the `Namespace` part instead.
    LuaNamespace(const LuaNamespace&) = delete;
    LuaNamespace& operator=(const LuaNamespace&) = delete;

    /// Does what `uninstall` does.
    ~LuaNamespace() override;

    /// Publishes an empty namespace in the state of `handle`, unless it is published there already.
    /// Its declarations are installed when the host declares them again. On failure: logs why and
    /// returns false.
    bool install(const LuaStateHandle& handle);

    /// Releases the namespace and removes its script-visible name, even if a script has assigned
    /// another value to that name.
    void uninstall();

    /// Leaves table and name to another namespace of the same full name. Requires: the namespace
    /// has no declarations.
    void leaveTable() { m_isPublished = false; }

    /// Returns whether the namespace is published in an open state.
    bool isInstalled() const;

    const LuaStateHandle& getHandle() const { return m_handle; }

    Namespace* getNamespace(const tbMemory::StringView& name) const override;
    UserType* getUserType(const tbMemory::StringView& name) const override;
    void setVar(const tbMemory::StringView& name, const ScriptObjectReference& value) override;
    void setVar(const tbMemory::StringView& name, const tbMemory::StringView& value) override;
    void setVar(const tbMemory::StringView& name, double value) override;
    void setVar(const tbMemory::StringView& name, float value) override;
    void setVar(const tbMemory::StringView& name, int value) override;
    void setVar(const tbMemory::StringView& name, bool value) override;
    void setVar(
        const tbMemory::StringView& name,
        const tbMemory::StringView& userTypeName,
        void* object) override;
    using Namespace::setVar;
    Namespace* setNamespace(const tbMemory::StringView& name) override;
    UserType* setUserType(const tbMemory::StringView& name) override;
    Function* setFunction(const tbMemory::StringView& name) override;
    void clear() override;
    void release() override;
    bool setEnumeration(
        const typed::TypeId& type, const typed::Enumerator* enumerators, int count) override;

private:
    LuaNamespace(
        const tbMemory::StringView& name,
        const tbMemory::StringView& fullName,
        LuaOwner owner,
        const LuaStateHandle& handle);

    // Each of them is one host call. The end of that call may destroy the returned object, and this
    // namespace.
    LuaNamespace* _declareNamespace(const tbMemory::StringView& name);
    LuaUserType* _declareUserType(const tbMemory::StringView& name);
    LuaFunction* _declareFunction(const tbMemory::StringView& name);

    // Returns what `declare` gives, looked up when its host call has ended: what waited for that
    // may have ended this namespace, or released it.
    template <typename T, typename Declare>
    T* _declareIn(
        const OwningRegistry<T>& registry, const tbMemory::StringView& name, Declare&& declare);

    // Returns whether the namespace can be changed during `call`.
    bool _beginChange(const LuaHostCall& call);

    // Returns the object of `registry` under `name`, published in the present state; if there is
    // none, the object that `make` creates. Null on failure.
    template <typename T, typename Make>
    T* _installOrMake(OwningRegistry<T>& registry, const tbMemory::StringView& name, Make&& make);

    template <typename PushValue>
    void _setField(const tbMemory::StringView& name, PushValue&& pushValue);

    void _unpublish();
    void _clear();
    void _releaseWithoutState();

    OwningRegistry<LuaNamespace> m_namespaces;
    OwningRegistry<LuaUserType> m_userTypes;
    OwningRegistry<LuaFunction> m_functions;
    tbMemory::String m_fullName; // also the key of the table in the registry
    LuaOwner m_owner;
    LuaStateHandle m_handle;
    bool m_isPublished = false; // in the state of the handle
    bool m_isReleased = true;   // no declaration since the construction or the last release
    std::shared_ptr<const char> m_life = std::make_shared<const char>(); // expires with this object
};

} // namespace tbScripts::lua

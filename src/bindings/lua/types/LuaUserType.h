#pragma once

#include "bindings/TypedUserType.h"
#include "bindings/lua/LuaNamedTables.h"
#include "bindings/lua/LuaOwner.h"
#include "bindings/lua/types/LuaTypeCore.h"
#include "bindings/lua/types/LuaTypeTable.h"
#include "core/lua/LuaApi.h"
#include "core/lua/LuaStateHandle.h"

#include "tbScripts/UserType.h"

#include <initializer_list>
#include <memory>

namespace tbScripts::lua
{

class LuaHostCall;

/// User type that is published in a Lua state: as a global, or as a field of a namespace's table.
///
/// Each operation begins with one `LuaHostCall`. A finaliser or the log receiver that runs during
/// the call may clear or release this type, which is then destroyed when the call ends.
class LuaUserType final : public UserType, public TypedUserType
{
public:
    /// Publishes the type as global `name`. `isInstalled` returns whether that worked.
    LuaUserType(const tbMemory::StringView& name, const LuaStateHandle& handle);

    /// Publishes the type as field `name` of the namespace of that full name.
    LuaUserType(
        const tbMemory::StringView& name,
        const tbMemory::StringView& namespaceFullName,
        const LuaStateHandle& handle);

    /// Not copyable: one type owns one script-visible name. Copy the `UserType` part instead.
    LuaUserType(const LuaUserType&) = delete;
    LuaUserType& operator=(const LuaUserType&) = delete;

    /// Does what `uninstall` does.
    ~LuaUserType() override;

    /// Publishes the type in the state of `handle`, unless it is published there already, with
    /// constructor and destructor only. On failure: logs why and returns false.
    bool install(const LuaStateHandle& handle);

    /// Clears the type and removes its script-visible name, even if a script has assigned another
    /// value to that name. Instances stay, without fields and methods.
    void uninstall();

    /// Returns whether the type is published in an open state.
    bool isInstalled() const;

    const LuaStateHandle& getHandle() const { return m_core->handle; }

    Function* getMethod(const tbMemory::StringView& name) const override;
    Function* getStaticMethod(const tbMemory::StringView& name) const override;
    void setConstructor(Constructor constructor) override;
    void setDestructor(Destructor destructor) override;
    Function* setMethod(const tbMemory::StringView& name, bool selfOwnedByScript) override;
    Function* setStaticMethod(const tbMemory::StringView& name) override;
    Function* setOperator(BUILT_IN_FUNCTION op) override;
    void setField(UserTypeFieldDescriptor descriptor) override;
    void setArrayAccess(UserTypeArrayDescriptor descriptor) override;
    void clear() override;

    bool setType(const typed::TypeId& type) override;
    void setTypedConstructor(Counted<TypedCallable> constructor) override;
    void setMember(const tbMemory::StringView& name, const typed::Member& member) override;
    void setTypedProperty(
        const tbMemory::StringView& name,
        Counted<TypedCallable> getter,
        Counted<TypedCallable> setter) override;
    void setTypedIndex(Counted<TypedCallable> read, Counted<TypedCallable> write) override;
    void setTypedNames(Counted<TypedCallable> read, Counted<TypedCallable> write) override;
    void setTypedIteration(Counted<TypedCallable> walk) override;
    bool addBase(const typed::TypeId& base, void* (*toBase)(void* object)) override;

private:
    LuaUserType(
        const tbMemory::StringView& name,
        const tbMemory::StringView& fullName,
        LuaOwner owner,
        const LuaStateHandle& handle);

    // Returns whether the type can be changed during `call`.
    bool _isUsable(const LuaHostCall& call) const;

    // Undoes a publishing that failed; `before` is what the registry held under the name until
    // then.
    void _abandon(LuaHostCall& call, NAMED_TABLE before);

    LuaFunction* _findMethod(const tbMemory::StringView& name) const;

    // Declares a method with parameters of those types, all with this type's name, and returns it;
    // null on failure. One host call, whose end may destroy the returned function, and this type.
    LuaFunction* _declareMethod(
        const tbMemory::StringView& name,
        std::initializer_list<FUNCTION_PARAMETER_TYPE> parameters);

    // Creates the function of a new method; null if it cannot be published.
    LuaFunction* _makeMethod(const tbMemory::StringView& name);

    // Both exchange callables: the old one is destroyed last, since its destructor may run host
    // code.
    void _setGetter(
        LuaHostCall& call,
        const tbMemory::StringView& name,
        decltype(UserTypeFieldDescriptor::getter)& getter);

    // Compatibility: adds `parameters` to the setter's list, also if there is one already (decision
    // 0026).
    void _setSetter(
        LuaHostCall& call,
        const tbMemory::StringView& name,
        decltype(UserTypeFieldDescriptor::setter)& setter,
        std::initializer_list<FunctionParameter> parameters);

    // Runs `work(state)` with the parts of the type's table on top of the stack.
    template <typename Work>
    bool _runWithParts(LuaHostCall& call, Work&& work);

    // Lets compiled code read or write elements by itself, if what `definition` calls is a leaf.
    template <typename Definition>
    void
    _publishElementLeaf(LuaHostCall& call, ELEMENT_ACCESS access, Counted<Definition> definition);

    void _freeParts(LuaStateSlot& slot);

    void _dropMembers();

    LuaOwner m_owner;
    LuaOwner m_ownerOfMethods = LuaOwner::globals(); // this type's table, from the first method on
    std::shared_ptr<LuaTypeCore> m_core;             // never null
};

} // namespace tbScripts::lua

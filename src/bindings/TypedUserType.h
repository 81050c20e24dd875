#pragma once

#include "bindings/TypedCallable.h"

#include "tbScripts/UserType.h"

#include <tbMemory/StringView.h>

namespace tbScripts
{

/// What the typed layer declares of a user type beside the operations of `UserType`. Every
/// interpreter's user type is one of these too.
class TypedUserType
{
public:
    /// Returns the same type, null if its interpreter knows nothing of types of the host.
    static TypedUserType* of(UserType& type) { return dynamic_cast<TypedUserType*>(&type); }

    /// Says which of the host's types this is. Objects of that type are passed as instances of the
    /// user type that was bound to it last. Returns false if the type does not exist afterwards:
    /// what it drops may end it.
    virtual bool setType(const typed::TypeId& type) = 0;

    virtual void setTypedConstructor(Counted<TypedCallable> constructor) = 0;

    virtual void setMember(const tbMemory::StringView& name, const typed::Member& member) = 0;

    /// Either may be empty.
    virtual void setTypedProperty(
        const tbMemory::StringView& name,
        Counted<TypedCallable> getter,
        Counted<TypedCallable> setter) = 0;
    virtual void setTypedIndex(Counted<TypedCallable> read, Counted<TypedCallable> write) = 0;

    /// Reads and writes of names that are neither fields nor methods.
    virtual void setTypedNames(Counted<TypedCallable> read, Counted<TypedCallable> write) = 0;

    /// `walk` returns a table for an instance, over which `pairs` goes.
    virtual void setTypedIteration(Counted<TypedCallable> walk) = 0;

    /// Lets instances be passed where the base class is expected, and gives them its members.
    /// Returns false if no user type was bound to `base`.
    virtual bool addBase(const typed::TypeId& base, void* (*toBase)(void* object)) = 0;

protected:
    ~TypedUserType() = default;
};

} // namespace tbScripts

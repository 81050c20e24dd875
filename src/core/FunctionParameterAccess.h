#pragma once

#include "core/SharedViewRoom.h"

#include "tbScripts/FunctionParameter.h"

namespace tbScripts
{

/// Lets the interpreter's side fill parameters in place. Storing a value keeps the parameter's kind
/// and reuses its memory.
struct FunctionParameterAccess
{
    /// @{ Stores a value, whatever the old value is.
    static void storeBool(FunctionParameter& parameter, bool value) { parameter._storeBool(value); }

    static void storeInt(FunctionParameter& parameter, int value) { parameter._storeInt(value); }

    static void storeFloat(FunctionParameter& parameter, float value)
    {
        parameter._storeFloat(value);
    }

    static void storeDouble(FunctionParameter& parameter, double value)
    {
        parameter._storeDouble(value);
    }

    /// A null view is stored as the empty string.
    static void storeString(FunctionParameter& parameter, const tbMemory::StringView& text)
    {
        parameter._storeString(text);
    }

    static void storeReference(FunctionParameter& parameter, const ScriptObjectReference& value)
    {
        parameter._storeReference(value);
    }

    /// Leaves type name and view as they are. From here on no instance that is created from the
    /// value owns the object, because a script has an instance already.
    static void storeObject(FunctionParameter& parameter, void* object)
    {
        parameter._storeObject(object);
    }

    ///@}

    /// Destroys the value; the kind stays.
    static void clear(FunctionParameter& parameter) { parameter._clear(); }

    ///@{
    /// The rest of a user type's value. Requires: the storage holds one, as after `storeObject`.
    static void storeTypeName(FunctionParameter& parameter, const tbMemory::StringView& typeName)
    {
        parameter._storeTypeName(typeName);
    }

    static SharedView& editView(FunctionParameter& parameter)
    {
        return sharedViewIn(parameter.m_storage.userType.view);
    }

    /// Returns the view of the script value that this was read from; null if it was not read from a
    /// script.
    static const ScriptObjectInterpreterView* getView(const FunctionParameter& parameter)
    {
        if (parameter.m_grant == FunctionParameter::GRANT::SHARED)
            return nullptr;
        return sharedViewIn(parameter.m_storage.userType.view).get();
    }

    /// Returns whether an instance that is created from the value is to own the object.
    static bool mayCreateOwner(const FunctionParameter& parameter) { return parameter._hasGrant(); }

    /// Notes that an owner was created; this parameter and its copies create no other. Requires:
    /// `mayCreateOwner`.
    static void noteOwner(const FunctionParameter& parameter) { parameter._useGrant(); }

    ///@}

    /// Returns whether the parameter was declared to accept every user type.
    static bool acceptsAnyUserType(const FunctionParameter& parameter)
    {
        return parameter.m_acceptsAnyUserType;
    }

    /// Returns the name of the one user type that the storage is prepared for; null if it is
    /// prepared for every one, or for none.
    static const tbMemory::String* findExpectedTypeName(const FunctionParameter& parameter)
    {
        return parameter._findExpectedTypeName();
    }
};

} // namespace tbScripts

#pragma once

#include "tbScripts/Api.h"

#include <tbMemory/String.h>
#include <tbMemory/StringView.h>

#include <type_traits>

namespace tbScripts
{

class Function;
class ScriptObjectReference;
class UserType;

/// Named scope of variables, functions, user types and further namespaces. Scripts see it as a
/// table.
///
/// It owns what is declared in it. Setting a variable overwrites the field of that name whatever it
/// holds, a function, type or namespace included. One that belongs to an interpreter which was
/// switched away or closed does nothing and gives null, until it is declared again. Failures of the
/// interpreter are logged (tag "LuaEnvironment").
///
/// Kept: a namespace and a user type of one full name share one table. Clearing the namespace takes
/// the type's entries too, and instances that are collected afterwards are not destroyed.
class TBSCRIPTS_API Namespace
{
public:
    /// Makes one of that short name; `Environment::setNamespace` gives one that scripts see.
    explicit Namespace(const tbMemory::StringView& name);

    ///@{
    /// Copies the name, nothing else.
    Namespace(const Namespace& other);
    Namespace& operator=(const Namespace& other);
    ///@}

    /// Ends what was declared here.
    virtual ~Namespace();

    /// Returns the short name, without those of the namespaces around it.
    ///
    /// Valid until: this namespace is assigned to or destroyed.
    tbMemory::StringView getName() const { return m_name; }

    ///@{
    /// Returns what was declared here under `name`, null if nothing was. A name is taken as it is,
    /// without path syntax.
    ///
    /// Ownership: this namespace's.
    /// Valid until: it is released or destroyed. The same holds for everything that is declared
    /// below.
    virtual Namespace* getNamespace(const tbMemory::StringView& name) const = 0;
    virtual UserType* getUserType(const tbMemory::StringView& name) const = 0;
    ///@}

    ///@{
    /// Sets a variable. An empty reference stores nil, and so does a null text; a text ends at its
    /// first NUL.
    virtual void setVar(const tbMemory::StringView& name, const ScriptObjectReference& value) = 0;
    virtual void setVar(const tbMemory::StringView& name, const tbMemory::StringView& value) = 0;
    virtual void setVar(const tbMemory::StringView& name, double value) = 0;
    virtual void setVar(const tbMemory::StringView& name, float value) = 0;
    virtual void setVar(const tbMemory::StringView& name, int value) = 0;
    virtual void setVar(const tbMemory::StringView& name, bool value) = 0;
    ///@}

    /// Stores an instance of the user type `userTypeName` (its full name) that the host goes on
    /// owning; a null `object` stores nil. A name that is no user type gives a value without
    /// methods.
    virtual void setVar(
        const tbMemory::StringView& name,
        const tbMemory::StringView& userTypeName,
        void* object) = 0;

    /// Declares a namespace in this one and returns it.
    ///
    /// A name declared before is logged (tag "LuaNamespace"), and its namespace is returned as it
    /// is.
    /// On failure: null.
    virtual Namespace* setNamespace(const tbMemory::StringView& name) = 0;

    /// Declares a user type and returns it, without methods and fields. A name declared before is
    /// logged (tag "LuaNamespace"), and its type is returned cleared.
    /// On failure: null.
    virtual UserType* setUserType(const tbMemory::StringView& name) = 0;

    /// Declares a function and returns it, unbound. A name declared before is logged (tag
    /// "LuaNamespace"), and its function is returned as new.
    /// On failure: null.
    virtual Function* setFunction(const tbMemory::StringView& name) = 0;

    /// Empties what scripts see, here and in the namespaces inside, resets the functions and runs
    /// two full collections. What was declared stays declared.
    virtual void clear() = 0;

    /// Destroys all that was declared here, and empties what scripts see. What a callable that is
    /// running needs of it lives until the outermost call returns.
    virtual void release() = 0;

    /// The same as for a view of `value`; a null pointer stores nil.
    void setVar(const tbMemory::StringView& name, const char* value);

    /// Not offered: a pointer would be taken for a `bool`. Name its user type.
    template <
        typename T,
        typename = std::enable_if_t<!std::is_same<std::remove_cv_t<T>, char>::value>>
    void setVar(const tbMemory::StringView& name, T* value) = delete;

private:
    tbMemory::String m_name;
};

} // namespace tbScripts

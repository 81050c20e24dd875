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
/// A namespace owns what is declared in it. `setVar` overwrites the field of that name even if it
/// holds a function, type or namespace. A namespace whose interpreter was replaced or closed does
/// nothing and returns null, until it is declared again. Failures of the interpreter are logged
/// (tag "LuaEnvironment").
///
/// Compatibility: a namespace and a user type of one full name share one table. `clear` removes the
/// type's entries too, all but "__gc": objects that scripts own are still destroyed (decision 0021,
/// decision 0026).
///
/// @code
/// Namespace* const sky = environment.setNamespace("world::sky"); // declares world as well
/// sky->setVar("height", 80.0);
/// sky->setVar("highest", "Point", &home);
/// @endcode
class TBSCRIPTS_API Namespace
{
public:
    /// Creates a namespace that no script sees; `Environment::setNamespace` declares one that
    /// scripts see. `name` is its short name.
    explicit Namespace(const tbMemory::StringView& name);

    ///@{
    /// Copies the name, nothing else.
    Namespace(const Namespace& other);
    Namespace& operator=(const Namespace& other);
    ///@}

    /// Destroys what was declared here.
    virtual ~Namespace();

    /// Returns the short name, without the names of the namespaces around it.
    ///
    /// Valid until: this namespace is assigned to or destroyed.
    tbMemory::StringView getName() const { return m_name; }

    ///@{
    /// Returns the namespace or type that was declared here under `name`, null if there is none.
    /// Names have no path syntax.
    ///
    /// Ownership: this namespace's.
    /// Valid until: this namespace is released or destroyed. The same holds for everything that the
    /// operations of this class declare.
    virtual Namespace* getNamespace(const tbMemory::StringView& name) const = 0;
    virtual UserType* getUserType(const tbMemory::StringView& name) const = 0;
    ///@}

    ///@{
    /// Sets a variable. An empty reference stores nil, and so does a null string; a string ends at
    /// its first NUL.
    virtual void setVar(const tbMemory::StringView& name, const ScriptObjectReference& value) = 0;
    virtual void setVar(const tbMemory::StringView& name, const tbMemory::StringView& value) = 0;
    virtual void setVar(const tbMemory::StringView& name, double value) = 0;
    virtual void setVar(const tbMemory::StringView& name, float value) = 0;
    virtual void setVar(const tbMemory::StringView& name, int value) = 0;
    virtual void setVar(const tbMemory::StringView& name, bool value) = 0;
    ///@}

    /// Stores an instance of the user type with the full name `userTypeName`; a null `object`
    /// stores nil. A name of no declared type stores a value without methods.
    ///
    /// Ownership: the host keeps `object`.
    virtual void setVar(
        const tbMemory::StringView& name,
        const tbMemory::StringView& userTypeName,
        void* object) = 0;

    /// Declares a namespace in this one and returns it.
    ///
    /// A name that was declared before is logged (tag "LuaNamespace"); its namespace is returned
    /// unchanged.
    /// On failure: returns null.
    virtual Namespace* setNamespace(const tbMemory::StringView& name) = 0;

    /// Declares a user type and returns it, without methods and fields.
    ///
    /// A name that was declared before is logged (tag "LuaNamespace"); its type is cleared and
    /// returned.
    /// On failure: returns null.
    virtual UserType* setUserType(const tbMemory::StringView& name) = 0;

    /// Declares a function and returns it, unbound.
    ///
    /// A name that was declared before is logged (tag "LuaNamespace"); its function is reset and
    /// returned.
    /// On failure: returns null.
    virtual Function* setFunction(const tbMemory::StringView& name) = 0;

    /// Empties the tables of this namespace and of the namespaces inside, resets the functions and
    /// runs two full collections. Names that were declared stay declared. A table that is shared
    /// with a user type keeps the type's finaliser.
    virtual void clear() = 0;

    /// Empties the tables and destroys everything that was declared here. Objects that a running
    /// callable still needs are destroyed when the outermost call returns.
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

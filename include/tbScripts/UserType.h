#pragma once

#include "tbScripts/Api.h"
#include "tbScripts/BuiltInFunction.h"
#include "tbScripts/UserTypeDescriptors.h"

#include <tbMemory/BufferView.h>
#include <tbMemory/String.h>
#include <tbMemory/StringView.h>

#include <functional>

namespace tbScripts
{

class Function;

/// Type of the host that scripts see: they make instances, call methods, read and write fields,
/// index instances like arrays and apply operators; the interpreter's collector destroys what
/// scripts own.
///
/// Scripts reach the type by its name, as a table: `Name.new()` makes an instance if there is a
/// constructor, static methods and methods are fields of it. Instances carry `enableGc` and
/// `disableGc`, which say whether the script owns the object: `new` makes instances that it owns,
/// the host says it with each one that it hands over.
///
/// Everything may be declared, changed and cleared at any time, also by a callable that is running:
/// that call goes on with what it began with, and instances made before see the new declarations.
/// A type that belongs to an interpreter which was switched away or closed does nothing and gives
/// null, until it is declared again. Failures of the interpreter are logged (tag "LuaEnvironment").
class TBSCRIPTS_API UserType
{
public:
    /// Makes the host object of a new instance; gets no parameters.
    using Constructor = std::function<void*(const tbMemory::BufferView<FunctionParameter>&)>;

    /// Destroys the host object of an instance that its script owns.
    using Destructor = std::function<void(void*)>;

    /// Makes a type whose full name is `name` too.
    explicit UserType(const tbMemory::StringView& name);

    ///@{
    /// Copies the names, nothing else.
    UserType(const UserType& other);
    UserType& operator=(const UserType& other);
    ///@}

    /// Ends the type. Instances that scripts still hold cannot be used any more; objects that
    /// scripts own are destroyed when their instances go.
    virtual ~UserType();

    /// Returns the short name, without those of its namespaces.
    ///
    /// Valid until: this type is assigned to or destroyed. The same holds for the full name.
    tbMemory::StringView getName() const { return m_name; }

    /// Returns the name with those of its namespaces before it: "outer::inner::Name". It is what
    /// parameters, fields and `Environment::setObject` name the type by.
    tbMemory::StringView getFullName() const { return m_fullName; }

    /// Returns the method, static method or operator ("__add") of that name, null if there is none.
    ///
    /// Ownership: the type's.
    /// Valid until: the type is cleared or destroyed. The same holds for every function below.
    virtual Function* getMethod(const tbMemory::StringView& name) const = 0;

    /// The same: methods and static methods share their names.
    virtual Function* getStaticMethod(const tbMemory::StringView& name) const = 0;

    /// Lets scripts make instances, by `new`. Its arguments are ignored: a type whose objects need
    /// some offers a static method. What `constructor` throws is left to the interpreter, and
    /// leaves no instance. An empty one makes each `new` a script error.
    virtual void setConstructor(Constructor constructor) = 0;

    /// Says how objects are destroyed that scripts own; a new type's are not.
    ///
    /// `destructor` runs once for each, when its instance is collected, at the latest when the
    /// interpreter closes, even if the type is gone by then: what it captures lives as long.
    virtual void setDestructor(Destructor destructor) = 0;

    /// Declares a method and returns it, unbound, with one parameter: the instance it is called
    /// on. If `selfOwnedByScript`, returning that parameter returns the instance itself.
    ///
    /// A name declared before is logged (tag "LuaUserType"), and its function is returned as new.
    /// On failure: null if the function cannot be made.
    virtual Function* setMethod(const tbMemory::StringView& name, bool selfOwnedByScript) = 0;

    /// The same without parameter: scripts call it as `Name.method()`.
    virtual Function* setStaticMethod(const tbMemory::StringView& name) = 0;

    /// Declares an operator and returns it, unbound, with the parameters it has: the instance and,
    /// for two operands, an other instance of this type. Other operands are a script error.
    ///
    /// On failure: null; a value outside the enumeration is logged (tag "LuaUserType").
    virtual Function* setOperator(BUILT_IN_FUNCTION op) = 0;

    /// Lets scripts read and write field `descriptor.name`, as far as getter and setter are given.
    ///
    /// A getter comes before a method of that name. A later call replaces what it gives; kept: the
    /// setter's list of parameters grows by two then, of which only the first two are ever filled.
    /// Names that read as a number cannot be reached: those index the instance.
    virtual void setField(UserTypeFieldDescriptor descriptor) = 0;

    /// Lets scripts read and write `instance[number]`, as far as the descriptor says. A text that
    /// reads as a number counts as one.
    virtual void setArrayAccess(UserTypeArrayDescriptor descriptor) = 0;

    /// Drops all methods, operators, fields and array access. Constructor, destructor and
    /// instances stay.
    virtual void clear() = 0;

protected:
    /// For the interpreter's kind of type, which knows its namespaces.
    void setFullName(const tbMemory::StringView& fullName) { m_fullName = fullName; }

private:
    tbMemory::String m_name;
    tbMemory::String m_fullName;
};

} // namespace tbScripts

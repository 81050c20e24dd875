#pragma once

#include "tbScripts/Api.h"
#include "tbScripts/BuiltInFunction.h"
#include "tbScripts/Callable.h"
#include "tbScripts/UserTypeDescriptors.h"

#include <tbMemory/BufferView.h>
#include <tbMemory/String.h>
#include <tbMemory/StringView.h>

namespace tbScripts
{

class Function;

/// Host type that scripts use: they create instances, call methods, read and write fields, index
/// instances like arrays and apply operators. The interpreter's collector destroys the objects that
/// scripts own.
///
/// Scripts reach the type by its name, as a table: `Name.new()` creates an instance if the type has
/// a constructor; static methods and methods are fields of the table. Each instance has an
/// ownership flag: set for objects created by `new`, chosen by the host for each object it passes
/// in, changed by scripts with `enableGc()` and `disableGc()`.
///
/// The host may declare, change and clear at any time, also from a running callable: the running
/// call finishes with the declarations that it started with, and existing instances get the new
/// ones. A type whose interpreter was replaced or closed does nothing and returns null, until it is
/// declared again. Failures of the interpreter are logged (tag "LuaEnvironment").
///
/// @code
/// UserType* const point = environment.setUserType("Point");
/// point->setConstructor([](const Parameters&) { return new Point; });
/// point->setDestructor([](void* object) { delete static_cast<Point*>(object); });
/// @endcode
class TBSCRIPTS_API UserType
{
public:
    /// Creates the host object of a new instance; receives no parameters.
    using Constructor = Callable<void*(const tbMemory::BufferView<FunctionParameter>&)>;

    /// Destroys the host object of an instance that the script owns.
    using Destructor = Callable<void(void*)>;

    /// Creates a type whose full name is `name` too.
    explicit UserType(const tbMemory::StringView& name);

    ///@{
    /// Copies the names, nothing else.
    UserType(const UserType& other);
    UserType& operator=(const UserType& other);
    ///@}

    /// Destroys the type. Scripts cannot use the instances that they still hold. Objects that
    /// scripts own are destroyed when their instances are collected.
    virtual ~UserType();

    /// Returns the short name, without the names of its namespaces.
    ///
    /// Valid until: this type is assigned to or destroyed. The same holds for `getFullName`.
    tbMemory::StringView getName() const { return m_name; }

    /// Returns the name after the names of its namespaces: "outer::inner::Name". Parameters, fields
    /// and `Environment::setObject` expect this name.
    tbMemory::StringView getFullName() const { return m_fullName; }

    /// Returns the method, static method or operator ("__add") of that name, null if there is none.
    ///
    /// Ownership: the type's.
    /// Valid until: the type is cleared or destroyed. The same holds for every function that this
    /// class returns.
    virtual Function* getMethod(const tbMemory::StringView& name) const = 0;

    /// The same as `getMethod`: methods and static methods share their names.
    virtual Function* getStaticMethod(const tbMemory::StringView& name) const = 0;

    /// Lets scripts create instances with `Name.new()`, whose arguments are ignored: a type whose
    /// objects need arguments declares a static method. A `constructor` that throws creates no
    /// instance; the interpreter reports the exception. An empty one makes each `new` a script
    /// error.
    virtual void setConstructor(Constructor constructor) = 0;

    /// Sets how objects that scripts own are destroyed. A new type destroys none.
    ///
    /// `destructor` runs once for each object, when the object's instance is collected, at the
    /// latest when the interpreter closes. It outlives the type, with everything that it captures.
    virtual void setDestructor(Destructor destructor) = 0;

    /// Declares a method and returns it, unbound, with one parameter: the instance on which the
    /// script calls it. If `selfOwnedByScript`, a callable that returns this parameter returns the
    /// instance itself.
    ///
    /// A name that was declared before is logged (tag "LuaUserType"); its function is reset and
    /// returned.
    /// On failure: returns null.
    ///
    /// @code
    /// Function* const scaled = point->setMethod("scaled", false);
    /// scaled->addParameter(PARAM_TYPE_DOUBLE);
    /// @endcode
    virtual Function* setMethod(const tbMemory::StringView& name, bool selfOwnedByScript) = 0;

    /// The same without parameter: scripts call it as `Name.method()`.
    virtual Function* setStaticMethod(const tbMemory::StringView& name) = 0;

    /// Declares an operator and returns it, unbound, with its parameters: the instance and, for
    /// operators with two operands, another instance of this type. Other operands are a script
    /// error.
    ///
    /// On failure: returns null; a value outside the enumeration is logged (tag "LuaUserType").
    ///
    /// @code
    /// point->setOperator(BUILT_IN_FUNCTION::EQ)
    ///     ->setFunction(
    ///         [](const Parameters& operands)
    ///         {
    ///             const Point* const a = pointIn(operands[0]);
    ///             const Point* const b = pointIn(operands[1]);
    ///             return a->x == b->x && a->y == b->y;
    ///         });
    /// @endcode
    virtual Function* setOperator(BUILT_IN_FUNCTION op) = 0;

    /// Lets scripts read field `descriptor.name` if there is a getter, and write it if there is a
    /// setter.
    ///
    /// A getter hides a method of the same name. A later call replaces getter and setter. Scripts
    /// cannot reach a field whose name reads as a number: such names index the instance.
    /// Compatibility: each further call adds two parameters to the setter's list, of which only the
    /// first two are ever filled (decision 0026).
    ///
    /// @code
    /// UserTypeFieldDescriptor x;
    /// x.name = "x";
    /// x.type = PARAM_TYPE_DOUBLE; // of what is written
    /// x.getter = [](void* object) { return static_cast<Point*>(object)->x; };
    /// x.setter = [](const Parameters& arguments)
    /// { pointIn(arguments[0])->x = arguments[1].getDouble(); };
    /// point->setField(x);
    /// @endcode
    virtual void setField(UserTypeFieldDescriptor descriptor) = 0;

    /// Lets scripts read `instance[number]` if there is a `read`, and write it if there is a
    /// `write`. A string that reads as a number counts as a number.
    ///
    /// @code
    /// UserTypeArrayDescriptor elements; // point[1], point[2]
    /// elements.read = [](const Parameters& arguments)
    /// {
    ///     const Point* const object = pointIn(arguments[0]);
    ///     return arguments[1].getInt() == 1 ? object->x : object->y;
    /// };
    /// point->setArrayAccess(elements);
    /// @endcode
    virtual void setArrayAccess(UserTypeArrayDescriptor descriptor) = 0;

    /// Removes all methods, operators, fields and array access. Constructor, destructor and
    /// instances stay.
    virtual void clear() = 0;

protected:
    /// For the class that the interpreter derives, which knows the namespaces of the type.
    void setFullName(const tbMemory::StringView& fullName) { m_fullName = fullName; }

private:
    tbMemory::String m_name;
    tbMemory::String m_fullName;
};

} // namespace tbScripts

#pragma once

#include "support/EnvironmentFixture.h"

#include <tbScripts/UserType.h>

#include <deque>
#include <string>
#include <vector>

namespace tbScripts::test
{

using Getter = decltype(UserTypeFieldDescriptor::getter);
using Setter = decltype(UserTypeFieldDescriptor::setter);

/// The host's side of the user type `Vec`.
struct Vec
{
    double x = 0.0;
    double y = 0.0;
};

/// Numbers of objects beside those that `new` made, which are counted from 0.
constexpr int HOST_OBJECT = -1;
constexpr int NO_OBJECT = -2;

///@{
/// Declares something of `type` from a callable.
void setGetter(UserType& type, const std::string& name, Getter getter);
void setSetter(
    UserType& type,
    const std::string& name,
    FUNCTION_PARAMETER_TYPE valueType,
    Setter setter,
    const char* userTypeName = "");
void setReading(UserType& type, decltype(UserTypeArrayDescriptor::read) read);
void setWriting(
    UserType& type,
    FUNCTION_PARAMETER_TYPE valueType,
    decltype(UserTypeArrayDescriptor::write) write,
    const char* userTypeName = "");

///@}

/// Returns the object that a getter or a destructor is given.
inline Vec& vecAt(void* object)
{
    return *static_cast<Vec*>(object);
}

/// Returns the object that a parameter carries. Requires: it carries one.
inline Vec& vecOf(const FunctionParameter& parameter)
{
    return vecAt(parameter.getUserTypeObject());
}

/// A Lua environment with the user type `Vec`, which scripts can make and destroy; nothing else of
/// it is declared. What constructor and destructor do is recorded, and the objects themselves live
/// as long as the test, so that one that is destroyed twice shows as two records.
class UserTypeFixture : public EnvironmentFixture
{
public:
    /// Returns the type `Vec`.
    UserType& vec();

    /// Gives `type` the recording constructor and destructor.
    void setMaker(UserType& type);

    /// Declares one more user type with constructor and destructor.
    UserType& declareType(const std::string& name);

    /// Declares the field `name` of `Vec`, for reading and writing.
    void declareField(const std::string& name, double Vec::*member);

    /// Declares a method of `Vec` with further parameters of the given kinds.
    Function* declareMethod(
        const std::string& name,
        const std::vector<FUNCTION_PARAMETER_TYPE>& types,
        Function::Callable callable);

    /// Has `Vec` indexed: 1 is `x`, every other number is `y`.
    void declareArrayAccess();

    /// Sets global `name` to `object`, an instance of `Vec` that the host keeps.
    void setHostObject(const std::string& name, Vec& object);

    /// Returns the object of that number, null for `NO_OBJECT`.
    Vec* objectOf(int number);

    /// Expects global `name` to be an instance of `typeName` with the object of that number.
    void isObject(
        const std::string& name,
        int number,
        const std::string& typeName = "Vec",
        int line = __builtin_LINE());

    /// Expects the objects of these numbers to be destroyed so far, in that order.
    void isDestroyed(const std::vector<int>& numbers, int line = __builtin_LINE());

    std::deque<Vec> m_made;        // by `new`
    std::vector<Vec*> m_destroyed; // by destructors, in that order
    Vec m_hostObject;

protected:
    UserTypeFixture();
};

} // namespace tbScripts::test

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
protected:
    UserTypeFixture();

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

    /// Makes `object` the global `name`, an instance of `Vec` that the host keeps.
    void setHostObject(const std::string& name, Vec& object);

    /// Returns the value of `expression` as `tostring` shows it.
    std::string evaluate(const std::string& expression);

    /// Runs `code`, on line 1, which has to raise an error, and returns the message. Nothing is
    /// logged by that.
    std::string errorOf(const std::string& code);

    /// Collects garbage as a host does.
    void collect();

    std::deque<Vec> m_made;        // by `new`
    std::vector<Vec*> m_destroyed; // by destructors, in that order
    Vec m_hostObject;
};

} // namespace tbScripts::test

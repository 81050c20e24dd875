#pragma once

#include "support/Steps.h"
#include "support/UserTypeFixture.h"

#include <string>
#include <vector>

namespace tbScripts::test
{

/// Steps on the type `Vec` and its instances.
using TypeStep = std::function<void(UserTypeFixture&)>;

/// Declares a field for reading and writing, which is a number of the object.
TypeStep field(const std::string& name, double Vec::*member = &Vec::x);

/// Declares a field that reads as `value`.
TypeStep getter(const std::string& name, const FunctionParameter& value);

/// Declares a field of numbers that can only be written. What is written is forgotten.
TypeStep setter(const std::string& name);

/// Declares a method that returns `result`.
TypeStep method(const std::string& name, const FunctionParameter& result);

TypeStep arrayAccess();
TypeStep type(const std::string& name);

/// Declares `Vec` again.
TypeStep declareAgain();

/// Clears `Vec`.
TypeStep clear();

/// Makes the host's object the global `name`.
TypeStep hostObject(const std::string& name);

TypeStep isObject(const std::string& name, int number, const std::string& typeName = "Vec");
TypeStep isDestroyed(const std::vector<int>& numbers);
TypeStep hasX(int number, double value);

} // namespace tbScripts::test

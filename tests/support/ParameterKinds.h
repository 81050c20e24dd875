#pragma once

#include <tbScripts/FunctionParameter.h>

#include <functional>
#include <ostream>
#include <string>
#include <vector>

namespace tbScripts::test
{

/// A row of the tables that run over every kind of parameter.
struct ParameterKind
{
    std::string row;
    unsigned number;
    std::function<FunctionParameter()> makeValue; // references are fakes, the object is `door`
    std::string description;                      // what `describe` says of the value
};

void PrintTo(const ParameterKind& kind, std::ostream* stream); // the framework's name for this

/// Returns every kind, and three numbers that are no kind.
const std::vector<ParameterKind>& allParameterKinds();

/// Makes an empty value of the kind with that number.
FunctionParameter parameterOfNumber(unsigned number);

/// Returns the number of the kind, and all that can be read from `parameter` but neutral values:
/// "2 int:7".
std::string describe(const FunctionParameter& parameter);

/// The object that values of user types carry.
extern int door;

} // namespace tbScripts::test

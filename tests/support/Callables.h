#pragma once

#include <tbMemory/BufferView.h>
#include <tbScripts/Function.h>
#include <tbScripts/FunctionParameter.h>

#include <gtest/gtest.h>

#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace tbScripts::test
{

using Parameters = tbMemory::BufferView<FunctionParameter>;

/// Returns a callable that returns `result`.
inline Function::Callable returning(FunctionParameter result)
{
    return [result = std::move(result)](const Parameters&) { return result; };
}

/// Returns a callable that does `action`, which may ask for the parameters, and returns nothing.
template <typename Action>
Function::Callable doing(Action action)
{
    return [action = std::move(action)](const Parameters& parameters) mutable
    {
        if constexpr (std::is_invocable_v<Action, const Parameters&>)
            action(parameters);
        else
            action();
        return FunctionParameter::VOID;
    };
}

/// Returns what can be read from `parameter`: "true", "7", "0.5", "spear", "an object of Vec", "no
/// object of Vec", "function", "table", or "nothing".
std::string valueOf(const FunctionParameter& parameter);

/// Returns all values, separated by ", ".
std::string valuesOf(const Parameters& parameters);

/// Returns a callable that adds the values of each call to `calls` and returns nothing.
Function::Callable recording(std::vector<std::string>& calls);

/// Returns a callable that fails the test if it is called.
inline Function::Callable uncallable()
{
    return doing([] { ADD_FAILURE() << "the callable was called"; });
}

} // namespace tbScripts::test

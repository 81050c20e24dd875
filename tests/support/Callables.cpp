#include "support/Callables.h"

#include <array>
#include <cmath>
#include <cstdio>
#include <string_view>

namespace tbScripts::test
{

namespace
{

std::string numberText(double number)
{
    if (std::isnan(number))
        return "nan"; // without the sign that some libraries show
    std::array<char, 40> text{};
    std::snprintf(text.data(), text.size(), "%.9g", number);
    return text.data();
}

} // namespace

std::string valueOf(const FunctionParameter& parameter)
{
    switch (parameter.getType())
    {
    case PARAM_TYPE_BOOL:
        return parameter.getBool() ? "true" : "false";
    case PARAM_TYPE_INT:
        return std::to_string(parameter.getInt());
    case PARAM_TYPE_FLOAT:
        return numberText(static_cast<double>(parameter.getFloat()));
    case PARAM_TYPE_DOUBLE:
        return numberText(parameter.getDouble());
    case PARAM_TYPE_STRING:
        return std::string(std::string_view(parameter.getString()));
    case PARAM_TYPE_USER_TYPE_OWNED:
    case PARAM_TYPE_USER_TYPE:
        return (parameter.getUserTypeObject() ? "an object of " : "no object of ") +
               std::string(std::string_view(parameter.getUserTypeName()));
    case PARAM_TYPE_SCRIPT_FUNCTION:
        return "function";
    case PARAM_TYPE_SCRIPT_OBJECT:
        return "table";
    default:
        return "nothing";
    }
}

std::string valuesOf(const Parameters& parameters)
{
    std::string values;
    for (const FunctionParameter& parameter : parameters)
        values += (values.empty() ? "" : ", ") + valueOf(parameter);
    return values;
}

Function::Callable recording(std::vector<std::string>& calls)
{
    return doing([&calls](const Parameters& parameters) { calls.push_back(valuesOf(parameters)); });
}

} // namespace tbScripts::test

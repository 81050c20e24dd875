#include "demo/Binding.h"

#include <string_view>
#include <utility>

namespace demo
{

void define(
    tbScripts::Function* function,
    std::initializer_list<Expected> parameters,
    tbScripts::Function::Callable callable)
{
    if (!function)
        return;
    for (const Expected& parameter : parameters)
        function->addParameter(parameter.kind, parameter.typeName);
    function->setFunction(std::move(callable));
}

std::string textOf(const tbScripts::FunctionParameter& parameter)
{
    return std::string(std::string_view(parameter.getString()));
}

} // namespace demo

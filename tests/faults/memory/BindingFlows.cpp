// Functions, user types and namespaces are declared while memory is refused.

#include "faults/memory/MemoryFlow.h"

#include <tbScripts/Namespace.h>

namespace tbScripts::test
{

namespace
{

bool bindFunction(FlowWorld& world)
{
    Function* const function = world.environment->setFunc("a_function_with_a_long_name");
    if (!function)
        return false;
    function->addParameter(PARAM_TYPE_INT);
    function->addParameter(PARAM_TYPE_USER_TYPE, "a type whose name needs memory of its own");
    function->setFunction([text = std::string("something captured that needs memory")](
                              const Parameters&) { return FunctionParameter(text.c_str()); });
    return !runIn(*world.environment, "a_function_with_a_long_name(1, print)");
}

bool bindFunctionAgain(FlowWorld& world)
{
    Function* const function = world.environment->setFunc("report_to_the_host");
    if (!function)
        return false;
    function->setFunction([](const Parameters&) { return FunctionParameter(1); });
    return runIn(*world.environment, "assert(report_to_the_host() == 1)");
}

bool copyFunction(FlowWorld& world)
{
    Function copy(world.report());
    Function other("a function that is bound to nothing yet");
    other = copy;
    other.addParameter(PARAM_TYPE_STRING);
    other.reset();
    return other.getName() == "report_to_the_host";
}

void declareField(UserType& type)
{
    UserTypeFieldDescriptor field;
    field.name = "a_field_with_a_long_name";
    field.getter = [](void*) { return FunctionParameter("a text that needs memory of its own"); };
    field.setter = [](const Parameters&) {};
    field.type = PARAM_TYPE_STRING;
    type.setField(field);
}

void declareArrayAccess(UserType& type)
{
    UserTypeArrayDescriptor access;
    access.read = [](const Parameters&) { return FunctionParameter(1); };
    access.write = [](const Parameters&) {};
    access.type = PARAM_TYPE_INT;
    type.setArrayAccess(access);
}

bool declareMethods(UserType& type)
{
    Function* const method = type.setMethod("a_method_with_a_long_name", true);
    Function* const shared = type.setStaticMethod("a_static_method_with_a_long_name");
    Function* const sum = type.setOperator(BUILT_IN_FUNCTION::ADD);
    if (!method || !shared || !sum)
        return false;
    method->addParameter(PARAM_TYPE_INT);
    method->setFunction([](const Parameters& parameters) { return parameters[0]; });
    sum->setFunction([](const Parameters& parameters)
                     { return parameters[1].getUserTypeObject() ? 1 : 0; });
    return true;
}

bool bindUserType(FlowWorld& world)
{
    UserType* const type =
        world.environment->setUserType("a_scope_with_a_long_name::an_inner_one::Made");
    if (!type)
        return false;
    FlowWorld::makeCounted(*type);
    declareField(*type);
    declareArrayAccess(*type);
    return declareMethods(*type) && runIn(*world.environment, R"(
        local made = a_scope_with_a_long_name.an_inner_one.Made.new()
        made.a_field_with_a_long_name = made.a_field_with_a_long_name
        made[1] = made[2] + made:a_method_with_a_long_name(7)[3]
        assert(made + made == 1)
    )");
}

bool bindUserTypeAgain(FlowWorld& world)
{
    UserType* const type = world.environment->setUserType("Thing");
    if (!type)
        return false;
    type->clear();
    FlowWorld::makeCounted(*type);
    return runIn(*world.environment, "local thing = Thing.new()");
}

bool bindNamespace(FlowWorld& world)
{
    Namespace* const scope =
        world.environment->setNamespace("a_scope_with_a_long_name::an_inner_one_with_a_long_name");
    if (!scope)
        return false;
    scope->setVar("a_variable_with_a_long_name", "a text that needs memory of its own");
    const bool isDone = scope->setFunction("a_function_with_a_long_name") &&
                        scope->setUserType("a_type_with_a_long_name") &&
                        scope->setNamespace("a_namespace_with_a_long_name");
    scope->clear();
    scope->release();
    return isDone;
}

bool releaseNamespaceFromInside(FlowWorld& world)
{
    Namespace* const scope = world.environment->getNamespace("a_namespace_with_a_long_name");
    Function* const end = scope ? scope->setFunction("end_of_the_whole_namespace") : nullptr;
    if (!end)
        return false;
    scope->setUserType("a_type_with_a_long_name");
    end->setFunction(
        [scope](const Parameters&)
        {
            scope->release();
            return FunctionParameter("a text that needs memory of its own");
        });
    return runIn(*world.environment, "a_namespace_with_a_long_name.end_of_the_whole_namespace()");
}

} // namespace

INSTANTIATE_TEST_SUITE_P(
    Bindings,
    MemoryFlowTest,
    ::testing::Combine(
        ::testing::Values(
            MemoryFlow{"Function", &bindFunction},
            MemoryFlow{"FunctionDeclaredAgain", &bindFunctionAgain},
            MemoryFlow{"FunctionCopy", &copyFunction},
            MemoryFlow{"UserType", &bindUserType},
            MemoryFlow{"UserTypeDeclaredAgain", &bindUserTypeAgain},
            MemoryFlow{"Namespace", &bindNamespace},
            MemoryFlow{"NamespaceReleasedFromInside", &releaseNamespaceFromInside}),
        ::testing::Values(RefusedMemory::SPAN::ONE_REQUEST, RefusedMemory::SPAN::ALL_FURTHER)),
    &nameOfFlow);

} // namespace tbScripts::test

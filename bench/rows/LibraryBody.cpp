#include "rows/LibraryBody.h"

#include "support/LibraryHost.h"

#include <tbScripts/UserType.h>

namespace bench
{

namespace
{

using tbScripts::BUILT_IN_FUNCTION;
using tbScripts::FunctionParameter;
using tbScripts::UserType;

using tbScripts::PARAM_TYPE_DOUBLE;

using Arguments = tbMemory::BufferView<FunctionParameter>;

constexpr const char* TYPE_NAME = "Body";

void declareMethods(UserType& type)
{
    define(
        type.setMethod("get", false),
        {},
        [](const Arguments& arguments) { return bodyIn(arguments[0]).value; });
    define(
        type.setMethod("set", false),
        {PARAM_TYPE_DOUBLE},
        [](const Arguments& arguments)
        {
            bodyIn(arguments[0]).value = arguments[1].getDouble();
            return FunctionParameter::VOID;
        });
}

void declareOperators(UserType& type)
{
    define(
        type.setOperator(BUILT_IN_FUNCTION::ADD),
        {},
        [](const Arguments& operands)
        {
            auto* const sum = new Body(sumOf(bodyIn(operands[0]), bodyIn(operands[1])));
            return FunctionParameter(sum, TYPE_NAME, true);
        });
    define(
        type.setOperator(BUILT_IN_FUNCTION::LT),
        {},
        [](const Arguments& operands) { return isLess(bodyIn(operands[0]), bodyIn(operands[1])); });
}

void declareField(UserType& type, const char* name, double Body::*member)
{
    tbScripts::UserTypeFieldDescriptor field;
    field.name = name;
    field.type = PARAM_TYPE_DOUBLE;
    field.getter = [member](void* object) { return static_cast<Body*>(object)->*member; };
    field.setter = [member](const Arguments& arguments)
    { bodyIn(arguments[0]).*member = arguments[1].getDouble(); };
    type.setField(field);
}

void declareElements(UserType& type)
{
    tbScripts::UserTypeArrayDescriptor elements;
    elements.type = PARAM_TYPE_DOUBLE;
    elements.read = [](const Arguments& arguments)
    { return elementOf(bodyIn(arguments[0]), arguments[1].getInt()); };
    elements.write = [](const Arguments& arguments)
    { elementOf(bodyIn(arguments[0]), arguments[1].getInt()) = arguments[2].getDouble(); };
    type.setArrayAccess(elements);
}

} // namespace

void declareLibraryBody(tbScripts::Environment& environment)
{
    UserType& type = *environment.setUserType(TYPE_NAME);
    type.setConstructor([](const Arguments&) { return new Body(); });
    type.setDestructor([](void* object) { delete static_cast<Body*>(object); });
    declareMethods(type);
    declareField(type, "var", &Body::value);
    declareField(type, "mass", &Body::mass);
    declareElements(type);
    declareOperators(type);
}

Body& bodyIn(const FunctionParameter& argument)
{
    return *static_cast<Body*>(argument.getUserTypeObject());
}

} // namespace bench

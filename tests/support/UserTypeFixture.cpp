#include "support/UserTypeFixture.h"

#include <utility>

namespace tbScripts::test
{

UserTypeFixture::UserTypeFixture()
{
    declareType("Vec");
}

UserType& UserTypeFixture::vec()
{
    return *environment().getUserType("Vec");
}

void UserTypeFixture::setMaker(UserType& type)
{
    type.setConstructor([this](const Parameters&) { return &m_made.emplace_back(); });
    type.setDestructor([this](void* object) { m_destroyed.push_back(&vecAt(object)); });
}

UserType& UserTypeFixture::declareType(const std::string& name)
{
    UserType& type = *environment().setUserType(name);
    setMaker(type);
    return type;
}

void UserTypeFixture::declareField(const std::string& name, double Vec::*member)
{
    UserTypeFieldDescriptor field;
    field.getter = [member](void* object) { return FunctionParameter(vecAt(object).*member); };
    field.setter = [member](const Parameters& parameters)
    { vecOf(parameters[0]).*member = parameters[1].getDouble(); };
    field.name = name;
    field.type = PARAM_TYPE_DOUBLE;
    vec().setField(field);
}

Function* UserTypeFixture::declareMethod(
    const std::string& name,
    const std::vector<FUNCTION_PARAMETER_TYPE>& types,
    Function::Callable callable)
{
    Function* const method = vec().setMethod(name, false);
    for (const FUNCTION_PARAMETER_TYPE type : types)
        method->addParameter(type);
    method->setFunction(std::move(callable));
    return method;
}

void UserTypeFixture::declareArrayAccess()
{
    UserTypeArrayDescriptor access;
    access.read = [](const Parameters& parameters)
    {
        const Vec& object = vecOf(parameters[0]);
        return FunctionParameter(parameters[1].getInt() == 1 ? object.x : object.y);
    };
    access.write = [](const Parameters& parameters)
    {
        Vec& object = vecOf(parameters[0]);
        (parameters[1].getInt() == 1 ? object.x : object.y) = parameters[2].getDouble();
    };
    access.type = PARAM_TYPE_DOUBLE;
    vec().setArrayAccess(access);
}

void UserTypeFixture::setHostObject(const std::string& name, Vec& object)
{
    environment().setObject(name, "Vec", &object);
}

std::string UserTypeFixture::evaluate(const std::string& expression)
{
    run("result = tostring((" + expression + "))");
    return std::string(std::string_view(environment().getVar("result", "(no result)")));
}

std::string UserTypeFixture::errorOf(const std::string& code)
{
    run("isDone, message = pcall(function() " + code + "\nend)  message = tostring(message)");
    EXPECT_FALSE(environment().getVar("isDone", true));
    return std::string(std::string_view(environment().getVar("message", "(no message)")));
}

void UserTypeFixture::collect()
{
    environment().requestGarbageCollection();
}

} // namespace tbScripts::test

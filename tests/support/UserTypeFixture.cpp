#include "support/UserTypeFixture.h"

#include <utility>

namespace tbScripts::test
{

void setGetter(UserType& type, const std::string& name, Getter getter)
{
    UserTypeFieldDescriptor field;
    field.getter = std::move(getter);
    field.name = name;
    type.setField(field);
}

void setSetter(
    UserType& type,
    const std::string& name,
    FUNCTION_PARAMETER_TYPE valueType,
    Setter setter,
    const char* userTypeName)
{
    UserTypeFieldDescriptor field;
    field.setter = std::move(setter);
    field.name = name;
    field.type = valueType;
    field.userTypeName = userTypeName;
    type.setField(field);
}

void setReading(UserType& type, decltype(UserTypeArrayDescriptor::read) read)
{
    UserTypeArrayDescriptor access;
    access.read = std::move(read);
    type.setArrayAccess(access);
}

void setWriting(
    UserType& type,
    FUNCTION_PARAMETER_TYPE valueType,
    decltype(UserTypeArrayDescriptor::write) write,
    const char* userTypeName)
{
    UserTypeArrayDescriptor access;
    access.write = std::move(write);
    access.type = valueType;
    access.userTypeName = userTypeName;
    type.setArrayAccess(access);
}

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

Vec* UserTypeFixture::objectOf(int number)
{
    if (number == NO_OBJECT)
        return nullptr;
    return number == HOST_OBJECT ? &m_hostObject : &m_made.at(static_cast<std::size_t>(number));
}

void UserTypeFixture::isObject(
    const std::string& name, int number, const std::string& typeName, int line)
{
    EXPECT_EQ(environment().getObject(name, typeName), objectOf(number))
        << name << ", in line " << line;
}

void UserTypeFixture::isDestroyed(const std::vector<int>& numbers, int line)
{
    std::vector<Vec*> expected;
    for (const int number : numbers)
        expected.push_back(objectOf(number));
    EXPECT_EQ(m_destroyed, expected) << "in line " << line;
}

} // namespace tbScripts::test

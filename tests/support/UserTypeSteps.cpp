#include "support/UserTypeSteps.h"

namespace tbScripts::test
{

TypeStep field(const std::string& name, double Vec::*member)
{
    return [=](UserTypeFixture& test) { test.declareField(name, member); };
}

TypeStep getter(const std::string& name, const FunctionParameter& value)
{
    return [=](UserTypeFixture& test)
    { setGetter(test.vec(), name, [value](void*) { return value; }); };
}

TypeStep setter(const std::string& name)
{
    return [=](UserTypeFixture& test)
    { setSetter(test.vec(), name, PARAM_TYPE_DOUBLE, [](const Parameters&) {}); };
}

TypeStep method(const std::string& name, const FunctionParameter& result)
{
    return [=](UserTypeFixture& test) { test.declareMethod(name, {}, returning(result)); };
}

TypeStep arrayAccess()
{
    return &UserTypeFixture::declareArrayAccess;
}

TypeStep type(const std::string& name)
{
    return [=](UserTypeFixture& test) { test.declareType(name); };
}

TypeStep declareAgain()
{
    return [](UserTypeFixture& test)
    {
        test.environment().setUserType("Vec");
        test.forgetLog(); // that it was declared already
    };
}

TypeStep clear()
{
    return [](UserTypeFixture& test) { test.vec().clear(); };
}

TypeStep hostObject(const std::string& name)
{
    return [=](UserTypeFixture& test) { test.setHostObject(name, test.m_hostObject); };
}

TypeStep isObject(const std::string& name, int number, const std::string& typeName)
{
    return [=](UserTypeFixture& test) { test.isObject(name, number, typeName); };
}

TypeStep isDestroyed(const std::vector<int>& numbers)
{
    return [=](UserTypeFixture& test) { test.isDestroyed(numbers); };
}

TypeStep hasX(int number, double value)
{
    return [=](UserTypeFixture& test) { EXPECT_EQ(test.objectOf(number)->x, value); };
}

} // namespace tbScripts::test

// User types in the registry of an environment; what they have in common with the other kinds is in
// EnvironmentDeclarationsTest.

#include "support/CountedObject.h"
#include "support/NamespaceSteps.h"

namespace tbScripts::test
{

class EnvironmentUserTypesTest : public NamespaceFixture
{
public:
    // Declares "T" with a method, a static method, a field and array access.
    void declareFilled()
    {
        UserType* const type = environment().setUserType("T");
        type->setMethod("method", false)->setFunction(returning(42));
        type->setStaticMethod("make")->setFunction(returning(42));
        UserTypeFieldDescriptor field;
        field.name = "field";
        field.getter = [](void*) { return FunctionParameter(42); };
        type->setField(field);
        UserTypeArrayDescriptor array;
        array.read = returning(42);
        type->setArrayAccess(array);
    }
};

TEST_F(EnvironmentUserTypesTest, TheThreeRegistriesAreApart)
{
    environment().setFunc("x");
    environment().setUserType("y");
    environment().setNamespace("z");

    EXPECT_FALSE(environment().isUserTypeSet("x") || environment().isNamespaceSet("x"));
    EXPECT_FALSE(environment().isFuncSet("y") || environment().isNamespaceSet("y"));
    EXPECT_FALSE(environment().isFuncSet("z") || environment().isUserTypeSet("z"));
}

TEST_F(EnvironmentUserTypesTest, InertTypeIsDestroyedWithTheEnvironment)
{
    declareFilled();
    environment().getUserType("T")->setDestructor([counted = CountedObject()](void*) {});
    restart();
    ASSERT_EQ(CountedObject::getLiving(), 1);
    destroyEnvironment();
    EXPECT_EQ(CountedObject::getLiving(), 0);
}

namespace
{

const char* const HAS_ALL =
    "t = T.new() assert(t.field == 42 and t:method() == 42 and T.make() == 42 and t[1] == 42)";
const char* const HAS_NOTHING =
    "t = t or T.new() "
    "assert(t.field == nil and t.method == nil and T.make == nil and t[1] == nil)";

auto filled()
{
    return [](EnvironmentUserTypesTest& test) { test.declareFilled(); };
}

auto hasNoMethod()
{
    return [](NamespaceFixture& test)
    { EXPECT_EQ(test.environment().getUserType("T")->getMethod("method"), nullptr); };
}

const Facts<EnvironmentUserTypesTest> FACTS(
    "EnvironmentUserTypesTest",
    {
        {"DeclaredTypeIsTheMetatableOfItsInstances",
         {countedType("T"), run("assert(getmetatable(T.new()) == T)")}},
        {"RepeatedDeclarationDropsMethodsAndFields",
         {filled(),
          countedType("T"),
          filled(),
          run(HAS_ALL),
          userType("T"),
          run(HAS_NOTHING),
          hasNoMethod(),
          logsCount(3)}},
        {"RepeatedDeclarationKeepsConstructorAndDestructor",
         {countedType("T"),
          userType("T"),
          run("t = T.new()"),
          living(1),
          run("t = nil collectgarbage()"),
          living(0),
          logsCount(1)}},
        {"InertTypeDeclaredAgainHasConstructorAndDestructorOnly",
         {countedType("T"),
          filled(),
          restart(),
          userType("T"),
          hasNoMethod(),
          run(HAS_NOTHING),
          living(1),
          run("t = nil collectgarbage()"),
          living(0),
          logsCount(2)}},
        {"InertTypeDeclaredAgainCanBeFilled",
         {countedType("T"), filled(), restart(), filled(), run(HAS_ALL), logsCount(2)}},
    });

} // namespace

} // namespace tbScripts::test

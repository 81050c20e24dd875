// What scripts do with instances in every frame has to do without the heap of the host. First uses
// may allocate.

#include "support/AllocationCounter.h"
#include "support/RowName.h"
#include "support/UserTypeFixture.h"

#include <ostream>

namespace tbScripts::test
{

namespace
{

struct Use
{
    const char* row;
    const char* script;
    std::size_t allocations; // of a hundred uses
};

std::ostream& operator<<(std::ostream& stream, const Use& use)
{
    return stream << use.row;
}

} // namespace

class UserTypeAllocationTest : public UserTypeFixture
{
protected:
    UserTypeAllocationTest()
    {
        declareField("x", &Vec::x);
        declareOtherFields();
        declareArrayAccess();
        declareMethods();
        declareOperators();
        vec().setConstructor([](const Parameters&) { return new Vec; });
        vec().setDestructor([](void* object) { delete static_cast<Vec*>(object); });
        setHostObject("v", m_hostObject);
        setHostObject("w", m_other);
    }

    void declareOtherFields()
    {
        UserTypeFieldDescriptor field;
        field.getter = [](void* object) { return FunctionParameter(vecAt(object).x > 0.0); };
        field.setter = [](const Parameters& parameters)
        { vecOf(parameters[0]).x = parameters[1].getBool() ? 1.0 : 0.0; };
        field.name = "isLong";
        field.type = PARAM_TYPE_BOOL;
        vec().setField(field);
        declareObjectField("kept", PARAM_TYPE_USER_TYPE);
        declareObjectField("owned", PARAM_TYPE_USER_TYPE_OWNED);
    }

    void declareObjectField(const char* name, FUNCTION_PARAMETER_TYPE type)
    {
        UserTypeFieldDescriptor field;
        field.getter = [](void* object) { return FunctionParameter(object, "Vec", false); };
        field.setter = [](const Parameters& parameters)
        { vecOf(parameters[0]).y = vecOf(parameters[1]).x; };
        field.name = name;
        field.type = type;
        field.userTypeName = "Vec";
        vec().setField(field);
    }

    void declareMethods()
    {
        declareMethod(
            "lengthen",
            {PARAM_TYPE_DOUBLE},
            [](const Parameters& parameters)
            {
                vecOf(parameters[0]).x += parameters[1].getDouble();
                return vecOf(parameters[0]).x;
            });
        vec()
            .setMethod("itself", true)
            ->setFunction([](const Parameters& parameters) { return parameters[0]; });
        vec().setStaticMethod("origin")->setFunction([](const Parameters&) { return 0; });
        Function* const distance = vec().setMethod("distance", false);
        distance->addParameter(PARAM_TYPE_USER_TYPE_OWNED, "Vec");
        distance->setFunction([](const Parameters& parameters)
                              { return vecOf(parameters[0]).x - vecOf(parameters[1]).x; });
    }

    void declareOperators()
    {
        vec()
            .setOperator(BUILT_IN_FUNCTION::ADD)
            ->setFunction(
                [](const Parameters& parameters)
                {
                    Vec* const sum = new Vec;
                    sum->x = vecOf(parameters[0]).x + vecOf(parameters[1]).x;
                    return FunctionParameter(sum, "Vec", true);
                });
        vec()
            .setOperator(BUILT_IN_FUNCTION::MUL)
            ->setFunction([](const Parameters& parameters)
                          { return vecOf(parameters[0]).x * vecOf(parameters[1]).x; });
        vec()
            .setOperator(BUILT_IN_FUNCTION::LT)
            ->setFunction([](const Parameters& parameters)
                          { return vecOf(parameters[0]).x < vecOf(parameters[1]).x; });
        vec()
            .setOperator(BUILT_IN_FUNCTION::UNM)
            ->setFunction([](const Parameters& parameters) { return -vecOf(parameters[0]).x; });
    }

    /// Runs `script` a hundred times, once before, and returns the allocations.
    std::size_t countWhileRunning(const std::string& script)
    {
        AllocationCounter counter;
        std::size_t count = 9999;
        declareAction("start", [&counter] { counter = AllocationCounter(); });
        declareAction("stop", [&] { count = counter.count(); });
        run("owned = Vec.new() " + script + " collectgarbage('stop') start() for i = 1, 100 do " +
            script + " end stop() collectgarbage('restart')");
        return count;
    }

    Vec m_other;
};

class UserTypeUseAllocationTest : public UserTypeAllocationTest,
                                  public ::testing::WithParamInterface<Use>
{
};

TEST_P(UserTypeUseAllocationTest, HappensOnlyForObjectsOfTheHost)
{
    const std::size_t count = countWhileRunning(GetParam().script);

    EXPECT_EQ(count, GetParam().allocations);
}

INSTANTIATE_TEST_SUITE_P(
    Uses,
    UserTypeUseAllocationTest,
    ::testing::Values(
        Use{"ReadNumber", "local x = v.x", 0},
        Use{"WriteNumber", "v.x = 3", 0},
        Use{"ReadBool", "local x = v.isLong", 0},
        Use{"WriteBool", "v.isLong = true", 0},
        Use{"ReadObject", "local x = v.kept", 0},
        Use{"WriteKeptObject", "v.kept = w", 0},
        Use{"WriteOwnedObject", "v.owned = owned", 0},
        Use{"ReadUnknown", "local x = v.unknown", 0},
        Use{"WriteUnknown", "v.unknown = 1", 0},
        Use{"ReadRawEntry", "local x = v.__name", 0},
        Use{"ReadElement", "local x = v[1]", 0},
        Use{"ReadElementByText", "local x = v['1']", 0},
        Use{"WriteElement", "v[1] = 3", 0},
        Use{"CallMethod", "v:lengthen(1)", 0},
        Use{"CallStaticMethod", "Vec.origin()", 0},
        Use{"CallMethodWithObject", "v:distance(owned)", 0},
        Use{"ChainOwned", "owned:itself():itself()", 0},
        Use{"NumberOperator", "local x = v * w", 0},
        Use{"BoolOperator", "local x = v < w", 0},
        Use{"UnaryOperator", "local x = -v", 0},
        Use{"SwitchOwnership", "owned:disableGc() owned:enableGc()", 0},
        Use{"NewObject", "local x = Vec.new()", 100},
        Use{"ObjectOperator", "local x = v + w", 100}),
    RowName());

TEST_F(UserTypeAllocationTest, IsZeroWithNamesThatNeedMemoryOfTheirOwn)
{
    UserType& type = *environment().setUserType("world::inner::CreatureOfTheDeepSea");
    UserTypeFieldDescriptor field;
    field.getter = [](void* object) { return FunctionParameter(vecAt(object).x); };
    field.setter = [](const Parameters& parameters)
    { vecOf(parameters[0]).x = parameters[1].getDouble(); };
    field.name = "depthInFathomsOfTheOldNavy";
    field.type = PARAM_TYPE_DOUBLE;
    type.setField(field);
    Function* const method = type.setMethod("returnToTheSurfaceAtOnce", true);
    method->addParameter(PARAM_TYPE_USER_TYPE_OWNED, "world::inner::CreatureOfTheDeepSea");
    method->setFunction([](const Parameters&) { return 1; });
    environment().setObject("c", "world::inner::CreatureOfTheDeepSea", &m_hostObject);

    const std::size_t count =
        countWhileRunning("c.depthInFathomsOfTheOldNavy = c.depthInFathomsOfTheOldNavy + 1 "
                          "c:returnToTheSurfaceAtOnce(c)");

    EXPECT_EQ(count, 0U);
}

TEST_F(UserTypeAllocationTest, IsZeroWhileInstancesAreCollected)
{
    vec().setConstructor([this](const Parameters&) { return &m_hostObject; });
    vec().setDestructor([](void*) {});
    run("for i = 1, 100 do Vec.new() end");
    AllocationCounter counter;
    std::size_t count = 9999;
    declareAction("start", [&counter] { counter = AllocationCounter(); });
    declareAction("stop", [&] { count = counter.count(); });

    run("start() collectgarbage() collectgarbage() stop()");

    EXPECT_EQ(count, 0U);
}

} // namespace tbScripts::test

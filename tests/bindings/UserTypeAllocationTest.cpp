// What scripts do with instances in every frame has to do without the heap of the host. First uses
// may allocate.

#include "support/AllocationCounter.h"
#include "support/RowName.h"
#include "support/UserTypeFixture.h"

namespace tbScripts::test
{

namespace
{

struct Use
{
    const char* row;
    const char* script;
    std::size_t allocations = 0; // of a hundred uses
};

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
        declareAction("start", [this] { m_counter = AllocationCounter(); });
        declareAction("stop", [this] { m_count = m_counter.count(); });
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
        field.getter = [](void* object) { return FunctionParameter(object, "Vec", false); };
        field.setter = [](const Parameters& parameters)
        { vecOf(parameters[0]).y = vecOf(parameters[1]).x; };
        field.userTypeName = "Vec";
        field.name = "kept";
        field.type = PARAM_TYPE_USER_TYPE;
        vec().setField(field);
        field.name = "owned";
        field.type = PARAM_TYPE_USER_TYPE_OWNED;
        vec().setField(field);
    }

    void declareMethods()
    {
        declareMethod(
            "lengthen",
            {PARAM_TYPE_DOUBLE},
            [](const Parameters& parameters)
            { return vecOf(parameters[0]).x += parameters[1].getDouble(); });
        vec()
            .setMethod("itself", true)
            ->setFunction([](const Parameters& parameters) { return parameters[0]; });
        vec().setStaticMethod("origin")->setFunction(returning(0));
        Function* const distance = vec().setMethod("distance", false);
        distance->addParameter(PARAM_TYPE_USER_TYPE_OWNED, "Vec");
        distance->setFunction([](const Parameters& parameters)
                              { return vecOf(parameters[0]).x - vecOf(parameters[1]).x; });
    }

    // Declares an operator by what it does to the `x` of its operands.
    template <typename Operation>
    void declareOperator(BUILT_IN_FUNCTION number, Operation operation)
    {
        vec().setOperator(number)->setFunction(
            [operation](const Parameters& parameters)
            {
                const Vec& last = vecOf(parameters[parameters.size() - 1]);
                return FunctionParameter(operation(vecOf(parameters[0]).x, last.x));
            });
    }

    void declareOperators()
    {
        declareOperator(
            BUILT_IN_FUNCTION::ADD,
            [](double a, double b) {
                return FunctionParameter(new Vec{a + b, 0.0}, "Vec", true);
            });
        declareOperator(BUILT_IN_FUNCTION::MUL, [](double a, double b) { return a * b; });
        declareOperator(BUILT_IN_FUNCTION::LT, [](double a, double b) { return a < b; });
        declareOperator(BUILT_IN_FUNCTION::UNM, [](double a, double) { return -a; });
    }

    /// Runs `script` a hundred times, once before, and returns the allocations.
    std::size_t countWhileRunning(const std::string& script)
    {
        run("owned = Vec.new() " + script + " collectgarbage('stop') start() for i = 1, 100 do " +
            script + " end stop() collectgarbage('restart')");
        return m_count;
    }

    Vec m_other;
    AllocationCounter m_counter;
    std::size_t m_count = 9999;
};

using UserTypeUseAllocationTest = OnRows<UserTypeAllocationTest, Use>;

TEST_P(UserTypeUseAllocationTest, HappensOnlyForObjectsOfTheHost)
{
    EXPECT_EQ(countWhileRunning(GetParam().script), GetParam().allocations);
}

ROWS(
    UserTypeUseAllocationTest,
    {"ReadNumber", "local x = v.x"},
    {"WriteNumber", "v.x = 3"},
    {"ReadBool", "local x = v.isLong"},
    {"WriteBool", "v.isLong = true"},
    {"ReadObject", "local x = v.kept"},
    {"WriteKeptObject", "v.kept = w"},
    {"WriteOwnedObject", "v.owned = owned"},
    {"ReadUnknown", "local x = v.unknown"},
    {"WriteUnknown", "v.unknown = 1"},
    {"ReadRawEntry", "local x = v.__name"},
    {"ReadElement", "local x = v[1]"},
    {"ReadElementByText", "local x = v['1']"},
    {"WriteElement", "v[1] = 3"},
    {"CallMethod", "v:lengthen(1)"},
    {"CallStaticMethod", "Vec.origin()"},
    {"CallMethodWithObject", "v:distance(owned)"},
    {"ChainOwned", "owned:itself():itself()"},
    {"NumberOperator", "local x = v * w"},
    {"BoolOperator", "local x = v < w"},
    {"UnaryOperator", "local x = -v"},
    {"SwitchOwnership", "owned:disableGc() owned:enableGc()"},
    {"NewObject", "local x = Vec.new()", 100},
    {"ObjectOperator", "local x = v + w", 100});

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
    run("start() collectgarbage() collectgarbage() stop()");
    EXPECT_EQ(m_count, 0U);
}

} // namespace tbScripts::test

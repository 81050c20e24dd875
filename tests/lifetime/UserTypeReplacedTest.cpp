// A type was released with its namespace, and another one is declared under its name. Instances of
// the first keep its destructor, and nothing of the second accepts them.

#include "support/UserTypeSteps.h"

#include <tbScripts/Namespace.h>

namespace tbScripts::test
{

using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace
{

constexpr const char* TYPE_IS_GONE = "User type 'world::Vec' does not exist anymore.";
constexpr const char* NO_INSTANCE = "Expected an instance of user type 'world::Vec'.";

const std::vector<FUNCTION_PARAMETER_TYPE> VEC_TYPES{
    PARAM_TYPE_USER_TYPE, PARAM_TYPE_USER_TYPE_OWNED};

} // namespace

class UserTypeReplacedTest : public UserTypeFixture
{
public:
    UserTypeReplacedTest()
    {
        declareType("world::Vec");
        declareTakers("take", "world::Vec");
        declareTakers("takeAny", "");
        environment().setObject("shown", "world::Vec", &m_hostObject);
        run("Old = world.Vec  old = Old.new()");
        environment().getNamespace("world")->release();
        declareSecond(*environment().setUserType("world::Vec"));
        run("new = world.Vec.new()");
    }

    // Declares a type for which an object of the first is none: all that it is given is recorded.
    void declareSecond(UserType& type)
    {
        const auto note = [this](const Parameters& parameters)
        {
            for (const FunctionParameter& parameter : parameters)
            {
                const FUNCTION_PARAMETER_TYPE kind = parameter.getType();
                if (kind == PARAM_TYPE_USER_TYPE || kind == PARAM_TYPE_USER_TYPE_OWNED)
                    m_given.push_back(parameter.getUserTypeObject());
            }
            return FunctionParameter(1);
        };
        type.setConstructor([this](const Parameters&) { return &m_second; });
        type.setDestructor([this](void* object) { m_destroyedBySecond.push_back(object); });
        type.setMethod("length", false)->setFunction(note);
        type.setMethod("lengthOfOwned", true)->setFunction(note);
        type.setOperator(BUILT_IN_FUNCTION::ADD)->setFunction(note);
        type.setOperator(BUILT_IN_FUNCTION::UNM)->setFunction(note);
        setGetter(
            type,
            "x",
            [this](void* object)
            {
                m_given.push_back(object);
                return 1;
            });
        setSetter(type, "friend", PARAM_TYPE_USER_TYPE, note, "world::Vec");
        setReading(type, note);
        setWriting(type, PARAM_TYPE_USER_TYPE, note, "world::Vec");
    }

    // Declares host functions with one parameter of that type, of both kinds.
    void declareTakers(const std::string& name, const char* typeName)
    {
        const auto note = [this](const Parameters& parameters)
        {
            m_given.push_back(parameters[0].getUserTypeObject());
            return FunctionParameter();
        };
        Function* const take = environment().setFunc(name);
        take->addParameter(PARAM_TYPE_USER_TYPE, typeName);
        take->setFunction(note);
        Function* const takeOwned = environment().setFunc(name + "Owned");
        takeOwned->addParameter(PARAM_TYPE_USER_TYPE_OWNED, typeName);
        takeOwned->setFunction(note);
    }

    int m_second = 0; // the object of the second type
    std::vector<void*> m_given;
    std::vector<void*> m_destroyedBySecond;
};

namespace
{

using ReplacedStep = std::function<void(UserTypeReplacedTest&)>;

// Runs `code` for both instances of the first type, the one that scripts own and the one that the
// host shows. It has to raise `message`, and the second type may be given only its own object.
ReplacedStep refuses(const std::string& code, const std::string& message)
{
    return [=](UserTypeReplacedTest& test)
    {
        for (const char* const instance : {"old", "shown"})
        {
            test.raises("local it = " + std::string(instance) + " " + code, message);
            test.forgetLog();
        }
        EXPECT_THAT(test.m_given, ::testing::Each(&test.m_second));
    };
}

std::string mismatch(const std::string& function, const std::string& typeName = "world::Vec")
{
    return "Error l.1 while calling " + function + ". Expected " + typeName + ", got userdata.";
}

ReplacedStep destroyedByFirst(bool isDestroyed)
{
    return [=](UserTypeReplacedTest& test)
    {
        test.isDestroyed(isDestroyed ? std::vector<int>{0} : std::vector<int>());
        EXPECT_THAT(test.m_destroyedBySecond, IsEmpty());
    };
}

const Facts<UserTypeReplacedTest> FACTS(
    "UserTypeReplacedTest",
    {
        {"ParameterRefusesThem", {refuses("take(it)", mismatch("take"))}},
        {"OwnedParameterRefusesThem", {refuses("takeOwned(it)", mismatch("takeOwned"))}},
        {"ParameterOfAnyTypeRefusesThem", {refuses("takeAny(it)", mismatch("takeAny", ""))}},
        {"OwnedParameterOfAnyTypeRefusesThem",
         {refuses("takeAnyOwned(it)", mismatch("takeAnyOwned", ""))}},
        {"MethodRefusesThem", {refuses("world.Vec.length(it)", mismatch("length"))}},
        {"MethodWithOwnedSelfRefusesThem",
         {refuses("world.Vec.lengthOfOwned(it)", mismatch("lengthOfOwned"))}},
        {"OperatorRefusesThemOnTheLeft", {refuses("return it + new", mismatch("__add"))}},
        {"OperatorRefusesThemOnTheRight", {refuses("return new + it", mismatch("__add"))}},
        {"OperatorCalledByHandRefusesThem", {refuses("world.Vec.__unm(it)", mismatch("__unm"))}},
        {"GetterRefusesThem", {refuses("return world.Vec.__index(it, 'x')", NO_INSTANCE)}},
        {"SetterRefusesThem", {refuses("world.Vec.__newindex(it, 'friend', new)", NO_INSTANCE)}},
        {"SetterRefusesThemAsValue",
         {refuses(
             "new.friend = it",
             "Error l.1 while calling friend. Expected world::Vec, got userdata.")}},
        {"ArrayReadRefusesThem", {refuses("return world.Vec.__index(it, 1)", NO_INSTANCE)}},
        {"ArrayReadByNumericStringRefusesThem",
         {refuses("return world.Vec.__index(it, '1')", NO_INSTANCE)}},
        {"ArrayWriteRefusesThem", {refuses("world.Vec.__newindex(it, 1, new)", NO_INSTANCE)}},
        {"ArrayWriteRefusesThemAsValue", {refuses("new[1] = it", mismatch("world::Vec"))}},
        {"FinaliserRefusesThem",
         {refuses("world.Vec.__gc(it)", NO_INSTANCE), destroyedByFirst(false)}},
        {"TheirOwnFieldsAndElementsAreGone",
         {refuses("return it.x", TYPE_IS_GONE),
          refuses("it.x = 1", TYPE_IS_GONE),
          refuses("return it[1]", TYPE_IS_GONE),
          refuses("it[1] = 1", TYPE_IS_GONE),
          refuses("it:length()", TYPE_IS_GONE)}},
        {"TheirOwnFinaliserCallsTheirOwnDestructor",
         {run("Old.__gc(old)  Old.__gc(old)  Old.__gc(shown)"), destroyedByFirst(true)}},
        {"TheFirstTypesFinaliserRefusesInstancesOfTheSecond",
         {raises("Old.__gc(new)", NO_INSTANCE), destroyedByFirst(false)}},
        {"DisablingTheirCollectionByTheSecondTypeKeepsTheirObject",
         {run("world.Vec.disableGc(old)  old = nil"), collect(), destroyedByFirst(false)}},
        {"EnablingTheirCollectionByTheSecondTypeKeepsTheirDestructor",
         {run("world.Vec.disableGc(old)  world.Vec.enableGc(old)  old = nil"),
          collect(),
          destroyedByFirst(true)}},
        {"CollectionCallsTheirOwnDestructor",
         {run("old = nil"), collect(), destroyedByFirst(true)}},
        {"HostReadsNoObject",
         {[](auto& test)
          {
              for (const char* const name : {"old", "shown"})
              {
                  EXPECT_EQ(test.environment().getObject(name, "world::Vec"), nullptr);
                  EXPECT_EQ(test.environment().getObject(name, nullptr), nullptr);
              }
              EXPECT_EQ(test.environment().getObject("new", "world::Vec"), &test.m_second);
          }}},
        {"OutputOfAScriptFunctionRefusesThem",
         {run("function give() return old end"),
          [](auto& test)
          {
              std::vector<FunctionParameter> outputs{
                  FunctionParameter::ofType(PARAM_TYPE_USER_TYPE, "world::Vec")};
              test.call("give", {}, outputs);
              EXPECT_EQ(outputs[0].getUserTypeObject(), nullptr);
              test.forgetLog();
          }}},
        {"BytesOfThemCarryNoObjectAndLeaveItToTheScript",
         {[](auto& test)
          {
              Environment& environment = test.environment();
              test.run("value = {old, shown}");
              environment.setVar(
                  "read",
                  environment.deserializeScriptObject(
                      environment.serializeScriptObject(environment.getVar("value"), true)));
              test.is("getmetatable(read[1]) == world.Vec", "true");
              test.run("first, second = read[1], read[2]");
              EXPECT_EQ(environment.getObject("first", "world::Vec"), nullptr);
              EXPECT_EQ(environment.getObject("second", "world::Vec"), nullptr);
          },
          run("read, first, second, value = nil"),
          collect(),
          destroyedByFirst(false),
          run("old = nil"),
          collect(),
          destroyedByFirst(true)}},
    });

} // namespace

TEST_F(UserTypeReplacedTest, EachTypeDestroysItsOwnAtTheEnd)
{
    destroyEnvironment();

    isDestroyed({0});
    EXPECT_THAT(m_destroyedBySecond, ElementsAre(&m_second));
}

TEST_F(UserTypeReplacedTest, ThirdTypeReplacesTheSecondAsWell)
{
    environment().getNamespace("world")->release();
    declareType("world::Vec");
    run("third = world.Vec.new()");

    raises("take(old)", mismatch("take"));
    raises("take(new)", mismatch("take"));
    forgetLog();
    run("take(third)");

    EXPECT_THAT(m_given, ElementsAre(&m_made[1]));
}

// Nothing else has the name by then.
TEST_F(UserTypeReplacedTest, InstancesOfTheLastTypeAreStillTakenAfterItsRelease)
{
    environment().getNamespace("world")->release();

    run("take(new)  takeAny(new)");

    EXPECT_THAT(m_given, ElementsAre(&m_second, &m_second));
    raises("take(old)", mismatch("take"));
    forgetLog();
}

TEST_F(UserTypeReplacedTest, DeclarationThatFailsReplacesNothing)
{
    environment().getNamespace("world")->release();
    environment().setNamespace("world");
    run("setmetatable(world, {__newindex = function() error('no', 0) end})");

    EXPECT_EQ(environment().setUserType("world::Vec"), nullptr);
    forgetLog();

    run("take(new)");
    EXPECT_THAT(m_given, ElementsAre(&m_second));
}

// The type's own closures are gone by then, and so is what they keep.
TEST_F(UserTypeReplacedTest, InstanceWhoseTableAScriptHasEmptiedStays)
{
    run("last = new");
    environment().getNamespace("world")->release();
    run("local table = getmetatable(last)  for k in pairs(table) do table[k] = nil end"
        " new = nil  collectgarbage()  collectgarbage()");

    EXPECT_EQ(environment().getObject("last", nullptr), &m_second);
    EXPECT_THAT(m_destroyedBySecond, IsEmpty());
}

// Tables of types that are gone give their addresses to others.
TEST_F(UserTypeReplacedTest, ManyTypesThatComeAndGoInOneCallAreToldApart)
{
    declareAction(
        "exchange",
        [this]
        {
            for (int i = 0; i < 300; ++i)
            {
                const std::string name = "world::T" + std::to_string(i);
                if (Namespace* const world = environment().getNamespace("world"))
                    world->release();
                UserType& type = declareType(name);
                type.setMethod("number", false)->setFunction(returning(i));
                run("local T = world.T" + std::to_string(i) +
                    "  assert(T.new():number() == " + std::to_string(i) + ")  collectgarbage()");
            }
        });

    run("exchange()");

    forgetLog();
}

// Two declarations through copies of an environment are one type, until the first is released.
TEST_F(UserTypeReplacedTest, TypeWhoseNameARivalTookAlongIsReplacedToo)
{
    auto copy = std::make_unique<Environment>(environment());
    UserType* const rival = copy->setNamespace("world")->setUserType("Vec");
    ASSERT_NE(rival, nullptr);
    run("take(new)");
    environment().getNamespace("world")->release();
    environment().setUserType("world::Vec");
    forgetLog();

    raises("take(new)", mismatch("take"));
    forgetLog();
}

} // namespace tbScripts::test

// Declarations that change while one of them runs. What a callable captured has to stay alive until
// it returns, and to go soon after.

#include "support/Farewell.h"
#include "support/RowName.h"
#include "support/UserTypeFixture.h"

#include <tbScripts/Namespace.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <tuple>
#include <vector>

namespace tbScripts::test
{

namespace
{

struct RunningKind
{
    const char* row;
    void (*declare)(UserType& type, const std::function<void()>& body);
    const char* use; // a script that makes it run once
};

struct Change
{
    const char* row;
    void (*perform)(Environment& environment);
};

UserType* typeOf(Environment& environment)
{
    return environment.getUserType("world::Vec");
}

void declareGetter(UserType& type, const std::function<void()>& body)
{
    UserTypeFieldDescriptor field;
    field.getter = [body](void*)
    {
        body();
        return FunctionParameter(7);
    };
    field.name = "a field with a name that has memory of its own";
    type.setField(field);
}

void declareSetter(UserType& type, const std::function<void()>& body)
{
    UserTypeFieldDescriptor field;
    field.setter = [body](const Parameters& parameters)
    {
        body();
        EXPECT_EQ(parameters[1].getString(), "a text that is too long to be kept inside of itself");
        EXPECT_EQ(parameters[0].getUserTypeName(), "world::Vec");
    };
    field.name = "a field with a name that has memory of its own";
    field.type = PARAM_TYPE_STRING;
    type.setField(field);
}

void declareArrayRead(UserType& type, const std::function<void()>& body)
{
    UserTypeArrayDescriptor access;
    access.read = [body](const Parameters& parameters)
    {
        body();
        EXPECT_EQ(parameters[1].getInt(), 5);
        return FunctionParameter(7);
    };
    type.setArrayAccess(access);
}

void declareArrayWrite(UserType& type, const std::function<void()>& body)
{
    UserTypeArrayDescriptor access;
    access.write = [body](const Parameters& parameters)
    {
        body();
        EXPECT_EQ(parameters[1].getInt(), 5);
        EXPECT_EQ(parameters[2].getString(), "a text that is too long to be kept inside of itself");
    };
    access.type = PARAM_TYPE_STRING;
    type.setArrayAccess(access);
}

void declareArrayReadAndWrite(UserType& type, const std::function<void()>& body)
{
    UserTypeArrayDescriptor access;
    access.read = [body](const Parameters&)
    {
        body();
        return FunctionParameter(7);
    };
    access.write = [](const Parameters&) {};
    type.setArrayAccess(access);
}

void declareMethod(UserType& type, const std::function<void()>& body)
{
    Function* const method = type.setMethod("method", true);
    if (!method)
        return; // the end of the earlier one has cleared the type
    method->addParameter(PARAM_TYPE_STRING);
    method->setFunction(
        [body](const Parameters& parameters)
        {
            body();
            EXPECT_EQ(parameters[0].getUserTypeName(), "world::Vec");
            EXPECT_EQ(
                parameters[1].getString(), "a text that is too long to be kept inside of itself");
            return parameters[0];
        });
}

void declareOperator(UserType& type, const std::function<void()>& body)
{
    Function* const sum = type.setOperator(BUILT_IN_FUNCTION::ADD);
    if (!sum)
        return;
    sum->setFunction(
        [body](const Parameters& parameters)
        {
            body();
            EXPECT_EQ(parameters[1].getUserTypeName(), "world::Vec");
            return parameters[1];
        });
}

int object = 0;

void declareConstructor(UserType& type, const std::function<void()>& body)
{
    type.setConstructor(
        [body](const Parameters&)
        {
            body();
            return &object;
        });
}

void declareDestructor(UserType& type, const std::function<void()>& body)
{
    type.setDestructor([body](void*) { body(); });
}

void clearType(Environment& environment)
{
    if (UserType* const type = typeOf(environment))
        type->clear();
}

void releaseNamespace(Environment& environment)
{
    environment.getNamespace("world")->release();
}

void declareTypeAgain(Environment& environment)
{
    environment.setUserType("world::Vec");
}

void releaseAndDeclareAgain(Environment& environment)
{
    releaseNamespace(environment);
    environment.setUserType("world::Vec");
}

void replaceEverything(Environment& environment)
{
    const std::function<void()> nothing = [] {};
    UserType& type = *typeOf(environment);
    declareGetter(type, nothing);
    declareSetter(type, nothing);
    declareArrayRead(type, nothing);
    declareArrayWrite(type, nothing);
    declareMethod(type, nothing);
    declareOperator(type, nothing);
    declareConstructor(type, nothing);
    declareDestructor(type, nothing);
}

void collectGarbage(Environment& environment)
{
    releaseNamespace(environment);
    environment.requestGarbageCollection();
}

const std::vector<RunningKind> KINDS = {
    {"Getter", &declareGetter, "return v['a field with a name that has memory of its own']"},
    {"Setter",
     &declareSetter,
     "v['a field with a name that has memory of its own'] = "
     "'a text that is too long to be kept inside of itself'"},
    {"ArrayRead", &declareArrayRead, "return v[5]"},
    {"ArrayWrite",
     &declareArrayWrite,
     "v[5] = 'a text that is too long to be kept inside of itself'"},
    {"ArrayReadAndWrite", &declareArrayReadAndWrite, "return v[5]"},
    {"Method",
     &declareMethod,
     "return v:method('a text that is too long to be kept inside of itself')"},
    {"Operator", &declareOperator, "return v + v"},
    {"Constructor", &declareConstructor, "world.Vec.new()"},
    {"Destructor", &declareDestructor, "v:enableGc() v:__gc()"}};

} // namespace

class UserTypeRedeclarationTest
    : public UserTypeFixture,
      public ::testing::WithParamInterface<std::tuple<RunningKind, Change>>
{
protected:
    UserTypeRedeclarationTest()
    {
        UserType& type = *environment().setUserType("world::Vec");
        type.setConstructor([](const Parameters&) { return &object; });
        environment().setObject("v", "world::Vec", &object);
    }

    void TearDown() override
    {
        forgetLog(); // that some were declared already
        UserTypeFixture::TearDown();
    }
};

TEST_P(UserTypeRedeclarationTest, RunningCallableStaysUntilItReturns)
{
    const auto& [kind, change] = GetParam();
    std::vector<std::string> events;
    {
        const auto farewell = makeFarewell([&events] { events.emplace_back("gone"); });
        const auto perform = change.perform;
        kind.declare(
            *typeOf(environment()),
            [this, farewell, perform, &events]
            {
                perform(environment());
                events.emplace_back(farewell ? "returns" : "broken");
            });
    }

    run(kind.use);

    EXPECT_THAT(
        m_log.takeEntries(),
        ::testing::Each(::testing::AnyOf(
            ::testing::Field(&LogEntry::source, ::testing::AnyOf("LuaUserType", "LuaNamespace")),
            // Of a type that was released: its callable still returns an object of that name.
            LogEntry{
                "User type 'world::Vec' is not declared. Its instances have no methods, and "
                "scripts will not destroy them.",
                "LuaFunction"})));
    ASSERT_FALSE(events.empty());
    EXPECT_EQ(events[0], "returns");
    destroyEnvironment();
    EXPECT_THAT(events, ElementsAre("returns", "gone"));
}

INSTANTIATE_TEST_SUITE_P(
    Kinds,
    UserTypeRedeclarationTest,
    ::testing::Combine(
        ::testing::ValuesIn(KINDS),
        ::testing::Values(
            Change{"Clear", &clearType},
            Change{"Release", &releaseNamespace},
            Change{"Redeclaration", &declareTypeAgain},
            Change{"ReleaseAndRedeclaration", &releaseAndDeclareAgain},
            Change{"Replacement", &replaceEverything},
            Change{"ReleaseAndCollection", &collectGarbage})),
    [](const auto& row)
    { return std::string(std::get<0>(row.param).row) + "Under" + std::get<1>(row.param).row; });

/// What runs when a replaced callable is destroyed changes the type again.
class UserTypeReplacedCallableTest : public UserTypeRedeclarationTest
{
protected:
    UserTypeReplacedCallableTest()
    {
        const auto perform = std::get<1>(GetParam()).perform;
        const auto change = [this, perform]
        {
            ++m_ends;
            perform(environment());
        };
        declare([farewell = makeFarewell(change)] {});
    }

    void declare(std::function<void()> act)
    {
        std::get<0>(GetParam()).declare(*typeOf(environment()), std::move(act));
    }

    int m_ends = 0;
};

TEST_P(UserTypeReplacedCallableTest, MayChangeTheTypeAtItsEnd)
{
    declare([] {});

    EXPECT_EQ(m_ends, 1);
    run("local nothing = world.Vec");
}

TEST_P(UserTypeReplacedCallableTest, MayChangeTheTypeWhenItIsCleared)
{
    environment().getNamespace("world")->release();
    forgetLog();
    restart();

    EXPECT_EQ(m_ends, 1);
}

INSTANTIATE_TEST_SUITE_P(
    Kinds,
    UserTypeReplacedCallableTest,
    ::testing::Combine(
        ::testing::ValuesIn(KINDS),
        ::testing::Values(
            Change{"Clear", &clearType},
            Change{"Release", &releaseNamespace},
            Change{"Redeclaration", &declareTypeAgain})),
    [](const auto& row)
    { return std::string(std::get<0>(row.param).row) + "And" + std::get<1>(row.param).row; });

/// A callable that destroys the environment which runs it.
using UserTypeQuitTest = OnRows<UserTypeFixture, RunningKind>;

TEST_P(UserTypeQuitTest, RunningCallableStaysUntilItReturns)
{
    std::vector<std::string> events;
    UserType& type = *environment().setUserType("world::Vec");
    type.setConstructor([](const Parameters&) { return &object; });
    environment().setObject("v", "world::Vec", &object);
    {
        const auto farewell = makeFarewell([&events] { events.emplace_back("gone"); });
        GetParam().declare(
            type,
            [this, farewell, &events]
            {
                destroyEnvironment();
                events.emplace_back(farewell ? "returns" : "broken");
            });
    }

    run(GetParam().use);

    EXPECT_THAT(events, ElementsAre("returns", "gone"));
}

TEST_P(UserTypeQuitTest, OwnedInstancesAreDestroyedOnceAllTheSame)
{
    UserType& type = declareType("world::Vec");
    environment().setObject("v", "world::Vec", &m_hostObject);
    run("kept = {} for i = 1, 100 do kept[i] = Vec.new() end");
    bool hasQuit = false;
    GetParam().declare(
        type,
        [this, &hasQuit]
        {
            hasQuit = true;
            destroyEnvironment();
        });

    run(GetParam().use);

    EXPECT_TRUE(hasQuit);
    ASSERT_EQ(m_made.size(), 100U);
    for (Vec& vec : m_made)
        EXPECT_EQ(std::count(m_destroyed.begin(), m_destroyed.end(), &vec), 1);
}

ROWS(UserTypeQuitTest, KINDS);

} // namespace tbScripts::test

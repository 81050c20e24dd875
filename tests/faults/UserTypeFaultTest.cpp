// Host callables that throw, scripts that raise, and collections at bad moments.

#include "support/RowName.h"
#include "support/UserTypeFixture.h"

#include <tbScripts/Namespace.h>

#include <algorithm>
#include <stdexcept>
#include <tuple>

namespace tbScripts::test
{

namespace
{

struct HostsOwn
{
};

struct Thrown
{
    const char* row;
    void (*throwIt)();
};

struct Place
{
    const char* row;
    void (*declare)(UserType& type, void (*throwIt)());
    const char* use;
};

using test::operator<<;

const Thrown TEXT{"Text", [] { throw std::string("boom"); }};
const Thrown EXCEPTION{"Exception", [] { throw std::runtime_error("boom"); }};
const Thrown OTHER{"Other", [] { throw HostsOwn(); }};

using Throw = void (*)();

// Returns a callable that throws.
Function::Callable throwing(Throw throwIt)
{
    return [throwIt](const Parameters&)
    {
        throwIt();
        return FunctionParameter::VOID;
    };
}

void throwInGetter(UserType& type, Throw throwIt)
{
    UserTypeFieldDescriptor field;
    field.getter = [call = throwing(throwIt)](void*) { return call(Parameters()); };
    field.name = "x";
    type.setField(field);
}

void throwInSetter(UserType& type, Throw throwIt)
{
    UserTypeFieldDescriptor field;
    field.setter = [throwIt](const Parameters&) { throwIt(); };
    field.name = "x";
    field.type = PARAM_TYPE_INT;
    type.setField(field);
}

void throwInArrayRead(UserType& type, Throw throwIt)
{
    UserTypeArrayDescriptor access;
    access.read = throwing(throwIt);
    type.setArrayAccess(access);
}

void throwInArrayWrite(UserType& type, Throw throwIt)
{
    UserTypeArrayDescriptor access;
    access.write = [throwIt](const Parameters&) { throwIt(); };
    access.type = PARAM_TYPE_INT;
    type.setArrayAccess(access);
}

void throwInMethod(UserType& type, Throw throwIt)
{
    type.setMethod("method", false)->setFunction(throwing(throwIt));
}

void throwInConstructor(UserType& type, Throw throwIt)
{
    type.setConstructor(
        [throwIt](const Parameters&) -> void*
        {
            throwIt();
            return nullptr;
        });
}

void throwInDestructor(UserType& type, Throw throwIt)
{
    type.setDestructor([throwIt](void*) { throwIt(); });
}

const Place GETTER{"Getter", &throwInGetter, "local x = v.x"};
const Place SETTER{"Setter", &throwInSetter, "v.x = 1"};
const Place ARRAY_READ{"ArrayRead", &throwInArrayRead, "local x = v[1]"};
const Place ARRAY_WRITE{"ArrayWrite", &throwInArrayWrite, "v[1] = 1"};
const Place METHOD{"Method", &throwInMethod, "v:method()"};
const Place CONSTRUCTOR{"Constructor", &throwInConstructor, "Vec.new()"};
const Place DESTRUCTOR{"Destructor", &throwInDestructor, "v:enableGc()  v:__gc()"};

} // namespace

class UserTypeFaultTest : public UserTypeFixture
{
protected:
    UserTypeFaultTest() { setHostObject("v", m_hostObject); }
};

class UserTypeThrowTest : public UserTypeFaultTest,
                          public ::testing::WithParamInterface<std::tuple<Place, Thrown>>
{
protected:
    UserTypeThrowTest() { std::get<0>(GetParam()).declare(vec(), std::get<1>(GetParam()).throwIt); }

    std::string error() { return errorOf(std::get<0>(GetParam()).use); }
};

/// What is left to the interpreter.
using UserTypeUncaughtTest = UserTypeThrowTest;

TEST_P(UserTypeUncaughtTest, IsAScriptErrorWithoutTextThatLeavesTheTypeAsItWas)
{
    EXPECT_EQ(error(), "C++ exception");

    setMaker(vec());
    declareField("y", &Vec::y);
    EXPECT_EQ(evaluate("Vec.new().y"), "0");
}

TEST_P(UserTypeUncaughtTest, EndsTheScriptThatDoesNotCatchIt)
{
    EXPECT_EQ(
        runExpectingError(std::get<0>(GetParam()).use),
        "Error while executing script 'test' : C++ exception");
}

std::string rowOf(const ::testing::TestParamInfo<std::tuple<Place, Thrown>>& row)
{
    return std::string(std::get<1>(row.param).row) + "In" + std::get<0>(row.param).row;
}

INSTANTIATE_TEST_SUITE_P(
    Everything,
    UserTypeUncaughtTest,
    ::testing::Combine(
        ::testing::Values(GETTER, CONSTRUCTOR, DESTRUCTOR),
        ::testing::Values(TEXT, EXCEPTION, OTHER)),
    &rowOf);

INSTANTIATE_TEST_SUITE_P(
    AllButTexts,
    UserTypeUncaughtTest,
    ::testing::Combine(
        ::testing::Values(SETTER, ARRAY_READ, ARRAY_WRITE), ::testing::Values(EXCEPTION, OTHER)),
    &rowOf);

INSTANTIATE_TEST_SUITE_P(
    OthersInMethods,
    UserTypeUncaughtTest,
    ::testing::Combine(::testing::Values(METHOD), ::testing::Values(OTHER)),
    &rowOf);

using UserTypeRaisedTextTest = UserTypeThrowTest;

TEST_P(UserTypeRaisedTextTest, IsTheErrorAndNotLogged)
{
    EXPECT_EQ(error(), "boom");
}

INSTANTIATE_TEST_SUITE_P(
    Texts,
    UserTypeRaisedTextTest,
    ::testing::Combine(::testing::Values(SETTER, ARRAY_READ, ARRAY_WRITE), ::testing::Values(TEXT)),
    &rowOf);

using UserTypeLoggedTextTest = UserTypeThrowTest;

TEST_P(UserTypeLoggedTextTest, IsTheErrorAndLogged)
{
    EXPECT_EQ(error(), "boom");
    expectLogged("boom", "LuaFunction");
}

INSTANTIATE_TEST_SUITE_P(
    Methods,
    UserTypeLoggedTextTest,
    ::testing::Combine(::testing::Values(METHOD), ::testing::Values(TEXT, EXCEPTION)),
    &rowOf);

TEST_F(UserTypeFaultTest, TextWithANulIsRaisedUpToIt)
{
    throwInSetter(vec(), [] { throw std::string("bo\0om", 5); });

    EXPECT_EQ(errorOf("v.x = 1"), "bo");
}

TEST_F(UserTypeFaultTest, EmptyCallablesAreScriptErrors)
{
    run("w = Vec.new()");
    throwInArrayRead(vec(), [] {});
    vec().setConstructor(nullptr);
    vec().setDestructor(nullptr);
    vec().setMethod("method", false)->setFunction(nullptr);
    vec().getMethod("__arrayRead")->setFunction(nullptr);

    EXPECT_EQ(errorOf("Vec.new()"), "C++ exception");
    EXPECT_EQ(errorOf("v:method()"), "C++ exception");
    EXPECT_EQ(errorOf("local x = v[1]"), "C++ exception");
    EXPECT_EQ(errorOf("w:__gc()"), "C++ exception");
    run("w:__gc()"); // once is enough
}

TEST_F(UserTypeFaultTest, DestructorThatThrowsIsLoggedAndStopsNoOtherNotEvenAtTheEnd)
{
    vec().setDestructor(
        [this](void* object)
        {
            m_destroyed.push_back(&vecAt(object));
            throw std::string("boom");
        });
    run("for i = 1, 3 do Vec.new() end");
    const LogEntry entry{"C++ exception", "LuaEnvironment"};

    collect();
    EXPECT_EQ(m_destroyed.size(), 3U);
    expectLogged({entry, entry, entry});
    run("kept = {} for i = 1, 10 do kept[i] = Vec.new() end  debug.getregistry().kept = kept");
    destroyEnvironment();

    EXPECT_EQ(m_destroyed.size(), 13U);
    m_log.takeEntries(); // those that came before the interpreter closed
}

TEST_F(UserTypeFaultTest, FinaliserThatRaisesLeavesInstancesToBeDestroyed)
{
    run("for i = 1, 3 do "
        "    local proxy = newproxy(true)  local w = Vec.new() "
        "    getmetatable(proxy).__gc = function() local held = w  error('no', 0) end "
        "end");

    collect();

    EXPECT_EQ(m_destroyed.size(), 3U);
    expectLogged({{"no", "LuaEnvironment"}, {"no", "LuaEnvironment"}, {"no", "LuaEnvironment"}});
}

TEST_F(UserTypeFaultTest, EverythingWorksUnderACollectorThatNeverRests)
{
    run("collectgarbage('setpause', 0)  collectgarbage('setstepmul', 10000)");
    for (int round = 0; round < 20; ++round)
    {
        UserType& type = declareType("world::Vec" + std::to_string(round));
        throwInSetter(type, [] {});
        throwInGetter(type, [] {});
        throwInArrayRead(type, [] {});
        throwInMethod(type, [] {});
        run("local Class = world.Vec" + std::to_string(round) +
            "  for i = 1, 20 do local w = Class.new() w.x = i  local a = w.x, w[1], w:method() "
            "end");
    }

    destroyEnvironment();

    EXPECT_EQ(m_made.size(), 400U);
    EXPECT_EQ(m_destroyed.size(), 400U);
}

TEST_F(UserTypeFaultTest, MethodsCallEachOtherUntilTheLimitOfDepth)
{
    int deepest = 0;
    int depth = 0;
    declareMethod(
        "down",
        {},
        [&](const Parameters&)
        {
            deepest = std::max(deepest, ++depth);
            Parameters outputs;
            environment().callScriptFunction(environment().getScriptFunction("down"), {}, outputs);
            --depth;
            return FunctionParameter::VOID;
        });
    run("function down() v:down() end  v:down()");

    EXPECT_EQ(deepest, 200);
    EXPECT_THAT(
        m_log.takeEntries(), ::testing::Contains(LogEntry{"C stack overflow", "LuaEnvironment"}));
}

} // namespace tbScripts::test

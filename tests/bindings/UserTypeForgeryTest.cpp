// Values that are no instances, but come where instances are expected.

#include "support/RowName.h"
#include "support/UserTypeSteps.h"

#include <tbScripts/Namespace.h>

namespace tbScripts::test
{

namespace
{

struct Stranger
{
    const char* row;
    const char* expression;
    const char* preparation = "";
};

constexpr const char* NO_VEC = "Expected an instance of user type 'Vec'.";

class UserTypeForgeryTest : public UserTypeFixture
{
protected:
    UserTypeForgeryTest()
    {
        declareField("x", &Vec::x);
        declareArrayAccess();
        declareMethod("length", {}, uncallable());
        declareType("Enemy");
        setHostObject("v", m_hostObject);
    }
};

class UserTypeStrangerTest : public OnRows<UserTypeForgeryTest, Stranger>
{
protected:
    UserTypeStrangerTest()
    {
        run(std::string(GetParam().preparation) + "  stranger = " + GetParam().expression);
    }
};

TEST_P(UserTypeStrangerTest, HasNoFieldsAndElements)
{
    raises("Vec.__index(stranger, 'x')", NO_VEC);
    raises("Vec.__newindex(stranger, 'x', 2)", NO_VEC);
    raises("Vec.__index(stranger, 1)", NO_VEC);
    raises("Vec.__newindex(stranger, 1, 2)", NO_VEC);
}

TEST_P(UserTypeStrangerTest, IsNotFinalised)
{
    raises("Vec.__gc(stranger)", NO_VEC);
    isDestroyed({});
}

TEST_P(UserTypeStrangerTest, StillReadsWhatNeedsNoInstance)
{
    is("Vec.__index(stranger, 'length') == Vec.length", "true");
    is("Vec.__index(stranger, 'new') == Vec.new", "true");
    is("Vec.__index(stranger, 'unknown')", "nil");
    is("select('#', Vec.__newindex(stranger, 'unknown', 1))", "0");
}

TEST_P(UserTypeStrangerTest, IsAMismatchForMethods)
{
    const std::string message = errorOf("Vec.length(stranger)");
    EXPECT_THAT(message, ::testing::StartsWith("Error l.1 while calling length. Expected Vec, "));
    expectLogged(message, "LuaFunction");
}

TEST_P(UserTypeStrangerTest, IsNoObjectForTheHost)
{
    isObject("stranger", NO_OBJECT);
}

ROWS(
    UserTypeStrangerTest,
    {"Table", "{}"},
    {"TableOfTheType", "setmetatable({}, Vec)"},
    {"TypeItself", "Vec"},
    {"Number", "1"},
    {"Text", "'Vec'"},
    {"Function", "print"},
    {"FileHandle", "io.stdout"},
    {"Proxy", "newproxy(true)"},
    {"OtherType", "Enemy.new()"},
    {"OtherTypeThatSaysItIsThis", "Enemy.new()", "Enemy.__name = 'Vec'"},
    {"FileHandleThatSaysItIsThis", "io.stdout", "getmetatable(io.stdout).__name = 'Vec'"},
    {"ProxyThatSaysItIsThis",
     "proxy",
     "local p = newproxy(true) getmetatable(p).__name = 'Vec' proxy = p"},
    {"BoxedStructure", "require('ffi').new('int64_t[2]')"});

/// Blocks of other libraries that a script has given the metatable of a type.
class UserTypeForgedMetatableTest : public OnRows<UserTypeForgeryTest, Stranger>
{
protected:
    UserTypeForgedMetatableTest()
    {
        run(std::string("block = ") + GetParam().expression +
            "  meta = debug.getmetatable(block)  debug.setmetatable(block, Vec)");
    }

    void TearDown() override
    {
        run("debug.setmetatable(block, meta)");
        UserTypeForgeryTest::TearDown();
    }
};

TEST_P(UserTypeForgedMetatableTest, IsNoInstance)
{
    raises("local x = block.x", NO_VEC);
    raises("block[1] = 1", NO_VEC);
    isObject("block", NO_OBJECT);
}

TEST_P(UserTypeForgedMetatableTest, IsNotFinalised)
{
    raises("Vec.__gc(block)", NO_VEC);
    isDestroyed({});
}

TEST_P(UserTypeForgedMetatableTest, CannotBeEnabled)
{
    raises("block:enableGc()", NO_VEC);
    raises("block:disableGc()", NO_VEC);
}

ROWS(
    UserTypeForgedMetatableTest,
    {"StandardOutput", "io.stdout"},
    {"StandardError", "io.stderr"},
    {"Proxy", "newproxy(true)"});

TEST_F(UserTypeForgeryTest, SwitchesAcceptNoStrangers)
{
    for (const std::string stranger :
         {"io.stdout", "newproxy(true)", "{}", "Vec", "1", "'Vec'", "nil", "print"})
    {
        raises("Vec.enableGc(" + stranger + ")", NO_VEC);
        raises("Vec.disableGc(v, " + stranger + ")", NO_VEC);
    }
    is("io.type(io.stdout)", "file");
}

TEST_F(UserTypeForgeryTest, BoxWithoutMetatableIsNoInstance)
{
    environment().setObject("stranger", "NoSuchType", &m_hostObject);
    raises("Vec.__index(stranger, 'x')", NO_VEC);
    raises("Vec.enableGc(stranger)", NO_VEC);
}

const Facts<UserTypeForgeryTest> FACTS(
    "UserTypeForgeryTest",
    {
        {"RenamedTypeStaysTheTypeThatItIs",
         {run("Vec.__name = 'Enemy'"),
          isObject("v", HOST_OBJECT),
          isObject("v", NO_OBJECT, "Enemy"),
          is("v.x", "0")}},
        {"MessagesUseTheNameThatTheTypeWasCreatedWith",
         {run("Vec.__name = 'Enemy'"),
          raises("Vec.__index({}, 'x')", NO_VEC),
          raises("v[1] = 'a'", "Error l.1 while calling Vec. Expected double, got string.")}},
        {"NameThatIsNoTextIsHarmless",
         {run("Vec.__name = {}"), isObject("v", HOST_OBJECT), is("Vec.new().x", "0")}},
        {"NumberOrNothingIsNoInstanceForTheDispatchers",
         {is("Vec.__index({}, 'y')", "nil"),
          is("Vec.__index()", "nil"),
          is("select('#', Vec.__newindex())", "0"),
          raises("Vec.__newindex(1, 'x', 2)", NO_VEC)}},
        {"FinaliserWithoutArgumentIsAnError", {raises("Vec.__gc()", NO_VEC)}},
        {"SwitchesWithoutArgumentAreErrors",
         {raises("Vec.enableGc()", NO_VEC), raises("Vec.disableGc()", NO_VEC)}},
        {"FinaliserOfATypeDoesNotServeAnother",
         {run("enemy = Enemy.new()"), raises("Vec.__gc(enemy)", NO_VEC), isDestroyed({})}},
    });

} // namespace

} // namespace tbScripts::test

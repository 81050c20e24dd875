// Values that are no instances, but come where instances are expected.

#include "support/RowName.h"
#include "support/UserTypeFixture.h"

#include <tbScripts/Namespace.h>

#include <ostream>

namespace tbScripts::test
{

using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace
{

struct Stranger
{
    const char* row;
    const char* preparation;
    const char* expression;
};

std::ostream& operator<<(std::ostream& stream, const Stranger& stranger)
{
    return stream << stranger.row;
}

constexpr const char* NO_VEC = "Expected an instance of user type 'Vec'.";

} // namespace

class UserTypeForgeryTest : public UserTypeFixture
{
protected:
    UserTypeForgeryTest()
    {
        declareField("x", &Vec::x);
        declareArrayAccess();
        declareMethod(
            "length",
            {},
            [](const Parameters&)
            {
                ADD_FAILURE() << "the method was called";
                return FunctionParameter::VOID;
            });
        declareType("Enemy");
        setHostObject("v", m_hostObject);
    }
};

class UserTypeStrangerTest : public UserTypeForgeryTest,
                             public ::testing::WithParamInterface<Stranger>
{
protected:
    UserTypeStrangerTest()
    {
        run(std::string(GetParam().preparation) + "  stranger = " + GetParam().expression);
    }
};

TEST_P(UserTypeStrangerTest, HasNoFields)
{
    EXPECT_EQ(errorOf("Vec.__index(stranger, 'x')"), NO_VEC);
    EXPECT_EQ(errorOf("Vec.__newindex(stranger, 'x', 2)"), NO_VEC);
}

TEST_P(UserTypeStrangerTest, HasNoElements)
{
    EXPECT_EQ(errorOf("Vec.__index(stranger, 1)"), NO_VEC);
    EXPECT_EQ(errorOf("Vec.__newindex(stranger, 1, 2)"), NO_VEC);
}

TEST_P(UserTypeStrangerTest, IsNotFinalised)
{
    EXPECT_EQ(errorOf("Vec.__gc(stranger)"), NO_VEC);
    EXPECT_THAT(m_destroyed, IsEmpty());
}

TEST_P(UserTypeStrangerTest, StillReadsWhatNeedsNoInstance)
{
    EXPECT_EQ(evaluate("Vec.__index(stranger, 'length') == Vec.length"), "true");
    EXPECT_EQ(evaluate("Vec.__index(stranger, 'new') == Vec.new"), "true");
    EXPECT_EQ(evaluate("Vec.__index(stranger, 'unknown')"), "nil");
    EXPECT_EQ(evaluate("select('#', Vec.__newindex(stranger, 'unknown', 1))"), "0");
}

TEST_P(UserTypeStrangerTest, IsAMismatchForMethods)
{
    const std::string message = errorOf("Vec.length(stranger)");

    EXPECT_THAT(message, ::testing::StartsWith("Error l.1 while calling length. Expected Vec, "));
    EXPECT_THAT(m_log.takeEntries(), ElementsAre(LogEntry{message, "LuaFunction"}));
}

TEST_P(UserTypeStrangerTest, IsNoObjectForTheHost)
{
    EXPECT_EQ(environment().getObject("stranger", "Vec"), nullptr);
}

INSTANTIATE_TEST_SUITE_P(
    Values,
    UserTypeStrangerTest,
    ::testing::Values(
        Stranger{"Table", "", "{}"},
        Stranger{"TableOfTheType", "", "setmetatable({}, Vec)"},
        Stranger{"TypeItself", "", "Vec"},
        Stranger{"Number", "", "1"},
        Stranger{"Text", "", "'Vec'"},
        Stranger{"Function", "", "print"},
        Stranger{"FileHandle", "", "io.stdout"},
        Stranger{"Proxy", "", "newproxy(true)"},
        Stranger{"OtherType", "", "Enemy.new()"},
        Stranger{"OtherTypeThatSaysItIsThis", "Enemy.__name = 'Vec'", "Enemy.new()"},
        Stranger{
            "FileHandleThatSaysItIsThis", "getmetatable(io.stdout).__name = 'Vec'", "io.stdout"},
        Stranger{
            "ProxyThatSaysItIsThis",
            "local p = newproxy(true) getmetatable(p).__name = 'Vec' proxy = p",
            "proxy"},
        Stranger{"BoxedStructure", "", "require('ffi').new('int64_t[2]')"}),
    RowName());

TEST_F(UserTypeForgeryTest, RenamedTypeStaysTheTypeThatItIs)
{
    run("Vec.__name = 'Enemy'");

    EXPECT_EQ(environment().getObject("v", "Vec"), &m_hostObject);
    EXPECT_EQ(environment().getObject("v", "Enemy"), nullptr);
    EXPECT_EQ(evaluate("v.x"), "0");
}

TEST_F(UserTypeForgeryTest, MessagesUseTheNameThatTheTypeWasCreatedWith)
{
    run("Vec.__name = 'Enemy'");

    EXPECT_EQ(errorOf("Vec.__index({}, 'x')"), NO_VEC);
    EXPECT_EQ(errorOf("v[1] = 'a'"), "Error l.1 while calling Vec. Expected double, got string.");
}

TEST_F(UserTypeForgeryTest, NameThatIsNoTextIsHarmless)
{
    run("Vec.__name = {}");

    EXPECT_EQ(environment().getObject("v", "Vec"), &m_hostObject);
    EXPECT_EQ(evaluate("Vec.new().x"), "0");
}

namespace
{

struct Block
{
    const char* row;
    const char* expression;
};

std::ostream& operator<<(std::ostream& stream, const Block& block)
{
    return stream << block.row;
}

} // namespace

/// Blocks of other libraries that a script has given the metatable of a type.
class UserTypeForgedMetatableTest : public UserTypeForgeryTest,
                                    public ::testing::WithParamInterface<Block>
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
    EXPECT_EQ(errorOf("local x = block.x"), NO_VEC);
    EXPECT_EQ(errorOf("block[1] = 1"), NO_VEC);
    EXPECT_EQ(environment().getObject("block", "Vec"), nullptr);
}

TEST_P(UserTypeForgedMetatableTest, IsNotFinalised)
{
    EXPECT_EQ(errorOf("Vec.__gc(block)"), NO_VEC);
    EXPECT_THAT(m_destroyed, IsEmpty());
}

TEST_P(UserTypeForgedMetatableTest, CannotBeEnabled)
{
    EXPECT_EQ(errorOf("block:enableGc()"), NO_VEC);
    EXPECT_EQ(errorOf("block:disableGc()"), NO_VEC);
}

INSTANTIATE_TEST_SUITE_P(
    Blocks,
    UserTypeForgedMetatableTest,
    ::testing::Values(
        Block{"StandardOutput", "io.stdout"},
        Block{"StandardError", "io.stderr"},
        Block{"Proxy", "newproxy(true)"}),
    RowName());

TEST_F(UserTypeForgeryTest, NumberOrNothingIsNoInstanceForTheDispatchers)
{
    EXPECT_EQ(evaluate("Vec.__index({}, 'y')"), "nil");
    EXPECT_EQ(evaluate("Vec.__index()"), "nil");
    EXPECT_EQ(evaluate("select('#', Vec.__newindex())"), "0");
    EXPECT_EQ(errorOf("Vec.__newindex(1, 'x', 2)"), NO_VEC);
}

TEST_F(UserTypeForgeryTest, FinaliserWithoutArgumentIsAnError)
{
    EXPECT_EQ(errorOf("Vec.__gc()"), NO_VEC);
}

TEST_F(UserTypeForgeryTest, SwitchesWithoutArgumentAreErrors)
{
    EXPECT_EQ(errorOf("Vec.enableGc()"), NO_VEC);
    EXPECT_EQ(errorOf("Vec.disableGc()"), NO_VEC);
}

TEST_F(UserTypeForgeryTest, SwitchesAcceptNoStrangers)
{
    for (const char* const stranger :
         {"io.stdout", "newproxy(true)", "{}", "Vec", "1", "'Vec'", "nil", "print"})
    {
        EXPECT_EQ(errorOf(std::string("Vec.enableGc(") + stranger + ")"), NO_VEC) << stranger;
        EXPECT_EQ(errorOf(std::string("Vec.disableGc(v, ") + stranger + ")"), NO_VEC) << stranger;
    }
    EXPECT_EQ(evaluate("io.type(io.stdout)"), "file");
}

TEST_F(UserTypeForgeryTest, FinaliserOfATypeDoesNotServeAnother)
{
    run("enemy = Enemy.new()");

    EXPECT_EQ(errorOf("Vec.__gc(enemy)"), NO_VEC);
    EXPECT_THAT(m_destroyed, IsEmpty());
}

TEST_F(UserTypeForgeryTest, BoxWithoutMetatableIsNoInstance)
{
    environment().setObject("stranger", "NoSuchType", &m_hostObject);

    EXPECT_EQ(errorOf("Vec.__index(stranger, 'x')"), NO_VEC);
    EXPECT_EQ(errorOf("Vec.enableGc(stranger)"), NO_VEC);
}

TEST_F(UserTypeForgeryTest, InstanceOfATypeDeclaredAgainStillMatches)
{
    declareType("world::Vec");
    run("old = world.Vec.new()");
    environment().getNamespace("world")->release();
    UserType& type = declareType("world::Vec");
    type.setMethod("test", false)->setFunction([](const Parameters&) { return "taken"; });

    EXPECT_EQ(evaluate("world.Vec.test(old)"), "taken");
    EXPECT_EQ(environment().getObject("old", "world::Vec"), &m_made[0]);
}

} // namespace tbScripts::test

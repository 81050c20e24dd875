#include "support/RowName.h"
#include "support/UserTypeFixture.h"

#include <ostream>

namespace tbScripts::test
{

using ::testing::ElementsAre;

namespace
{

struct WrongSelf
{
    const char* row;
    const char* call;
    const char* actual; // as the message names it
};

std::ostream& operator<<(std::ostream& stream, const WrongSelf& row)
{
    return stream << row.row;
}

} // namespace

class UserTypeMethodsTest : public UserTypeFixture
{
protected:
    UserTypeMethodsTest() { setHostObject("v", m_hostObject); }

    /// Declares the method `lengthen(by)`, which adds to `x` and returns it.
    void declareLengthen()
    {
        declareMethod(
            "lengthen",
            {PARAM_TYPE_DOUBLE},
            [](const Parameters& parameters)
            {
                vecOf(parameters[0]).x += parameters[1].getDouble();
                return vecOf(parameters[0]).x;
            });
    }
};

TEST_F(UserTypeMethodsTest, MethodGetsTheInstanceFirst)
{
    declareLengthen();

    EXPECT_EQ(evaluate("v:lengthen(3)"), "3");
    EXPECT_EQ(m_hostObject.x, 3.0);
}

TEST_F(UserTypeMethodsTest, MethodIsAFieldOfTheTypeToo)
{
    declareLengthen();

    EXPECT_EQ(evaluate("Vec.lengthen(v, 3)"), "3");
}

TEST_F(UserTypeMethodsTest, SelfCarriesTheFullNameOfItsType)
{
    UserType& type = declareType("math::Vec");
    std::string name;
    type.setMethod("test", false)
        ->setFunction(
            [&name](const Parameters& parameters)
            {
                name = std::string_view(parameters[0].getUserTypeName());
                return FunctionParameter::VOID;
            });

    run("math.Vec.new():test()");

    EXPECT_EQ(name, "math::Vec");
}

TEST_F(UserTypeMethodsTest, SelfIsOfTheKindThatWasAskedFor)
{
    std::vector<FUNCTION_PARAMETER_TYPE> types;
    const auto note = [&types](const Parameters& parameters)
    {
        types.push_back(parameters[0].getType());
        return FunctionParameter::VOID;
    };
    vec().setMethod("kept", false)->setFunction(note);
    vec().setMethod("owned", true)->setFunction(note);

    run("v:kept() v:owned()");

    EXPECT_THAT(types, ElementsAre(PARAM_TYPE_USER_TYPE, PARAM_TYPE_USER_TYPE_OWNED));
}

TEST_F(UserTypeMethodsTest, OwnedSelfCanBeKeptAsAReference)
{
    ScriptObjectReference kept;
    vec()
        .setMethod("keep", true)
        ->setFunction(
            [&kept](const Parameters& parameters)
            {
                kept = ScriptObjectReference(parameters[0].getUserTypeView());
                return FunctionParameter::VOID;
            });
    run("owned = Vec.new() owned:keep()");

    environment().setVar("again", kept);

    EXPECT_EQ(evaluate("rawequal(again, owned)"), "true");
}

TEST_F(UserTypeMethodsTest, StaticMethodGetsNoInstance)
{
    std::size_t size = 99;
    vec().setStaticMethod("origin")->setFunction(
        [&size](const Parameters& parameters)
        {
            size = parameters.size();
            return FunctionParameter::VOID;
        });

    run("Vec.origin()");

    EXPECT_EQ(size, 0U);
}

TEST_F(UserTypeMethodsTest, StaticMethodCanMakeInstances)
{
    Function* const make = vec().setStaticMethod("at");
    make->addParameter(PARAM_TYPE_DOUBLE);
    make->setFunction(
        [this](const Parameters& parameters)
        {
            m_made.push_back(Vec{parameters[0].getDouble(), 0.0});
            return FunctionParameter(&m_made.back(), "Vec", true);
        });
    declareField("x", &Vec::x);

    EXPECT_EQ(evaluate("Vec.at(3).x"), "3");
    collect();

    EXPECT_THAT(m_destroyed, ElementsAre(&m_made[0]));
}

TEST_F(UserTypeMethodsTest, BothLookupsFindBothKinds)
{
    Function* const method = vec().setMethod("length", false);
    Function* const staticMethod = vec().setStaticMethod("origin");

    EXPECT_EQ(vec().getMethod("length"), method);
    EXPECT_EQ(vec().getStaticMethod("length"), method);
    EXPECT_EQ(vec().getMethod("origin"), staticMethod);
    EXPECT_EQ(vec().getStaticMethod("origin"), staticMethod);
}

TEST_F(UserTypeMethodsTest, LookupsFindNothingElse)
{
    declareField("x", &Vec::x);
    vec().setMethod("length", false);

    EXPECT_EQ(vec().getMethod("Length"), nullptr);
    EXPECT_EQ(vec().getStaticMethod(""), nullptr);
    EXPECT_EQ(vec().getMethod("x"), nullptr);
    EXPECT_EQ(vec().getMethod("new"), nullptr);
}

TEST_F(UserTypeMethodsTest, MethodKnowsItsName)
{
    EXPECT_EQ(vec().setMethod("length", false)->getName(), "length");
}

TEST_F(UserTypeMethodsTest, NullNameIsTheEmptyName)
{
    Function* const method = vec().setStaticMethod(tbMemory::StringView());

    EXPECT_EQ(vec().getMethod(""), method);
    EXPECT_EQ(evaluate("type(Vec[''])"), "function");
}

TEST_F(UserTypeMethodsTest, NameEndsForScriptsAtItsFirstNul)
{
    const tbMemory::StringView name("a\0b", 3);
    Function* const method = vec().setStaticMethod(name);

    EXPECT_EQ(vec().getMethod(name), method);
    EXPECT_EQ(vec().getMethod("a"), nullptr);
    EXPECT_EQ(evaluate("type(Vec.a)"), "function");
}

TEST_F(UserTypeMethodsTest, SetTwiceIsTheSameFunctionWithOneWarning)
{
    Function* const first = vec().setMethod("length", false);

    Function* const second = vec().setMethod("length", false);

    EXPECT_EQ(second, first);
    EXPECT_THAT(
        m_log.takeEntries(),
        ElementsAre(LogEntry{
            "Setting method 'length' on user type 'Vec', but this method is already registered. "
            "State will be changed, but this might hold unexpected results",
            "LuaUserType"}));
}

TEST_F(UserTypeMethodsTest, WarningNamesTheShortTypeName)
{
    UserType& type = declareType("math::Vec");
    type.setStaticMethod("origin");

    type.setStaticMethod("origin");

    EXPECT_THAT(
        m_log.takeEntries(),
        ElementsAre(LogEntry{
            "Setting method 'origin' on user type 'Vec', but this method is already registered. "
            "State will be changed, but this might hold unexpected results",
            "LuaUserType"}));
}

TEST_F(UserTypeMethodsTest, SetTwiceHasNoParametersOfTheFirst)
{
    declareLengthen();
    std::size_t size = 99;

    vec()
        .setStaticMethod("lengthen")
        ->setFunction(
            [&size](const Parameters& parameters)
            {
                size = parameters.size();
                return FunctionParameter::VOID;
            });
    m_log.takeEntries(); // that it is registered already
    run("Vec.lengthen('no number')");

    EXPECT_EQ(size, 0U);
}

TEST_F(UserTypeMethodsTest, SetTwiceIsUnbound)
{
    declareLengthen();
    vec().setMethod("lengthen", false);
    m_log.takeEntries(); // that it is registered already

    run("v:lengthen()");

    EXPECT_THAT(
        m_log.takeEntries(),
        ElementsAre(LogEntry{
            "Function 'lengthen' called but no user function is bound. Call having no effect.",
            "Function"}));
}

TEST_F(UserTypeMethodsTest, ClosuresThatScriptsKeptCallTheNewOne)
{
    declareLengthen();
    run("kept = v.lengthen");

    declareMethod("lengthen", {}, [](const Parameters&) { return "new"; });
    m_log.takeEntries(); // that it is registered already

    EXPECT_EQ(evaluate("kept(v)"), "new");
}

TEST_F(UserTypeMethodsTest, InstancesMadeBeforeHaveIt)
{
    run("old = Vec.new() local nothing = old.lengthen");

    declareLengthen();

    EXPECT_EQ(evaluate("old:lengthen(2)"), "2");
}

TEST_F(UserTypeMethodsTest, NilIsANullObject)
{
    bool isNull = false;
    declareMethod(
        "test",
        {},
        [&isNull](const Parameters& parameters)
        {
            isNull = parameters[0].getUserTypeObject() == nullptr;
            return FunctionParameter::VOID;
        });

    run("Vec.test(nil)");

    EXPECT_TRUE(isNull);
}

class UserTypeWrongSelfTest : public UserTypeMethodsTest,
                              public ::testing::WithParamInterface<WrongSelf>
{
};

TEST_P(UserTypeWrongSelfTest, IsAMismatchThatIsLogged)
{
    declareType("Enemy");
    declareMethod(
        "length",
        {},
        [](const Parameters&)
        {
            ADD_FAILURE() << "the callable was called";
            return FunctionParameter::VOID;
        });
    const std::string expected =
        std::string("Error l.1 while calling length. Expected Vec, got ") + GetParam().actual + ".";

    const std::string message = errorOf(std::string("local x = ") + GetParam().call);

    EXPECT_EQ(message, expected);
    EXPECT_THAT(m_log.takeEntries(), ElementsAre(LogEntry{expected, "LuaFunction"}));
}

INSTANTIATE_TEST_SUITE_P(
    Calls,
    UserTypeWrongSelfTest,
    ::testing::Values(
        WrongSelf{"DotInPlaceOfColon", "v.length()", "no value"},
        WrongSelf{"TypeItself", "Vec:length()", "table"},
        WrongSelf{"Number", "v.length(1)", "number"},
        WrongSelf{"Text", "v.length('v')", "string"},
        WrongSelf{"OtherType", "Vec.length(Enemy.new())", "userdata"},
        WrongSelf{"FileHandle", "Vec.length(io.stdout)", "userdata"},
        WrongSelf{"Proxy", "Vec.length(newproxy(true))", "userdata"}),
    RowName());

TEST_F(UserTypeMethodsTest, ReturnsValuesOfEachKind)
{
    struct Row
    {
        FunctionParameter value;
        const char* shown;
    };

    const std::vector<Row> rows{
        {FunctionParameter::VOID, "nil"},
        {true, "true"},
        {-7, "-7"},
        {0.5F, "0.5"},
        {0.25, "0.25"},
        {"text", "text"},
        {FunctionParameter(nullptr, "Vec", false), "nil"}};
    FunctionParameter result;
    declareMethod("get", {}, [&result](const Parameters&) { return result; });

    for (const Row& row : rows)
    {
        result = row.value;
        EXPECT_EQ(evaluate("v:get()"), row.shown);
    }
}

TEST_F(UserTypeMethodsTest, ReturnedSelfThatTheScriptOwnsIsTheSameValue)
{
    vec()
        .setMethod("itself", true)
        ->setFunction([](const Parameters& parameters) { return parameters[0]; });

    EXPECT_EQ(evaluate("(function(o) return rawequal(o, o:itself()) end)(Vec.new())"), "true");
}

TEST_F(UserTypeMethodsTest, ReturnedSelfChainedAHundredTimesIsTheSameValue)
{
    vec()
        .setMethod("itself", true)
        ->setFunction([](const Parameters& parameters) { return parameters[0]; });
    std::string chain = "owned";
    for (int i = 0; i < 100; ++i)
        chain += ":itself()";
    run("owned = Vec.new()");

    EXPECT_EQ(evaluate("rawequal(owned, " + chain + ")"), "true");
    run("owned = nil");
    collect();

    EXPECT_THAT(m_destroyed, ElementsAre(&m_made[0]));
}

TEST_F(UserTypeMethodsTest, ReturnedSelfThatTheHostKeepsIsAnotherBoxWithoutOwner)
{
    vec()
        .setMethod("itself", false)
        ->setFunction([](const Parameters& parameters) { return parameters[0]; });
    run("owned = Vec.new()  other = owned:itself()");

    EXPECT_EQ(evaluate("rawequal(owned, other)"), "false");
    EXPECT_EQ(environment().getObject("other", "Vec"), &m_made[0]);
    run("owned, other = nil, nil");
    collect();

    EXPECT_THAT(m_destroyed, ElementsAre(&m_made[0]));
}

} // namespace tbScripts::test

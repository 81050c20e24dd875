#include "support/RowName.h"
#include "support/UserTypeSteps.h"

namespace tbScripts::test
{

namespace
{

struct WrongSelf
{
    const char* row;
    const char* call;
    const char* actual; // as the message names it
};

struct Returned
{
    const char* row;
    FunctionParameter value;
    const char* shown;
};

class UserTypeMethodsTest : public UserTypeFixture
{
public:
    /// Declares the method `lengthen(by)`, which adds to `x` and returns it.
    void declareLengthen()
    {
        declareMethod(
            "lengthen",
            {PARAM_TYPE_DOUBLE},
            [](const Parameters& parameters)
            { return vecOf(parameters[0]).x += parameters[1].getDouble(); });
    }

    /// Declares the method `itself`.
    void declareItself(bool isOwned)
    {
        vec()
            .setMethod("itself", isOwned)
            ->setFunction([](const Parameters& parameters) { return parameters[0]; });
    }

    std::vector<std::string> m_calls;

protected:
    UserTypeMethodsTest() { setHostObject("v", m_hostObject); }
};

TEST_F(UserTypeMethodsTest, SelfCarriesTheFullNameOfItsType)
{
    declareType("math::Vec").setMethod("test", false)->setFunction(recording(m_calls));
    run("math.Vec.new():test()");
    EXPECT_THAT(m_calls, ElementsAre("an object of math::Vec"));
}

TEST_F(UserTypeMethodsTest, SelfIsOfTheKindThatWasAskedFor)
{
    std::vector<FUNCTION_PARAMETER_TYPE> types;
    const auto note =
        doing([&types](auto& parameters) { types.push_back(parameters[0].getType()); });
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
        ->setFunction(doing([&kept](const Parameters& parameters)
                            { kept = ScriptObjectReference(parameters[0].getUserTypeView()); }));
    run("owned = Vec.new() owned:keep()");
    environment().setVar("again", kept);
    is("rawequal(again, owned)", "true");
}

TEST_F(UserTypeMethodsTest, StaticMethodGetsNoInstance)
{
    vec().setStaticMethod("origin")->setFunction(recording(m_calls));
    run("Vec.origin()");
    EXPECT_THAT(m_calls, ElementsAre(""));
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

    is("Vec.at(3).x", "3");
    collect();
    isDestroyed({0});
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
    is("type(Vec[''])", "function");
}

TEST_F(UserTypeMethodsTest, NameEndsForScriptsAtItsFirstNul)
{
    const tbMemory::StringView name("a\0b", 3);
    Function* const method = vec().setStaticMethod(name);
    EXPECT_EQ(vec().getMethod(name), method);
    EXPECT_EQ(vec().getMethod("a"), nullptr);
    is("type(Vec.a)", "function");
}

TEST_F(UserTypeMethodsTest, SetTwiceIsTheSameFunctionWithOneWarning)
{
    Function* const first = vec().setMethod("length", false);
    EXPECT_EQ(vec().setMethod("length", false), first);
    expectLogged(
        "Setting method 'length' on user type 'Vec', but this method is already registered. State "
        "will be changed, but this might hold unexpected results",
        "LuaUserType");
}

TEST_F(UserTypeMethodsTest, WarningNamesTheShortTypeName)
{
    UserType& type = declareType("math::Vec");
    type.setStaticMethod("origin");
    type.setStaticMethod("origin");
    expectLogged(
        "Setting method 'origin' on user type 'Vec', but this method is already registered. State "
        "will be changed, but this might hold unexpected results",
        "LuaUserType");
}

TEST_F(UserTypeMethodsTest, SetTwiceHasNoParametersOfTheFirst)
{
    declareLengthen();
    vec().setStaticMethod("lengthen")->setFunction(recording(m_calls));
    forgetLog(); // that it is registered already
    run("Vec.lengthen('no number')");
    EXPECT_THAT(m_calls, ElementsAre(""));
}

TEST_F(UserTypeMethodsTest, NilIsANullObject)
{
    declareMethod("test", {}, recording(m_calls));
    run("Vec.test(nil)");
    EXPECT_THAT(m_calls, ElementsAre("no object of Vec"));
}

using UserTypeWrongSelfTest = OnRows<UserTypeMethodsTest, WrongSelf>;

TEST_P(UserTypeWrongSelfTest, IsAMismatchThatIsLogged)
{
    declareType("Enemy");
    declareMethod("length", {}, uncallable());
    const std::string expected =
        std::string("Error l.1 while calling length. Expected Vec, got ") + GetParam().actual + ".";
    raises(std::string("local x = ") + GetParam().call, expected);
    expectLogged(expected, "LuaFunction");
}

ROWS(
    UserTypeWrongSelfTest,
    {"DotInPlaceOfColon", "v.length()", "no value"},
    {"TypeItself", "Vec:length()", "table"},
    {"Number", "v.length(1)", "number"},
    {"Text", "v.length('v')", "string"},
    {"OtherType", "Vec.length(Enemy.new())", "userdata"},
    {"FileHandle", "Vec.length(io.stdout)", "userdata"},
    {"Proxy", "Vec.length(newproxy(true))", "userdata"});

using UserTypeReturnedValueTest = OnRows<UserTypeMethodsTest, Returned>;

TEST_P(UserTypeReturnedValueTest, ArrivesInTheScript)
{
    declareMethod("get", {}, returning(GetParam().value));
    is("v:get()", GetParam().shown);
}

ROWS(
    UserTypeReturnedValueTest,
    {"Void", FunctionParameter::VOID, "nil"},
    {"Bool", true, "true"},
    {"Int", -7, "-7"},
    {"Float", 0.5F, "0.5"},
    {"Double", 0.25, "0.25"},
    {"Text", "text", "text"},
    {"NullObject", FunctionParameter(nullptr, "Vec", false), "nil"});

std::string itselfAHundredTimes()
{
    std::string chain = "owned";
    for (int i = 0; i < 100; ++i)
        chain += ":itself()";
    return chain;
}

auto lengthen()
{
    return [](UserTypeMethodsTest& test) { test.declareLengthen(); };
}

auto itself(bool isOwned)
{
    return [=](UserTypeMethodsTest& test) { test.declareItself(isOwned); };
}

const Facts<UserTypeMethodsTest> FACTS(
    "UserTypeMethodsTest",
    {
        {"MethodGetsTheInstanceFirst",
         {lengthen(), is("v:lengthen(3)", "3"), hasX(HOST_OBJECT, 3.0)}},
        {"MethodIsAFieldOfTheTypeToo", {lengthen(), is("Vec.lengthen(v, 3)", "3")}},
        {"SetTwiceIsUnbound",
         {lengthen(),
          [](auto& test) { test.vec().setMethod("lengthen", false); },
          forgetLog(), // that it is registered already
          run("v:lengthen()"),
          logs(
              "Function 'lengthen' called but no user function is bound. Call having no effect.",
              "Function")}},
        {"ClosuresThatScriptsKeptCallTheNewOne",
         {lengthen(),
          run("kept = v.lengthen"),
          method("lengthen", "new"),
          forgetLog(), // that it is registered already
          is("kept(v)", "new")}},
        {"InstancesMadeBeforeHaveIt",
         {run("old = Vec.new() local nothing = old.lengthen"),
          lengthen(),
          is("old:lengthen(2)", "2")}},
        {"ReturnedSelfThatTheScriptOwnsIsTheSameValue",
         {itself(true), is("(function(o) return rawequal(o, o:itself()) end)(Vec.new())", "true")}},
        {"ReturnedSelfChainedAHundredTimesIsTheSameValue",
         {itself(true),
          run("owned = Vec.new()"),
          is("rawequal(owned, " + itselfAHundredTimes() + ")", "true"),
          run("owned = nil"),
          collect(),
          isDestroyed({0})}},
        {"ReturnedSelfThatTheHostKeepsIsAnotherBoxWithoutOwner",
         {itself(false),
          run("owned = Vec.new()  other = owned:itself()"),
          is("rawequal(owned, other)", "false"),
          isObject("other", 0),
          run("owned, other = nil, nil"),
          collect(),
          isDestroyed({0})}},
    });

} // namespace

} // namespace tbScripts::test

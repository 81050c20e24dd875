#include "support/RowName.h"
#include "support/UserTypeSteps.h"

namespace tbScripts::test
{

namespace
{

struct WrittenValue
{
    const char* row;
    FUNCTION_PARAMETER_TYPE type;
    const char* expression;
    const char* shown;
};

struct WrongValue
{
    const char* row;
    FUNCTION_PARAMETER_TYPE type;
    const char* expression;
    const char* message; // behind the line
};

class UserTypeFieldWriteTest : public UserTypeFixture
{
public:
    /// Declares the field `target` for values of `type`; what is written goes to `m_written`.
    void declareTarget(FUNCTION_PARAMETER_TYPE type)
    {
        setSetter(vec(), "target", type, recorder(), "Enemy");
    }

    Setter recorder()
    {
        return [this](const Parameters& parameters) { m_written.push_back(valuesOf(parameters)); };
    }

    std::vector<std::string> m_written;

protected:
    UserTypeFieldWriteTest()
    {
        declareType("Enemy");
        setHostObject("v", m_hostObject);
    }
};

TEST_F(UserTypeFieldWriteTest, SetterGetsInstanceAndValue)
{
    std::vector<FUNCTION_PARAMETER_TYPE> types;
    void* object = nullptr;
    setSetter(
        vec(),
        "x",
        PARAM_TYPE_INT,
        [&](const Parameters& parameters)
        {
            for (const FunctionParameter& parameter : parameters)
                types.push_back(parameter.getType());
            object = parameters[0].getUserTypeObject();
            m_written.push_back(valuesOf(parameters));
        });
    run("v.x = 7");
    EXPECT_EQ(object, &m_hostObject);
    EXPECT_THAT(types, ElementsAre(PARAM_TYPE_USER_TYPE_OWNED, PARAM_TYPE_INT));
    EXPECT_THAT(m_written, ElementsAre("an object of Vec, 7"));
}

TEST_F(UserTypeFieldWriteTest, SecondSetterHasFourParametersOfWhichTwoAreFilled)
{
    setSetter(
        vec(), "x", PARAM_TYPE_INT, [](auto&) { ADD_FAILURE() << "the earlier one was called"; });
    setSetter(vec(), "x", PARAM_TYPE_DOUBLE, recorder());
    run("v.x = 7.9");
    EXPECT_THAT(m_written, ElementsAre("an object of Vec, 7, no object of Vec, 0"));
}

TEST_F(UserTypeFieldWriteTest, SetterSetAgainAfterAClearHasTwoParameters)
{
    declareTarget(PARAM_TYPE_INT);
    vec().clear();
    declareTarget(PARAM_TYPE_DOUBLE);
    run("v.target = 7");
    EXPECT_THAT(m_written, ElementsAre("an object of Vec, 7"));
}

using UserTypeWrittenValueTest = OnRows<UserTypeFieldWriteTest, WrittenValue>;

TEST_P(UserTypeWrittenValueTest, ReachesTheSetter)
{
    declareTarget(GetParam().type);
    run(std::string("v.target = ") + GetParam().expression);
    EXPECT_THAT(m_written, ElementsAre(std::string("an object of Vec, ") + GetParam().shown));
}

ROWS(
    UserTypeWrittenValueTest,
    {"BoolTrue", PARAM_TYPE_BOOL, "true", "true"},
    {"BoolOfNil", PARAM_TYPE_BOOL, "nil", "false"},
    {"BoolOfTable", PARAM_TYPE_BOOL, "{}", "true"},
    {"Int", PARAM_TYPE_INT, "-7", "-7"},
    {"IntOfFraction", PARAM_TYPE_INT, "2.9", "2"},
    {"IntOfText", PARAM_TYPE_INT, "'12'", "12"},
    {"IntBeyondItsRange", PARAM_TYPE_INT, "1e300", "2147483647"},
    {"IntOfNotANumber", PARAM_TYPE_INT, "0/0", "0"},
    {"Float", PARAM_TYPE_FLOAT, "0.5", "0.5"},
    {"Double", PARAM_TYPE_DOUBLE, "0.25", "0.25"},
    {"Text", PARAM_TYPE_STRING, "'spear'", "spear"},
    {"TextOfNumber", PARAM_TYPE_STRING, "12", "12"},
    {"Owned", PARAM_TYPE_USER_TYPE_OWNED, "Enemy.new()", "an object of Enemy"},
    {"OwnedNil", PARAM_TYPE_USER_TYPE_OWNED, "nil", "no object of Enemy"},
    {"Kept", PARAM_TYPE_USER_TYPE, "Enemy.new()", "an object of Enemy"},
    {"KeptNil", PARAM_TYPE_USER_TYPE, "nil", "no object of Enemy"},
    {"Function", PARAM_TYPE_SCRIPT_FUNCTION, "print", "function"},
    {"Table", PARAM_TYPE_SCRIPT_OBJECT, "{}", "table"});

using UserTypeWrongValueTest = OnRows<UserTypeFieldWriteTest, WrongValue>;

TEST_P(UserTypeWrongValueTest, IsAScriptErrorThatIsNotLogged)
{
    declareTarget(GetParam().type);
    raises(
        std::string("v.target = ") + GetParam().expression,
        std::string("Error l.1 while calling target. ") + GetParam().message);
    EXPECT_THAT(m_written, ElementsAre());
}

ROWS(
    UserTypeWrongValueTest,
    {"IntGivenText", PARAM_TYPE_INT, "'a'", "Expected int, got string."},
    {"IntGivenNil", PARAM_TYPE_INT, "nil", "Expected int, got nil."},
    {"IntGivenInstance", PARAM_TYPE_INT, "v", "Expected int, got userdata."},
    {"FloatGivenBool", PARAM_TYPE_FLOAT, "true", "Expected float, got boolean."},
    {"DoubleGivenTable", PARAM_TYPE_DOUBLE, "{}", "Expected double, got table."},
    {"TextGivenTable", PARAM_TYPE_STRING, "{}", "Expected string, got table."},
    {"TextGivenNil", PARAM_TYPE_STRING, "nil", "Expected string, got nil."},
    {"OwnedGivenNumber", PARAM_TYPE_USER_TYPE_OWNED, "1", "Expected Enemy, got number."},
    {"OwnedGivenOther", PARAM_TYPE_USER_TYPE_OWNED, "v", "Expected Enemy, got userdata."},
    {"KeptGivenOther", PARAM_TYPE_USER_TYPE, "v", "Expected Enemy, got userdata."},
    {"KeptGivenFile", PARAM_TYPE_USER_TYPE, "io.stdout", "Expected Enemy, got userdata."},
    {"FunctionGivenNil", PARAM_TYPE_SCRIPT_FUNCTION, "nil", "Expected lua function, got nil."},
    {"TableGivenFunction",
     PARAM_TYPE_SCRIPT_OBJECT,
     "print",
     "Expected lua object, got function."});

auto target(FUNCTION_PARAMETER_TYPE type)
{
    return [type](UserTypeFieldWriteTest& test) { test.declareTarget(type); };
}

const Facts<UserTypeFieldWriteTest> FACTS(
    "UserTypeFieldWriteTest",
    {
        {"VoidCannotBeWritten",
         {target(PARAM_TYPE_VOID),
          raises(
              "v.target = 1",
              "Error while requesting parameter for function 'target', parameter type not "
              "handled.")}},
        {"MismatchCarriesTheLineOfTheScript",
         {target(PARAM_TYPE_INT),
          stops(
              "local a = 1\n\n\nv.target = 'a'\n",
              "Error l.4 while calling target. Expected int, got string.")}},
        {"MismatchInAFunctionCarriesTheLineOfTheWrite",
         {target(PARAM_TYPE_INT),
          stops(
              "local function set(value)\n v.target = value\nend\n\nset({})\n",
              "Error l.2 while calling target. Expected int, got table.")}},
        {"MismatchInALoopThatGotHotCarriesTheLineOfTheWrite",
         {target(PARAM_TYPE_BOOL),
          setter("count"),
          stops(
              "for i = 1, 1000 do\n"
              "    v.target = i\n"
              "    v.count = i < 999 and i or 'last'\n"
              "end\n",
              "Error l.3 while calling count. Expected double, got string.")}},
        {"MismatchUnderACoroutineCarriesTheLineOfTheWrite",
         {target(PARAM_TYPE_INT),
          raises(
              "local co = coroutine.create(function()\n v.target = 'a' end)"
              "error(select(2, coroutine.resume(co)), 0)",
              "Error l.2 while calling target. Expected int, got string.")}},
        {"MismatchOfADispatcherCalledByHandCarriesTheLineOfTheCall",
         {target(PARAM_TYPE_INT),
          raises(
              "\n\nVec.__newindex(v, 'target', 'a')",
              "Error l.3 while calling target. Expected int, got string.")}},
        {"MismatchWithoutCallingScriptHasNoLine",
         {target(PARAM_TYPE_INT),
          raises(
              "local co = coroutine.create(getmetatable(v).__newindex)"
              "error(select(2, coroutine.resume(co, v, 'target', 'a')), 0)",
              "Error l.-1 while calling target. Expected int, got string.")}},
        {"MismatchLeavesTheEarlierValue",
         {field("x"),
          run("v.x = 3"),
          raises("v.x = 'a'", "Error l.1 while calling x. Expected double, got string."),
          is("v.x", "3")}},
    });

TEST_F(UserTypeFieldWriteTest, OwnedValueCanBeKeptAsAReference)
{
    ScriptObjectReference kept;
    setSetter(
        vec(),
        "target",
        PARAM_TYPE_USER_TYPE_OWNED,
        [&kept](const Parameters& parameters)
        { kept = ScriptObjectReference(parameters[1].getUserTypeView()); },
        "Enemy");
    run("enemy = Enemy.new()  v.target = enemy");
    environment().setVar("again", kept);
    is("rawequal(again, enemy)", "true");
}

TEST_F(UserTypeFieldWriteTest, SelfHasNoView)
{
    run("something = {}");
    ScriptObjectReference kept = environment().getVar("something");
    setSetter(
        vec(),
        "x",
        PARAM_TYPE_INT,
        [&kept](const Parameters& parameters)
        { kept = ScriptObjectReference(parameters[0].getUserTypeView()); });
    run("v.x = 1");
    EXPECT_EQ(kept.getType(), PARAM_TYPE_VOID);
}

TEST_F(UserTypeFieldWriteTest, UserTypeWithoutNameAcceptsEveryType)
{
    setSetter(vec(), "target", PARAM_TYPE_USER_TYPE, recorder());
    run("v.target = Enemy.new()  v.target = v  v.target = nil  v.target = Enemy.new()");
    EXPECT_THAT(
        m_written,
        ElementsAre(
            "an object of Vec, an object of Enemy",
            "an object of Vec, an object of Vec",
            "an object of Vec, no object of ",
            "an object of Vec, an object of Enemy"));
}

TEST_F(UserTypeFieldWriteTest, TextThatASetterThrowsIsAScriptErrorThatIsNotLogged)
{
    setSetter(vec(), "x", PARAM_TYPE_INT, [](auto&) { throw std::string("x is fixed"); });
    raises("v.x = 1", "x is fixed");
}

TEST_F(UserTypeFieldWriteTest, ArrayWritingIsAFieldOfItsOwnName)
{
    setWriting(vec(), PARAM_TYPE_INT, recorder());
    run("v.__arrayWrite = 5");
    EXPECT_THAT(m_written, ElementsAre("an object of Vec, 5, 0"));
}

} // namespace

} // namespace tbScripts::test

#include "support/RowName.h"
#include "support/UserTypeFixture.h"

#include <ostream>

namespace tbScripts::test
{

using ::testing::ElementsAre;

namespace
{

struct WrittenValue
{
    const char* row;
    FUNCTION_PARAMETER_TYPE type;
    const char* expression;
    const char* shown;
};

std::ostream& operator<<(std::ostream& stream, const WrittenValue& row)
{
    return stream << row.row;
}

struct WrongValue
{
    const char* row;
    FUNCTION_PARAMETER_TYPE type;
    const char* expected;
    const char* expression;
    const char* actual;
};

std::ostream& operator<<(std::ostream& stream, const WrongValue& row)
{
    return stream << row.row;
}

// All that can be read from `parameter`, for the kinds that are compared by text.
std::string show(const FunctionParameter& parameter)
{
    switch (parameter.getType())
    {
    case PARAM_TYPE_BOOL:
        return parameter.getBool() ? "true" : "false";
    case PARAM_TYPE_INT:
        return std::to_string(parameter.getInt());
    case PARAM_TYPE_FLOAT:
        return std::to_string(parameter.getFloat());
    case PARAM_TYPE_DOUBLE:
        return std::to_string(parameter.getDouble());
    case PARAM_TYPE_STRING:
        return std::string(std::string_view(parameter.getString()));
    case PARAM_TYPE_USER_TYPE_OWNED:
    case PARAM_TYPE_USER_TYPE:
        return (parameter.getUserTypeObject() ? "an object of " : "no object of ") +
               std::string(std::string_view(parameter.getUserTypeName()));
    case PARAM_TYPE_SCRIPT_FUNCTION:
        return "function";
    case PARAM_TYPE_SCRIPT_OBJECT:
        return "table";
    default:
        return "nothing";
    }
}

} // namespace

class UserTypeFieldWriteTest : public UserTypeFixture
{
protected:
    UserTypeFieldWriteTest()
    {
        declareType("Enemy");
        setHostObject("v", m_hostObject);
    }

    /// Declares the field `target` for values of `type`; what is written goes to `m_written`.
    void declareTarget(FUNCTION_PARAMETER_TYPE type)
    {
        UserTypeFieldDescriptor field;
        field.setter = [this](const Parameters& parameters)
        { m_written.push_back(show(parameters[1])); };
        field.name = "target";
        field.type = type;
        field.userTypeName = "Enemy";
        vec().setField(field);
    }

    std::vector<std::string> m_written;
};

TEST_F(UserTypeFieldWriteTest, SetterGetsInstanceAndValue)
{
    std::vector<FUNCTION_PARAMETER_TYPE> types;
    void* object = nullptr;
    UserTypeFieldDescriptor field;
    field.setter = [&](const Parameters& parameters)
    {
        for (const FunctionParameter& parameter : parameters)
            types.push_back(parameter.getType());
        object = parameters[0].getUserTypeObject();
        EXPECT_EQ(parameters[0].getUserTypeName(), "Vec");
        EXPECT_EQ(parameters[1].getInt(), 7);
    };
    field.name = "x";
    field.type = PARAM_TYPE_INT;
    vec().setField(field);

    run("v.x = 7");

    EXPECT_EQ(object, &m_hostObject);
    EXPECT_THAT(types, ElementsAre(PARAM_TYPE_USER_TYPE_OWNED, PARAM_TYPE_INT));
}

TEST_F(UserTypeFieldWriteTest, SecondSetterHasFourParametersOfWhichTwoAreFilled)
{
    UserTypeFieldDescriptor field;
    field.setter = [](const Parameters&) { ADD_FAILURE() << "the earlier setter was called"; };
    field.name = "x";
    field.type = PARAM_TYPE_INT;
    vec().setField(field);
    std::vector<std::string> values;
    field.setter = [&values](const Parameters& parameters)
    {
        for (const FunctionParameter& parameter : parameters)
            values.push_back(show(parameter));
    };
    field.type = PARAM_TYPE_DOUBLE;
    vec().setField(field);

    run("v.x = 7.9");

    EXPECT_THAT(values, ElementsAre("an object of Vec", "7", "no object of Vec", "0.000000"));
}

TEST_F(UserTypeFieldWriteTest, SetterSetAgainAfterAClearHasTwoParameters)
{
    declareTarget(PARAM_TYPE_INT);
    vec().clear();
    std::size_t size = 0;
    UserTypeFieldDescriptor field;
    field.setter = [&size](const Parameters& parameters) { size = parameters.size(); };
    field.name = "target";
    field.type = PARAM_TYPE_DOUBLE;
    vec().setField(field);

    run("v.target = 7");

    EXPECT_EQ(size, 2U);
}

class UserTypeWrittenValueTest : public UserTypeFieldWriteTest,
                                 public ::testing::WithParamInterface<WrittenValue>
{
};

TEST_P(UserTypeWrittenValueTest, ReachesTheSetter)
{
    declareTarget(GetParam().type);

    run(std::string("v.target = ") + GetParam().expression);

    EXPECT_THAT(m_written, ElementsAre(GetParam().shown));
}

INSTANTIATE_TEST_SUITE_P(
    Kinds,
    UserTypeWrittenValueTest,
    ::testing::Values(
        WrittenValue{"BoolTrue", PARAM_TYPE_BOOL, "true", "true"},
        WrittenValue{"BoolOfNil", PARAM_TYPE_BOOL, "nil", "false"},
        WrittenValue{"BoolOfTable", PARAM_TYPE_BOOL, "{}", "true"},
        WrittenValue{"Int", PARAM_TYPE_INT, "-7", "-7"},
        WrittenValue{"IntOfFraction", PARAM_TYPE_INT, "2.9", "2"},
        WrittenValue{"IntOfText", PARAM_TYPE_INT, "'12'", "12"},
        WrittenValue{"IntBeyondItsRange", PARAM_TYPE_INT, "1e300", "2147483647"},
        WrittenValue{"IntOfNotANumber", PARAM_TYPE_INT, "0/0", "0"},
        WrittenValue{"Float", PARAM_TYPE_FLOAT, "0.5", "0.500000"},
        WrittenValue{"Double", PARAM_TYPE_DOUBLE, "0.25", "0.250000"},
        WrittenValue{"Text", PARAM_TYPE_STRING, "'spear'", "spear"},
        WrittenValue{"TextOfNumber", PARAM_TYPE_STRING, "12", "12"},
        WrittenValue{"Owned", PARAM_TYPE_USER_TYPE_OWNED, "Enemy.new()", "an object of Enemy"},
        WrittenValue{"OwnedNil", PARAM_TYPE_USER_TYPE_OWNED, "nil", "no object of Enemy"},
        WrittenValue{"Kept", PARAM_TYPE_USER_TYPE, "Enemy.new()", "an object of Enemy"},
        WrittenValue{"KeptNil", PARAM_TYPE_USER_TYPE, "nil", "no object of Enemy"},
        WrittenValue{"Function", PARAM_TYPE_SCRIPT_FUNCTION, "print", "function"},
        WrittenValue{"Table", PARAM_TYPE_SCRIPT_OBJECT, "{}", "table"}),
    RowName());

class UserTypeWrongValueTest : public UserTypeFieldWriteTest,
                               public ::testing::WithParamInterface<WrongValue>
{
};

TEST_P(UserTypeWrongValueTest, IsAScriptErrorThatIsNotLogged)
{
    declareTarget(GetParam().type);

    const std::string message = errorOf(std::string("v.target = ") + GetParam().expression);

    EXPECT_EQ(
        message,
        std::string("Error l.1 while calling target. Expected ") + GetParam().expected + ", got " +
            GetParam().actual + ".");
    EXPECT_THAT(m_written, ElementsAre());
}

INSTANTIATE_TEST_SUITE_P(
    Kinds,
    UserTypeWrongValueTest,
    ::testing::Values(
        WrongValue{"IntGivenText", PARAM_TYPE_INT, "int", "'a'", "string"},
        WrongValue{"IntGivenNil", PARAM_TYPE_INT, "int", "nil", "nil"},
        WrongValue{"IntGivenInstance", PARAM_TYPE_INT, "int", "v", "userdata"},
        WrongValue{"FloatGivenBool", PARAM_TYPE_FLOAT, "float", "true", "boolean"},
        WrongValue{"DoubleGivenTable", PARAM_TYPE_DOUBLE, "double", "{}", "table"},
        WrongValue{"TextGivenTable", PARAM_TYPE_STRING, "string", "{}", "table"},
        WrongValue{"TextGivenNil", PARAM_TYPE_STRING, "string", "nil", "nil"},
        WrongValue{"OwnedGivenNumber", PARAM_TYPE_USER_TYPE_OWNED, "Enemy", "1", "number"},
        WrongValue{"OwnedGivenOther", PARAM_TYPE_USER_TYPE_OWNED, "Enemy", "v", "userdata"},
        WrongValue{"KeptGivenOther", PARAM_TYPE_USER_TYPE, "Enemy", "v", "userdata"},
        WrongValue{"KeptGivenFile", PARAM_TYPE_USER_TYPE, "Enemy", "io.stdout", "userdata"},
        WrongValue{"FunctionGivenNil", PARAM_TYPE_SCRIPT_FUNCTION, "lua function", "nil", "nil"},
        WrongValue{
            "TableGivenFunction", PARAM_TYPE_SCRIPT_OBJECT, "lua object", "print", "function"}),
    RowName());

TEST_F(UserTypeFieldWriteTest, VoidCannotBeWritten)
{
    declareTarget(PARAM_TYPE_VOID);

    const std::string message = errorOf("v.target = 1");

    EXPECT_EQ(
        message,
        "Error while requesting parameter for function 'target', parameter type not handled.");
}

TEST_F(UserTypeFieldWriteTest, MismatchCarriesTheLineOfTheScript)
{
    declareTarget(PARAM_TYPE_INT);

    const std::string message = runExpectingError("local a = 1\n\n\nv.target = 'a'\n");

    EXPECT_EQ(
        message,
        "Error while executing script 'test' : Error l.4 while calling target. Expected int, got "
        "string.");
}

TEST_F(UserTypeFieldWriteTest, MismatchInAFunctionCarriesTheLineOfTheWrite)
{
    declareTarget(PARAM_TYPE_INT);

    const std::string message =
        runExpectingError("local function set(value)\n v.target = value\nend\n\nset({})\n");

    EXPECT_EQ(
        message,
        "Error while executing script 'test' : Error l.2 while calling target. Expected int, got "
        "table.");
}

TEST_F(UserTypeFieldWriteTest, MismatchInALoopThatGotHotCarriesTheLineOfTheWrite)
{
    declareTarget(PARAM_TYPE_BOOL);
    UserTypeFieldDescriptor field;
    field.setter = [](const Parameters&) {};
    field.name = "count";
    field.type = PARAM_TYPE_INT;
    vec().setField(field);

    const std::string message = runExpectingError("for i = 1, 1000 do\n"
                                                  "    v.target = i\n"
                                                  "    v.count = i < 999 and i or 'last'\n"
                                                  "end\n");

    EXPECT_EQ(
        message,
        "Error while executing script 'test' : Error l.3 while calling count. Expected int, got "
        "string.");
}

TEST_F(UserTypeFieldWriteTest, MismatchUnderACoroutineCarriesTheLineOfTheWrite)
{
    declareTarget(PARAM_TYPE_INT);

    const std::string message =
        errorOf("local co = coroutine.create(function()\n v.target = 'a' end)"
                "error(select(2, coroutine.resume(co)), 0)");

    EXPECT_EQ(message, "Error l.2 while calling target. Expected int, got string.");
}

TEST_F(UserTypeFieldWriteTest, MismatchOfADispatcherCalledByHandCarriesTheLineOfTheCall)
{
    declareTarget(PARAM_TYPE_INT);

    const std::string message = errorOf("\n\nVec.__newindex(v, 'target', 'a')");

    EXPECT_EQ(message, "Error l.3 while calling target. Expected int, got string.");
}

TEST_F(UserTypeFieldWriteTest, MismatchWithoutCallingScriptHasNoLine)
{
    declareTarget(PARAM_TYPE_INT);

    const std::string message =
        errorOf("local co = coroutine.create(getmetatable(v).__newindex)"
                "error(select(2, coroutine.resume(co, v, 'target', 'a')), 0)");

    EXPECT_EQ(message, "Error l.-1 while calling target. Expected int, got string.");
}

TEST_F(UserTypeFieldWriteTest, MismatchLeavesTheEarlierValue)
{
    declareField("x", &Vec::x);
    run("v.x = 3");

    errorOf("v.x = 'a'");

    EXPECT_EQ(evaluate("v.x"), "3");
}

TEST_F(UserTypeFieldWriteTest, OwnedValueCanBeKeptAsAReference)
{
    ScriptObjectReference kept;
    UserTypeFieldDescriptor field;
    field.setter = [&kept](const Parameters& parameters)
    { kept = ScriptObjectReference(parameters[1].getUserTypeView()); };
    field.name = "target";
    field.type = PARAM_TYPE_USER_TYPE_OWNED;
    field.userTypeName = "Enemy";
    vec().setField(field);
    run("enemy = Enemy.new()  v.target = enemy");

    environment().setVar("again", kept);

    EXPECT_EQ(evaluate("rawequal(again, enemy)"), "true");
}

TEST_F(UserTypeFieldWriteTest, SelfHasNoView)
{
    ScriptObjectReference kept;
    UserTypeFieldDescriptor field;
    field.setter = [&kept](const Parameters& parameters)
    { kept = ScriptObjectReference(parameters[0].getUserTypeView()); };
    field.name = "x";
    field.type = PARAM_TYPE_INT;
    vec().setField(field);

    run("v.x = 1");

    EXPECT_EQ(kept.getType(), PARAM_TYPE_VOID);
}

TEST_F(UserTypeFieldWriteTest, UserTypeWithoutNameAcceptsEveryType)
{
    std::vector<std::string> names;
    UserTypeFieldDescriptor field;
    field.setter = [&names](const Parameters& parameters)
    { names.emplace_back(std::string_view(parameters[1].getUserTypeName())); };
    field.name = "target";
    field.type = PARAM_TYPE_USER_TYPE;
    vec().setField(field);

    run("v.target = Enemy.new()  v.target = v  v.target = nil  v.target = Enemy.new()");

    EXPECT_THAT(names, ElementsAre("Enemy", "Vec", "", "Enemy"));
}

TEST_F(UserTypeFieldWriteTest, TextThatASetterThrowsIsAScriptErrorThatIsNotLogged)
{
    UserTypeFieldDescriptor field;
    field.setter = [](const Parameters&) { throw std::string("x is fixed"); };
    field.name = "x";
    field.type = PARAM_TYPE_INT;
    vec().setField(field);

    EXPECT_EQ(errorOf("v.x = 1"), "x is fixed");
}

TEST_F(UserTypeFieldWriteTest, ArrayWritingIsAFieldOfItsOwnName)
{
    std::vector<std::string> values;
    UserTypeArrayDescriptor access;
    access.write = [&values](const Parameters& parameters)
    {
        for (const FunctionParameter& parameter : parameters)
            values.push_back(show(parameter));
    };
    access.type = PARAM_TYPE_INT;
    vec().setArrayAccess(access);

    run("v.__arrayWrite = 5");

    EXPECT_THAT(values, ElementsAre("an object of Vec", "5", "0"));
}

} // namespace tbScripts::test

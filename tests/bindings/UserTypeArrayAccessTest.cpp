#include "support/RowName.h"
#include "support/UserTypeFixture.h"

#include <ostream>

namespace tbScripts::test
{

using ::testing::ElementsAre;

namespace
{

struct Index
{
    const char* row;
    const char* expression;
    int index;
};

std::ostream& operator<<(std::ostream& stream, const Index& row)
{
    return stream << row.row;
}

struct WrittenElement
{
    const char* row;
    FUNCTION_PARAMETER_TYPE type;
    const char* expected;
    const char* expression;
    const char* actual;
};

std::ostream& operator<<(std::ostream& stream, const WrittenElement& row)
{
    return stream << row.row;
}

} // namespace

class UserTypeArrayAccessTest : public UserTypeFixture
{
protected:
    UserTypeArrayAccessTest() { setHostObject("v", m_hostObject); }

    /// Has `Vec` indexed; indices and values go to `m_indices` and `m_values`.
    void declareRecordingAccess()
    {
        UserTypeArrayDescriptor access;
        access.read = [this](const Parameters& parameters)
        {
            m_indices.push_back(parameters[1].getInt());
            return FunctionParameter(parameters[1].getInt());
        };
        access.write = [this](const Parameters& parameters)
        {
            m_indices.push_back(parameters[1].getInt());
            m_values.push_back(parameters[2].getInt());
        };
        access.type = PARAM_TYPE_INT;
        vec().setArrayAccess(access);
    }

    void declareReading(decltype(UserTypeArrayDescriptor::read) read)
    {
        UserTypeArrayDescriptor access;
        access.read = std::move(read);
        vec().setArrayAccess(access);
    }

    void declareWriting(FUNCTION_PARAMETER_TYPE type, Setter write)
    {
        UserTypeArrayDescriptor access;
        access.write = std::move(write);
        access.type = type;
        access.userTypeName = "Vec";
        vec().setArrayAccess(access);
    }

    std::vector<int> m_indices;
    std::vector<int> m_values;
};

class UserTypeIndexTest : public UserTypeArrayAccessTest,
                          public ::testing::WithParamInterface<Index>
{
};

TEST_P(UserTypeIndexTest, IsRead)
{
    declareRecordingAccess();

    run(std::string("local element = v[") + GetParam().expression + "]");

    EXPECT_THAT(m_indices, ElementsAre(GetParam().index));
}

TEST_P(UserTypeIndexTest, IsWritten)
{
    declareRecordingAccess();

    run(std::string("v[") + GetParam().expression + "] = 9");

    EXPECT_THAT(m_indices, ElementsAre(GetParam().index));
    EXPECT_THAT(m_values, ElementsAre(9));
}

INSTANTIATE_TEST_SUITE_P(
    Numbers,
    UserTypeIndexTest,
    ::testing::Values(
        Index{"Whole", "3", 3},
        Index{"Zero", "0", 0},
        Index{"Text", "'3'", 3},
        Index{"TextOfFraction", "'2.9'", 2},
        Index{"HexadecimalText", "'0x10'", 16},
        Index{"Fraction", "2.9", 2},
        Index{"Negative", "-1", -1},
        Index{"NegativeFraction", "-2.9", -2},
        Index{"Highest", "2147483647", 2147483647},
        Index{"BeyondTheHighest", "2147483648", -2147483647 - 1},
        Index{"LowBitsOfMore", "4294967297", 1},
        Index{"Huge", "1e300", 0},
        Index{"Infinite", "1/0", 0},
        Index{"NotANumber", "0/0", 0}),
    RowName());

TEST_F(UserTypeArrayAccessTest, ReadingGetsInstanceAndIndex)
{
    std::vector<FUNCTION_PARAMETER_TYPE> types;
    void* object = nullptr;
    declareReading(
        [&](const Parameters& parameters)
        {
            for (const FunctionParameter& parameter : parameters)
                types.push_back(parameter.getType());
            object = parameters[0].getUserTypeObject();
            return FunctionParameter(parameters[0].getUserTypeName());
        });

    EXPECT_EQ(evaluate("v[1]"), "Vec");
    EXPECT_EQ(object, &m_hostObject);
    EXPECT_THAT(types, ElementsAre(PARAM_TYPE_USER_TYPE, PARAM_TYPE_INT));
}

TEST_F(UserTypeArrayAccessTest, WritingGetsInstanceIndexAndValue)
{
    std::vector<FUNCTION_PARAMETER_TYPE> types;
    void* object = nullptr;
    declareWriting(
        PARAM_TYPE_STRING,
        [&](const Parameters& parameters)
        {
            for (const FunctionParameter& parameter : parameters)
                types.push_back(parameter.getType());
            object = parameters[0].getUserTypeObject();
        });

    run("v[1] = 'a'");

    EXPECT_EQ(object, &m_hostObject);
    EXPECT_THAT(types, ElementsAre(PARAM_TYPE_USER_TYPE_OWNED, PARAM_TYPE_INT, PARAM_TYPE_STRING));
}

TEST_F(UserTypeArrayAccessTest, UnboundElementReadsAsNil)
{
    EXPECT_EQ(evaluate("v[1]"), "nil");
    EXPECT_EQ(evaluate("select('#', Vec.__index(v, 1))"), "0");
}

TEST_F(UserTypeArrayAccessTest, UnboundElementCanBeWrittenWithoutEffect)
{
    run("v[1] = 7");

    EXPECT_EQ(evaluate("v[1]"), "nil");
    EXPECT_EQ(evaluate("rawget(Vec, 1)"), "nil");
}

TEST_F(UserTypeArrayAccessTest, ReadingAloneLeavesWritingWithoutEffect)
{
    declareReading([](const Parameters&) { return FunctionParameter(7); });

    run("v[1] = 8");

    EXPECT_EQ(evaluate("v[1]"), "7");
}

TEST_F(UserTypeArrayAccessTest, WritingAloneLeavesElementsNil)
{
    int calls = 0;
    declareWriting(PARAM_TYPE_INT, [&calls](const Parameters&) { ++calls; });

    run("v[1] = 8");

    EXPECT_EQ(calls, 1);
    EXPECT_EQ(evaluate("v[1]"), "nil");
}

TEST_F(UserTypeArrayAccessTest, NumberKeysOfTheTypeItselfAreNotReached)
{
    declareRecordingAccess();

    run("Vec[1] = 'mine'");

    EXPECT_EQ(evaluate("v[1]"), "1");
    EXPECT_EQ(evaluate("Vec[1]"), "mine");
}

TEST_F(UserTypeArrayAccessTest, ReadingIsAMethod)
{
    declareRecordingAccess();

    ASSERT_NE(vec().getMethod("__arrayRead"), nullptr);
    EXPECT_EQ(vec().getMethod("__arrayRead")->getName(), "__arrayRead");
    EXPECT_EQ(evaluate("Vec.__arrayRead(v, 5)"), "5");
}

TEST_F(UserTypeArrayAccessTest, WritingIsNoMethod)
{
    declareRecordingAccess();

    EXPECT_EQ(vec().getMethod("__arrayWrite"), nullptr);
}

TEST_F(UserTypeArrayAccessTest, ReadingSetAgainWarnsAndReplaces)
{
    declareReading([](const Parameters&) { return FunctionParameter(1); });

    declareReading([](const Parameters& parameters)
                   { return FunctionParameter(static_cast<int>(parameters.size())); });

    EXPECT_EQ(evaluate("v[1]"), "2");
    EXPECT_THAT(
        m_log.takeEntries(),
        ElementsAre(LogEntry{
            "Setting method '__arrayRead' on user type 'Vec', but this method is already "
            "registered. State will be changed, but this might hold unexpected results",
            "LuaUserType"}));
}

TEST_F(UserTypeArrayAccessTest, WritingSetAgainHasSixParametersOfWhichThreeAreFilled)
{
    declareWriting(PARAM_TYPE_INT, [](const Parameters&) {});
    std::vector<int> ints;
    declareWriting(
        PARAM_TYPE_INT,
        [&ints](const Parameters& parameters)
        {
            for (const FunctionParameter& parameter : parameters)
                ints.push_back(parameter.getInt());
        });

    run("v[4] = 8");

    EXPECT_THAT(ints, ElementsAre(0, 4, 8, 0, 0, 0));
}

class UserTypeElementMismatchTest : public UserTypeArrayAccessTest,
                                    public ::testing::WithParamInterface<WrittenElement>
{
};

TEST_P(UserTypeElementMismatchTest, IsAScriptErrorThatIsNotLogged)
{
    declareWriting(
        GetParam().type, [](const Parameters&) { ADD_FAILURE() << "the callable was called"; });

    const std::string message = errorOf(std::string("v[1] = ") + GetParam().expression);

    EXPECT_EQ(
        message,
        std::string("Error l.1 while calling Vec. Expected ") + GetParam().expected + ", got " +
            GetParam().actual + ".");
}

INSTANTIATE_TEST_SUITE_P(
    Kinds,
    UserTypeElementMismatchTest,
    ::testing::Values(
        WrittenElement{"Int", PARAM_TYPE_INT, "int", "'a'", "string"},
        WrittenElement{"Float", PARAM_TYPE_FLOAT, "float", "nil", "nil"},
        WrittenElement{"Double", PARAM_TYPE_DOUBLE, "double", "{}", "table"},
        WrittenElement{"Text", PARAM_TYPE_STRING, "string", "true", "boolean"},
        WrittenElement{"Owned", PARAM_TYPE_USER_TYPE_OWNED, "Vec", "1", "number"},
        WrittenElement{"Kept", PARAM_TYPE_USER_TYPE, "Vec", "io.stdout", "userdata"},
        WrittenElement{"Function", PARAM_TYPE_SCRIPT_FUNCTION, "lua function", "{}", "table"},
        WrittenElement{"Table", PARAM_TYPE_SCRIPT_OBJECT, "lua object", "print", "function"}),
    RowName());

TEST_F(UserTypeArrayAccessTest, MismatchNamesTheFullTypeAndTheLine)
{
    UserType& type = declareType("math::Vec");
    UserTypeArrayDescriptor access;
    access.write = [](const Parameters&) {};
    access.type = PARAM_TYPE_INT;
    type.setArrayAccess(access);

    const std::string message = runExpectingError("local v = math.Vec.new()\n\nv[1] = 'a'");

    EXPECT_EQ(
        message,
        "Error while executing script 'test' : Error l.3 while calling math::Vec. Expected int, "
        "got string.");
}

TEST_F(UserTypeArrayAccessTest, MissingValueIsAMismatch)
{
    declareRecordingAccess();

    EXPECT_EQ(
        errorOf("Vec.__newindex(v, 1) local x"),
        "Error l.1 while calling Vec. Expected int, got nil.");
}

TEST_F(UserTypeArrayAccessTest, VoidCannotBeWritten)
{
    declareWriting(PARAM_TYPE_VOID, [](const Parameters&) {});

    EXPECT_EQ(
        errorOf("v[1] = 1"),
        "Error while requesting parameter for function 'Vec', parameter type not handled.");
}

TEST_F(UserTypeArrayAccessTest, VoidOfReadingIsNoResult)
{
    declareReading([](const Parameters&) { return FunctionParameter::VOID; });

    EXPECT_EQ(evaluate("select('#', Vec.__index(v, 1))"), "0");
}

TEST_F(UserTypeArrayAccessTest, ValueOfNoKindIsLoggedWithTheTypeName)
{
    declareReading(
        [](const Parameters&)
        { return FunctionParameter::ofType(static_cast<FUNCTION_PARAMETER_TYPE>(200)); });

    EXPECT_EQ(evaluate("v[1]"), "nil");
    EXPECT_THAT(
        m_log.takeEntries(),
        ElementsAre(LogEntry{
            "Error while filling output for function 'Vec', parameter type not handled.",
            "LuaFunction"}));
}

TEST_F(UserTypeArrayAccessTest, TextThatReadingThrowsIsAScriptErrorThatIsNotLogged)
{
    declareReading(
        [](const Parameters&) -> FunctionParameter { throw std::string("no such element"); });

    EXPECT_EQ(errorOf("local element = v[1]"), "no such element");
}

TEST_F(UserTypeArrayAccessTest, TextThatWritingThrowsIsAScriptErrorThatIsNotLogged)
{
    declareWriting(PARAM_TYPE_INT, [](const Parameters&) { throw std::string("read only"); });

    EXPECT_EQ(errorOf("v[1] = 1"), "read only");
}

TEST_F(UserTypeArrayAccessTest, ReadingWhoseParametersWereResetIsAScriptError)
{
    declareRecordingAccess();

    vec().getMethod("__arrayRead")->reset();

    EXPECT_EQ(
        errorOf("local element = v[1]"),
        "Array access of user type 'Vec' is not declared with an instance and an index.");
    EXPECT_THAT(m_indices, ElementsAre());
}

TEST_F(UserTypeArrayAccessTest, ReadingWithoutIndexParameterIsAScriptError)
{
    vec().setMethod("__arrayRead", false)->setFunction([](const Parameters&) { return 1; });

    EXPECT_EQ(
        errorOf("local element = v[1]"),
        "Array access of user type 'Vec' is not declared with an instance and an index.");
}

TEST_F(UserTypeArrayAccessTest, ReadingWithAnIndexThatIsNoIntIsAScriptError)
{
    Function* const read = vec().setMethod("__arrayRead", false);
    read->addParameter(PARAM_TYPE_DOUBLE);
    read->setFunction([](const Parameters&) { return 1; });

    EXPECT_EQ(
        errorOf("local element = v[1]"),
        "Array access of user type 'Vec' is not declared with an instance and an index.");
}

TEST_F(UserTypeArrayAccessTest, ReadingWithoutInstanceParameterIsAScriptError)
{
    Function* const read = vec().setStaticMethod("__arrayRead");
    read->addParameter(PARAM_TYPE_INT);
    read->addParameter(PARAM_TYPE_INT);
    read->setFunction([](const Parameters&) { return 1; });

    EXPECT_EQ(
        errorOf("local element = v[1]"),
        "Array access of user type 'Vec' is not declared with an instance and an index.");
}

TEST_F(UserTypeArrayAccessTest, ReadingDeclaredAsAMethodByHandWorks)
{
    Function* const read = vec().setMethod("__arrayRead", true);
    read->addParameter(PARAM_TYPE_INT);
    read->addParameter(PARAM_TYPE_STRING); // stays empty
    read->setFunction([](const Parameters& parameters)
                      { return parameters[1].getInt() + static_cast<int>(parameters.size()); });

    EXPECT_EQ(evaluate("v[10]"), "13");
}

TEST_F(UserTypeArrayAccessTest, WritingBehindAFieldOfItsNameIsAScriptError)
{
    UserTypeFieldDescriptor field;
    field.setter = [](const Parameters&) {};
    field.name = "__arrayWrite";
    field.type = PARAM_TYPE_STRING;
    vec().setField(field);

    declareWriting(PARAM_TYPE_INT, [](const Parameters&) { ADD_FAILURE() << "it was called"; });

    EXPECT_EQ(
        errorOf("v[1] = 1"),
        "Array access of user type 'Vec' is not declared with an instance and an index.");
}

TEST_F(UserTypeArrayAccessTest, ReadingDoesNotNeedItsEntryInTheTable)
{
    declareRecordingAccess();

    run("Vec.__arrayRead = nil");

    EXPECT_EQ(evaluate("v[5]"), "5");
}

TEST_F(UserTypeArrayAccessTest, InstancesMadeBeforeHaveIt)
{
    run("old = Vec.new() local nothing = old[1]");

    declareRecordingAccess();

    EXPECT_EQ(evaluate("old[5]"), "5");
}

} // namespace tbScripts::test

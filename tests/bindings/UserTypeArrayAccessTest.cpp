#include "support/RowName.h"
#include "support/UserTypeSteps.h"

namespace tbScripts::test
{

namespace
{

struct Index
{
    const char* row;
    const char* expression;
    int index;
};

struct WrittenElement
{
    const char* row;
    FUNCTION_PARAMETER_TYPE type;
    const char* expression;
    const char* message; // behind the line
};

const char* const NOT_DECLARED =
    "Array access of user type 'Vec' is not declared with an instance and an index.";

class UserTypeArrayAccessTest : public UserTypeFixture
{
public:
    /// Has `Vec` indexed; indices and values go to `m_indices` and `m_values`. Reading gives the
    /// index.
    void declareRecordingAccess()
    {
        UserTypeArrayDescriptor access;
        access.read = [this](const Parameters& parameters)
        { return m_indices.emplace_back(parameters[1].getInt()); };
        access.write = [this](const Parameters& parameters)
        {
            m_indices.push_back(parameters[1].getInt());
            m_values.push_back(parameters[2].getInt());
        };
        access.type = PARAM_TYPE_INT;
        vec().setArrayAccess(access);
    }

    std::vector<int> m_indices;
    std::vector<int> m_values;

protected:
    UserTypeArrayAccessTest() { setHostObject("v", m_hostObject); }

    // Returns what can be called for elements: it notes the kinds of parameters and the object.
    auto noting()
    {
        return [this](const Parameters& parameters)
        {
            for (const FunctionParameter& parameter : parameters)
                m_types.push_back(parameter.getType());
            m_object = parameters[0].getUserTypeObject();
            return FunctionParameter(parameters[0].getUserTypeName());
        };
    }

    std::vector<FUNCTION_PARAMETER_TYPE> m_types;
    void* m_object = nullptr;
};

using UserTypeIndexTest = OnRows<UserTypeArrayAccessTest, Index>;

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

ROWS(
    UserTypeIndexTest,
    {"Whole", "3", 3},
    {"Zero", "0", 0},
    {"Text", "'3'", 3},
    {"TextOfFraction", "'2.9'", 2},
    {"HexadecimalText", "'0x10'", 16},
    {"Fraction", "2.9", 2},
    {"Negative", "-1", -1},
    {"NegativeFraction", "-2.9", -2},
    {"Highest", "2147483647", 2147483647},
    {"BeyondTheHighest", "2147483648", -2147483647 - 1},
    {"LowBitsOfMore", "4294967297", 1},
    {"Huge", "1e300", 0},
    {"Infinite", "1/0", 0},
    {"NotANumber", "0/0", 0});

TEST_F(UserTypeArrayAccessTest, ReadingGetsInstanceAndIndex)
{
    setReading(vec(), noting());
    is("v[1]", "Vec");
    EXPECT_EQ(m_object, &m_hostObject);
    EXPECT_THAT(m_types, ElementsAre(PARAM_TYPE_USER_TYPE, PARAM_TYPE_INT));
}

TEST_F(UserTypeArrayAccessTest, WritingGetsInstanceIndexAndValue)
{
    setWriting(vec(), PARAM_TYPE_STRING, noting());
    run("v[1] = 'a'");
    EXPECT_EQ(m_object, &m_hostObject);
    EXPECT_THAT(
        m_types, ElementsAre(PARAM_TYPE_USER_TYPE_OWNED, PARAM_TYPE_INT, PARAM_TYPE_STRING));
}

TEST_F(UserTypeArrayAccessTest, WritingAloneLeavesElementsNil)
{
    int calls = 0;
    setWriting(vec(), PARAM_TYPE_INT, [&calls](auto&) { ++calls; });
    run("v[1] = 8");
    EXPECT_EQ(calls, 1);
    is("v[1]", "nil");
}

TEST_F(UserTypeArrayAccessTest, ReadingIsAMethod)
{
    declareRecordingAccess();
    ASSERT_NE(vec().getMethod("__arrayRead"), nullptr);
    EXPECT_EQ(vec().getMethod("__arrayRead")->getName(), "__arrayRead");
    is("Vec.__arrayRead(v, 5)", "5");
}

TEST_F(UserTypeArrayAccessTest, WritingIsNoMethod)
{
    declareRecordingAccess();
    EXPECT_EQ(vec().getMethod("__arrayWrite"), nullptr);
}

TEST_F(UserTypeArrayAccessTest, ReadingSetAgainWarnsAndReplaces)
{
    setReading(vec(), returning(1));
    setReading(
        vec(), [](const Parameters& parameters) { return static_cast<int>(parameters.size()); });
    is("v[1]", "2");
    expectLogged(
        "Setting method '__arrayRead' on user type 'Vec', but this method is already "
        "registered. State will be changed, but this might hold unexpected results",
        "LuaUserType");
}

TEST_F(UserTypeArrayAccessTest, WritingSetAgainHasSixParametersOfWhichThreeAreFilled)
{
    setWriting(vec(), PARAM_TYPE_INT, [](auto&) {});
    std::string values;
    setWriting(vec(), PARAM_TYPE_INT, [&](auto& parameters) { values = valuesOf(parameters); });
    run("v[4] = 8");
    EXPECT_EQ(values, "an object of Vec, 4, 8, no object of Vec, 0, 0");
}

using UserTypeElementMismatchTest = OnRows<UserTypeArrayAccessTest, WrittenElement>;

TEST_P(UserTypeElementMismatchTest, IsAScriptErrorThatIsNotLogged)
{
    setWriting(vec(), GetParam().type, uncallable(), "Vec");
    raises(
        std::string("v[1] = ") + GetParam().expression,
        std::string("Error l.1 while calling Vec. ") + GetParam().message);
}

ROWS(
    UserTypeElementMismatchTest,
    {"Int", PARAM_TYPE_INT, "'a'", "Expected int, got string."},
    {"Float", PARAM_TYPE_FLOAT, "nil", "Expected float, got nil."},
    {"Double", PARAM_TYPE_DOUBLE, "{}", "Expected double, got table."},
    {"Text", PARAM_TYPE_STRING, "true", "Expected string, got boolean."},
    {"Owned", PARAM_TYPE_USER_TYPE_OWNED, "1", "Expected Vec, got number."},
    {"Kept", PARAM_TYPE_USER_TYPE, "io.stdout", "Expected Vec, got userdata."},
    {"Function", PARAM_TYPE_SCRIPT_FUNCTION, "{}", "Expected lua function, got table."},
    {"Table", PARAM_TYPE_SCRIPT_OBJECT, "print", "Expected lua object, got function."});

auto recordingAccess()
{
    return [](UserTypeArrayAccessTest& test) { test.declareRecordingAccess(); };
}

TypeStep reading(const decltype(UserTypeArrayDescriptor::read)& read)
{
    return [=](UserTypeFixture& test) { setReading(test.vec(), read); };
}

TypeStep writing(FUNCTION_PARAMETER_TYPE type, const Setter& write)
{
    return [=](UserTypeFixture& test) { setWriting(test.vec(), type, write); };
}

// Declares a method called as reading is, with a parameter for the instance of kind `self` (none
// for VOID) and further ones of these kinds.
TypeStep readingByHand(FUNCTION_PARAMETER_TYPE self, std::vector<FUNCTION_PARAMETER_TYPE> types)
{
    return [=](UserTypeFixture& test)
    {
        Function* const read =
            self == PARAM_TYPE_VOID
                ? test.vec().setStaticMethod("__arrayRead")
                : test.vec().setMethod("__arrayRead", self == PARAM_TYPE_USER_TYPE_OWNED);
        for (const FUNCTION_PARAMETER_TYPE type : types)
            read->addParameter(type);
        read->setFunction([](const Parameters& parameters)
                          { return parameters[1].getInt() + static_cast<int>(parameters.size()); });
    };
}

const Facts<UserTypeArrayAccessTest> FACTS(
    "UserTypeArrayAccessTest",
    {
        {"UnboundElementReadsAsNil",
         {is("v[1]", "nil"), is("select('#', Vec.__index(v, 1))", "0")}},
        {"UnboundElementCanBeWrittenWithoutEffect",
         {run("v[1] = 7"), is("v[1]", "nil"), is("rawget(Vec, 1)", "nil")}},
        {"ReadingAloneLeavesWritingWithoutEffect",
         {reading(returning(7)), run("v[1] = 8"), is("v[1]", "7")}},
        {"NumberKeysOfTheTypeItselfAreNotReached",
         {recordingAccess(), run("Vec[1] = 'mine'"), is("v[1]", "1"), is("Vec[1]", "mine")}},
        {"MismatchNamesTheFullTypeAndTheLine",
         {type("math::Vec"),
          [](auto& test)
          {
              UserType& type = *test.environment().getUserType("math::Vec");
              setWriting(type, PARAM_TYPE_INT, [](auto&) {});
          },
          stops(
              "local v = math.Vec.new()\n\nv[1] = 'a'",
              "Error l.3 while calling math::Vec. Expected int, got string.")}},
        {"MissingValueIsAMismatch",
         {recordingAccess(),
          raises(
              "Vec.__newindex(v, 1) local x",
              "Error l.1 while calling Vec. Expected int, got nil.")}},
        {"VoidCannotBeWritten",
         {writing(PARAM_TYPE_VOID, [](auto&) {}),
          raises(
              "v[1] = 1",
              "Error while requesting parameter for function 'Vec', parameter type not "
              "handled.")}},
        {"VoidOfReadingIsNoResult",
         {reading(returning(FunctionParameter::VOID)), is("select('#', Vec.__index(v, 1))", "0")}},
        {"ValueOfNoKindIsLoggedWithTheTypeName",
         {reading(returning(FunctionParameter::ofType(static_cast<FUNCTION_PARAMETER_TYPE>(200)))),
          is("v[1]", "nil"),
          logs(
              "Error while filling output for function 'Vec', parameter type not handled.",
              "LuaFunction")}},
        {"TextThatReadingThrowsIsAScriptErrorThatIsNotLogged",
         {reading([](auto&) -> FunctionParameter { throw std::string("no such element"); }),
          raises("local element = v[1]", "no such element")}},
        {"TextThatWritingThrowsIsAScriptErrorThatIsNotLogged",
         {writing(PARAM_TYPE_INT, [](auto&) { throw std::string("read only"); }),
          raises("v[1] = 1", "read only")}},
        {"ReadingWhoseParametersWereResetIsAScriptError",
         {recordingAccess(),
          [](auto& test) { test.vec().getMethod("__arrayRead")->reset(); },
          raises("local element = v[1]", NOT_DECLARED),
          [](auto& test) { EXPECT_THAT(test.m_indices, ElementsAre()); }}},
        {"ReadingWithoutIndexParameterIsAScriptError",
         {readingByHand(PARAM_TYPE_USER_TYPE, {}), raises("local element = v[1]", NOT_DECLARED)}},
        {"ReadingWithAnIndexThatIsNoIntIsAScriptError",
         {readingByHand(PARAM_TYPE_USER_TYPE, {PARAM_TYPE_DOUBLE}),
          raises("local x = v[1]", NOT_DECLARED)}},
        {"ReadingWithoutInstanceParameterIsAScriptError",
         {readingByHand(PARAM_TYPE_VOID, {PARAM_TYPE_INT, PARAM_TYPE_INT}),
          raises("local element = v[1]", NOT_DECLARED)}},
        {"ReadingDeclaredAsAMethodByHandWorks", // the text stays empty
         {readingByHand(PARAM_TYPE_USER_TYPE_OWNED, {PARAM_TYPE_INT, PARAM_TYPE_STRING}),
          is("v[10]", "13")}},
        {"WritingBehindAFieldOfItsNameIsAScriptError",
         {[](auto& test)
          { setSetter(test.vec(), "__arrayWrite", PARAM_TYPE_STRING, [](auto&) {}); },
          writing(PARAM_TYPE_INT, uncallable()),
          raises("v[1] = 1", NOT_DECLARED)}},
        {"ReadingDoesNotNeedItsEntryInTheTable",
         {recordingAccess(), run("Vec.__arrayRead = nil"), is("v[5]", "5")}},
        {"InstancesMadeBeforeHaveIt",
         {run("old = Vec.new() local nothing = old[1]"), recordingAccess(), is("old[5]", "5")}},
    });

} // namespace

} // namespace tbScripts::test

#include "support/RowName.h"
#include "support/UserTypeSteps.h"

#include <tuple>

namespace tbScripts::test
{

namespace
{

struct Operator
{
    const char* row;
    BUILT_IN_FUNCTION number;
    const char* name;
    const char* expression; // of `a`, and of `b` if it has two operands
    bool isBinary;
    FunctionParameter result;
    const char* shown; // the result, as a script sees it
};

struct WrongOperand
{
    const char* row;
    const char* left;
    const char* right;
    const char* actual;
};

const Operator TOSTRING{
    "ToString", BUILT_IN_FUNCTION::TOSTRING, "__tostring", "tostring(a)", false, "text", "text"};
const Operator UNM{"Minus", BUILT_IN_FUNCTION::UNM, "__unm", "-a", false, -7, "-7"};
const Operator ADD{"Add", BUILT_IN_FUNCTION::ADD, "__add", "a + b", true, 1, "1"};
const Operator SUB{"Sub", BUILT_IN_FUNCTION::SUB, "__sub", "a - b", true, 2, "2"};
const Operator MUL{"Mul", BUILT_IN_FUNCTION::MUL, "__mul", "a * b", true, 3, "3"};
const Operator DIV{"Div", BUILT_IN_FUNCTION::DIV, "__div", "a / b", true, 4, "4"};
const Operator MOD{"Mod", BUILT_IN_FUNCTION::MOD, "__mod", "a % b", true, 5, "5"};
const Operator POW{"Pow", BUILT_IN_FUNCTION::POW, "__pow", "a ^ b", true, 6, "6"};
const Operator CONCAT{"Concat", BUILT_IN_FUNCTION::CONCAT, "__concat", "a .. b", true, "c", "c"};
const Operator EQ{"Equal", BUILT_IN_FUNCTION::EQ, "__eq", "a == b", true, true, "true"};
const Operator LT{"Less", BUILT_IN_FUNCTION::LT, "__lt", "a < b", true, true, "true"};
const Operator LE{"LessOrEqual", BUILT_IN_FUNCTION::LE, "__le", "a <= b", true, true, "true"};

const auto ALL_OPERATORS =
    ::testing::Values(TOSTRING, UNM, ADD, SUB, MUL, DIV, MOD, POW, CONCAT, EQ, LT, LE);

// Those that the interpreter asks for whatever the other operand is.
const auto MIXED_OPERATORS = ::testing::Values(ADD, SUB, MUL, DIV, MOD, POW, CONCAT);

std::string replaced(std::string text, const std::string& name, const std::string& by)
{
    return text.replace(text.find(name), name.size(), by);
}

TEST(BuiltInFunctionTest, NumbersAreFixed)
{
    EXPECT_EQ(static_cast<int>(BUILT_IN_FUNCTION::TOSTRING), 0);
    EXPECT_EQ(static_cast<int>(BUILT_IN_FUNCTION::UNM), 1);
    EXPECT_EQ(static_cast<int>(BUILT_IN_FUNCTION::ADD), 2);
    EXPECT_EQ(static_cast<int>(BUILT_IN_FUNCTION::SUB), 3);
    EXPECT_EQ(static_cast<int>(BUILT_IN_FUNCTION::MUL), 4);
    EXPECT_EQ(static_cast<int>(BUILT_IN_FUNCTION::DIV), 5);
    EXPECT_EQ(static_cast<int>(BUILT_IN_FUNCTION::MOD), 6);
    EXPECT_EQ(static_cast<int>(BUILT_IN_FUNCTION::POW), 7);
    EXPECT_EQ(static_cast<int>(BUILT_IN_FUNCTION::CONCAT), 8);
    EXPECT_EQ(static_cast<int>(BUILT_IN_FUNCTION::EQ), 9);
    EXPECT_EQ(static_cast<int>(BUILT_IN_FUNCTION::LT), 10);
    EXPECT_EQ(static_cast<int>(BUILT_IN_FUNCTION::LE), 11);
    EXPECT_EQ(sizeof(BUILT_IN_FUNCTION), 4U);
}

class UserTypeOperatorsTest : public UserTypeFixture
{
public:
    /// Declares an operator that records its operands.
    Function* declareOperator(BUILT_IN_FUNCTION number, const FunctionParameter& result)
    {
        Function* const function = vec().setOperator(number);
        function->setFunction(
            [this, result](const Parameters& parameters)
            {
                for (const FunctionParameter& parameter : parameters)
                {
                    m_operands.push_back(parameter.getUserTypeObject());
                    m_types.push_back(parameter.getType());
                    EXPECT_EQ(parameter.getUserTypeName(), "Vec");
                }
                return result;
            });
        return function;
    }

    Vec m_other;
    std::vector<void*> m_operands;
    std::vector<FUNCTION_PARAMETER_TYPE> m_types;

protected:
    UserTypeOperatorsTest()
    {
        setHostObject("a", m_hostObject);
        setHostObject("b", m_other);
    }
};

using UserTypeOperatorTest = OnRows<UserTypeOperatorsTest, Operator>;

TEST_P(UserTypeOperatorTest, IsAMethodOfItsName)
{
    Function* const function = vec().setOperator(GetParam().number);

    ASSERT_NE(function, nullptr);
    EXPECT_EQ(function->getName(), GetParam().name);
    EXPECT_EQ(vec().getMethod(GetParam().name), function);
    is(std::string("type(rawget(Vec, '") + GetParam().name + "'))", "function");
}

TEST_P(UserTypeOperatorTest, GetsItsOperandsAndGivesItsResult)
{
    std::vector<void*> operands{&m_hostObject, &m_other};
    std::vector<FUNCTION_PARAMETER_TYPE> types{PARAM_TYPE_USER_TYPE, PARAM_TYPE_USER_TYPE_OWNED};
    operands.resize(GetParam().isBinary ? 2 : 1);
    types.resize(operands.size());

    declareOperator(GetParam().number, GetParam().result);

    is(GetParam().expression, GetParam().shown);
    EXPECT_EQ(m_operands, operands);
    EXPECT_EQ(m_types, types);
}

TEST_P(UserTypeOperatorTest, SetTwiceWarnsAndHasTheSameParameters)
{
    Function* const first = declareOperator(GetParam().number, 1);
    Function* const second = declareOperator(GetParam().number, GetParam().result);

    EXPECT_EQ(second, first);
    expectLogged(
        std::string("Setting method '") + GetParam().name +
            "' on user type 'Vec', but this method is already registered. State will be changed, "
            "but this might hold unexpected results",
        "LuaUserType");
    is(GetParam().expression, GetParam().shown);
}

TEST_P(UserTypeOperatorTest, IsGoneAfterAClear)
{
    declareOperator(GetParam().number, GetParam().result);
    vec().clear();
    EXPECT_EQ(vec().getMethod(GetParam().name), nullptr);
    is(std::string("rawget(Vec, '") + GetParam().name + "')", "nil");
}

INSTANTIATE_TEST_SUITE_P(All, UserTypeOperatorTest, ALL_OPERATORS, RowName());

using UserTypeOperatorMismatchTest =
    OnValues<UserTypeOperatorsTest, std::tuple<Operator, WrongOperand>>;

TEST_P(UserTypeOperatorMismatchTest, IsLoggedAndNamesTheOperator)
{
    const auto& [op, operand] = GetParam();
    declareType("Enemy");
    run("enemy = Enemy.new()");
    declareOperator(op.number, op.result);
    const std::string expected = std::string("Error l.1 while calling ") + op.name +
                                 ". Expected Vec, got " + operand.actual + ".";

    raises(
        "local value = " + replaced(replaced(op.expression, "a", operand.left), "b", operand.right),
        expected);

    expectLogged(expected, "LuaFunction");
    EXPECT_THAT(m_operands, IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    Operands,
    UserTypeOperatorMismatchTest,
    ::testing::Combine(
        MIXED_OPERATORS,
        ::testing::Values(
            WrongOperand{"NumberRight", "a", "1", "number"},
            WrongOperand{"NumberLeft", "1", "b", "number"},
            WrongOperand{"TextRight", "a", "'t'", "string"},
            WrongOperand{"TableLeft", "{}", "b", "table"},
            WrongOperand{"OtherTypeRight", "a", "enemy", "userdata"},
            WrongOperand{"OtherTypeLeft", "enemy", "b", "userdata"})),
    [](const auto& row)
    { return std::string(std::get<0>(row.param).row) + std::get<1>(row.param).row; });

using UserTypeOperatorNilTest = OnRows<UserTypeOperatorsTest, Operator>;

TEST_P(UserTypeOperatorNilTest, IsANullObjectOnEitherSide)
{
    declareOperator(GetParam().number, GetParam().result);
    run("local value = " + replaced(GetParam().expression, "b", "nil"));
    EXPECT_THAT(m_operands, ElementsAre(&m_hostObject, nullptr));
    m_operands.clear();
    run("local value = " + replaced(GetParam().expression, "a", "nil"));
    EXPECT_THAT(m_operands, ElementsAre(nullptr, &m_other));
}

INSTANTIATE_TEST_SUITE_P(Mixed, UserTypeOperatorNilTest, MIXED_OPERATORS, RowName());

TEST_F(UserTypeOperatorsTest, SumIsAnObjectThatTheScriptOwns)
{
    declareField("x", &Vec::x);
    vec()
        .setOperator(BUILT_IN_FUNCTION::ADD)
        ->setFunction(
            [this](const Parameters& parameters)
            {
                const Vec sum{vecOf(parameters[0]).x + vecOf(parameters[1]).x, 0.0};
                return FunctionParameter(&m_made.emplace_back(sum), "Vec", true);
            });

    run("a.x = 3  b.x = 4  sum = a + b + b");

    is("sum.x", "11");
    run("sum = nil");
    collect();
    EXPECT_THAT(m_destroyed, ::testing::UnorderedElementsAre(&m_made[0], &m_made[1]));
}

TEST_F(UserTypeOperatorsTest, ReturnedRightOperandThatTheScriptOwnsIsTheSameValue)
{
    vec()
        .setOperator(BUILT_IN_FUNCTION::ADD)
        ->setFunction([](const Parameters& parameters) { return parameters[1]; });
    run("owned = Vec.new()");
    is("rawequal(a + owned, owned)", "true");
}

auto op(BUILT_IN_FUNCTION number, bool result)
{
    return [=](UserTypeOperatorsTest& test) { test.declareOperator(number, result); };
}

const Facts<UserTypeOperatorsTest> FACTS(
    "UserTypeOperatorsTest",
    {
        {"ComparisonWithNumbersIsLeftToTheInterpreter",
         {op(BUILT_IN_FUNCTION::LT, true),
          op(BUILT_IN_FUNCTION::EQ, true),
          raises(
              "return a < 1",
              "[string \"isDone, message = pcall(function() return a <...\"]:1: attempt to compare "
              "userdata with number"),
          is("a == 1", "false"),
          is("a ~= b", "false"),
          is("a == nil", "false")}},
        {"ComparisonOfAValueWithItselfAsksNobody",
         {op(BUILT_IN_FUNCTION::EQ, false),
          is("a == a", "true"),
          [](auto& test) { EXPECT_THAT(test.m_operands, IsEmpty()); }}},
        {"GreaterIsLessWithTheOperandsExchanged",
         {op(BUILT_IN_FUNCTION::LT, true),
          is("a > b", "true"),
          [](auto& test)
          { EXPECT_THAT(test.m_operands, ElementsAre(&test.m_other, &test.m_hostObject)); }}},
        {"TypeWithoutThemHasNone",
         {raises(
              "return a + b",
              "[string \"isDone, message = pcall(function() return a +...\"]:1: attempt to perform "
              "arithmetic on global 'a' (a userdata value)"),
          is("a == b", "false")}},
    });

using UserTypeUnknownOperatorTest = OnValues<UserTypeFixture, int>;

TEST_P(UserTypeUnknownOperatorTest, IsLoggedWithTheFullNameAndNull)
{
    UserType& type = declareType("math::Vec");
    EXPECT_EQ(type.setOperator(static_cast<BUILT_IN_FUNCTION>(GetParam())), nullptr);
    expectLogged(
        "Unknown build in function, can't process overload for type 'math::Vec'. Aborting.",
        "LuaUserType");
}

INSTANTIATE_TEST_SUITE_P(
    FirstNegativeHighestLowest,
    UserTypeUnknownOperatorTest,
    ::testing::Values(12, -1, 2147483647, -2147483647 - 1));

} // namespace

} // namespace tbScripts::test

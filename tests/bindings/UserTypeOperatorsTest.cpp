#include "support/RowName.h"
#include "support/UserTypeFixture.h"

#include <ostream>
#include <tuple>

namespace tbScripts::test
{

using ::testing::ElementsAre;
using ::testing::IsEmpty;

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

std::ostream& operator<<(std::ostream& stream, const Operator& row)
{
    return stream << row.row;
}

struct WrongOperand
{
    const char* row;
    const char* left;
    const char* right;
    const char* actual;
};

std::ostream& operator<<(std::ostream& stream, const WrongOperand& row)
{
    return stream << row.row;
}

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

} // namespace

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
protected:
    UserTypeOperatorsTest()
    {
        setHostObject("a", m_hostObject);
        setHostObject("b", m_other);
    }

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
};

class UserTypeOperatorTest : public UserTypeOperatorsTest,
                             public ::testing::WithParamInterface<Operator>
{
};

TEST_P(UserTypeOperatorTest, IsAMethodOfItsName)
{
    Function* const function = vec().setOperator(GetParam().number);

    ASSERT_NE(function, nullptr);
    EXPECT_EQ(function->getName(), GetParam().name);
    EXPECT_EQ(vec().getMethod(GetParam().name), function);
    EXPECT_EQ(evaluate(std::string("type(rawget(Vec, '") + GetParam().name + "'))"), "function");
}

TEST_P(UserTypeOperatorTest, GetsItsOperandsAndGivesItsResult)
{
    declareOperator(GetParam().number, GetParam().result);

    EXPECT_EQ(evaluate(GetParam().expression), GetParam().shown);
    if (GetParam().isBinary)
    {
        EXPECT_THAT(m_operands, ElementsAre(&m_hostObject, &m_other));
        EXPECT_THAT(m_types, ElementsAre(PARAM_TYPE_USER_TYPE, PARAM_TYPE_USER_TYPE_OWNED));
    }
    else
    {
        EXPECT_THAT(m_operands, ElementsAre(&m_hostObject));
        EXPECT_THAT(m_types, ElementsAre(PARAM_TYPE_USER_TYPE));
    }
}

TEST_P(UserTypeOperatorTest, SetTwiceWarnsAndHasTheSameParameters)
{
    Function* const first = declareOperator(GetParam().number, 1);

    Function* const second = declareOperator(GetParam().number, GetParam().result);

    EXPECT_EQ(second, first);
    EXPECT_THAT(
        m_log.takeEntries(),
        ElementsAre(LogEntry{
            std::string("Setting method '") + GetParam().name +
                "' on user type 'Vec', but this method is already registered. State will be "
                "changed, but this might hold unexpected results",
            "LuaUserType"}));
    EXPECT_EQ(evaluate(GetParam().expression), GetParam().shown);
}

TEST_P(UserTypeOperatorTest, IsGoneAfterAClear)
{
    declareOperator(GetParam().number, GetParam().result);

    vec().clear();

    EXPECT_EQ(vec().getMethod(GetParam().name), nullptr);
    EXPECT_EQ(evaluate(std::string("rawget(Vec, '") + GetParam().name + "')"), "nil");
}

INSTANTIATE_TEST_SUITE_P(All, UserTypeOperatorTest, ALL_OPERATORS, RowName());

class UserTypeOperatorMismatchTest
    : public UserTypeOperatorsTest,
      public ::testing::WithParamInterface<std::tuple<Operator, WrongOperand>>
{
};

TEST_P(UserTypeOperatorMismatchTest, IsLoggedAndNamesTheOperator)
{
    const auto& [op, operand] = GetParam();
    declareType("Enemy");
    run("enemy = Enemy.new()");
    declareOperator(op.number, op.result);
    const std::string expected = std::string("Error l.1 while calling ") + op.name +
                                 ". Expected Vec, got " + operand.actual + ".";
    const std::string expression =
        replaced(replaced(op.expression, "a", operand.left), "b", operand.right);

    const std::string message = errorOf("local value = " + expression);

    EXPECT_EQ(message, expected);
    EXPECT_THAT(m_log.takeEntries(), ElementsAre(LogEntry{expected, "LuaFunction"}));
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

class UserTypeOperatorNilTest : public UserTypeOperatorsTest,
                                public ::testing::WithParamInterface<Operator>
{
};

TEST_P(UserTypeOperatorNilTest, IsANullObjectOnTheRight)
{
    declareOperator(GetParam().number, GetParam().result);

    run("local value = " + replaced(GetParam().expression, "b", "nil"));

    EXPECT_THAT(m_operands, ElementsAre(&m_hostObject, nullptr));
}

TEST_P(UserTypeOperatorNilTest, IsANullObjectOnTheLeft)
{
    declareOperator(GetParam().number, GetParam().result);

    run("local value = " + replaced(GetParam().expression, "a", "nil"));

    EXPECT_THAT(m_operands, ElementsAre(nullptr, &m_other));
}

INSTANTIATE_TEST_SUITE_P(Mixed, UserTypeOperatorNilTest, MIXED_OPERATORS, RowName());

TEST_F(UserTypeOperatorsTest, ComparisonWithNumbersIsLeftToTheInterpreter)
{
    declareOperator(BUILT_IN_FUNCTION::LT, true);
    declareOperator(BUILT_IN_FUNCTION::EQ, true);

    EXPECT_EQ(
        errorOf("return a < 1"),
        "[string \"isDone, message = pcall(function() return a <...\"]:1: attempt to compare "
        "userdata with number");
    EXPECT_EQ(evaluate("a == 1"), "false");
    EXPECT_EQ(evaluate("a ~= b"), "false");
    EXPECT_EQ(evaluate("a == nil"), "false");
}

TEST_F(UserTypeOperatorsTest, ComparisonOfAValueWithItselfAsksNobody)
{
    declareOperator(BUILT_IN_FUNCTION::EQ, false);

    EXPECT_EQ(evaluate("a == a"), "true");
    EXPECT_THAT(m_operands, IsEmpty());
}

TEST_F(UserTypeOperatorsTest, GreaterIsLessWithTheOperandsExchanged)
{
    declareOperator(BUILT_IN_FUNCTION::LT, true);

    EXPECT_EQ(evaluate("a > b"), "true");
    EXPECT_THAT(m_operands, ElementsAre(&m_other, &m_hostObject));
}

TEST_F(UserTypeOperatorsTest, SumIsAnObjectThatTheScriptOwns)
{
    declareField("x", &Vec::x);
    vec()
        .setOperator(BUILT_IN_FUNCTION::ADD)
        ->setFunction(
            [this](const Parameters& parameters)
            {
                const Vec sum{vecOf(parameters[0]).x + vecOf(parameters[1]).x, 0.0};
                m_made.push_back(sum);
                return FunctionParameter(&m_made.back(), "Vec", true);
            });

    run("a.x = 3  b.x = 4  sum = a + b + b");

    EXPECT_EQ(evaluate("sum.x"), "11");
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

    EXPECT_EQ(evaluate("rawequal(a + owned, owned)"), "true");
}

TEST_F(UserTypeOperatorsTest, TypeWithoutThemHasNone)
{
    EXPECT_EQ(
        errorOf("return a + b"),
        "[string \"isDone, message = pcall(function() return a +...\"]:1: attempt to perform "
        "arithmetic on global 'a' (a userdata value)");
    EXPECT_EQ(evaluate("a == b"), "false");
}

namespace
{

struct UnknownOperator
{
    const char* row;
    int number;
};

std::ostream& operator<<(std::ostream& stream, const UnknownOperator& row)
{
    return stream << row.row;
}

} // namespace

class UserTypeUnknownOperatorTest : public UserTypeFixture,
                                    public ::testing::WithParamInterface<UnknownOperator>
{
};

TEST_P(UserTypeUnknownOperatorTest, IsLoggedWithTheFullNameAndNull)
{
    UserType& type = declareType("math::Vec");

    Function* const function = type.setOperator(static_cast<BUILT_IN_FUNCTION>(GetParam().number));

    EXPECT_EQ(function, nullptr);
    EXPECT_THAT(
        m_log.takeEntries(),
        ElementsAre(LogEntry{
            "Unknown build in function, can't process overload for type 'math::Vec'. Aborting.",
            "LuaUserType"}));
}

INSTANTIATE_TEST_SUITE_P(
    Numbers,
    UserTypeUnknownOperatorTest,
    ::testing::Values(
        UnknownOperator{"First", 12},
        UnknownOperator{"Negative", -1},
        UnknownOperator{"Highest", 2147483647},
        UnknownOperator{"Lowest", -2147483647 - 1}),
    RowName());

} // namespace tbScripts::test

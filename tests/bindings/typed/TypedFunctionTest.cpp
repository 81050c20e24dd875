#include "support/EnvironmentFixture.h"

#include <tbScripts/Bind.h>
#include <tbScripts/Namespace.h>

#include <cstdint>
#include <limits>
#include <stdexcept>
#include <string>
#include <string_view>

namespace tbScripts::test
{

namespace
{

double halve(double number)
{
    return number / 2;
}

int addAll(int a, int b, int c) noexcept
{
    return a + b + c;
}

class Counter
{
public:
    void add(int number) { m_sum += number; }

    int getSum() const noexcept { return m_sum; }

private:
    int m_sum = 0;
};

} // namespace

class TypedFunctionTest : public EnvironmentFixture
{
protected:
    // Binds `f` to what returns its one argument.
    template <typename T>
    void bindEcho()
    {
        bind(environment(), "f", [](T value) { return value; });
    }

    // Expects `f(argument)` to be refused as in a call of a declared function.
    void refuses(const std::string& argument, const std::string& expected, const std::string& got)
    {
        const std::string message =
            "Error l.1 while calling f. Expected " + expected + ", got " + got + ".";
        raises("f(" + argument + ")", message);
        expectLogged(message, "LuaFunction");
    }
};

TEST_F(TypedFunctionTest, BindsFunctionsOfTheHost)
{
    EXPECT_NE(bind<&halve>(environment(), "halve"), nullptr);
    bind(environment(), "halved", &halve);
    bind<&addAll>(environment(), "addAll");

    is("halve(3)", "1.5");
    is("halved(5)", "2.5");
    is("addAll(1, 2, 3)", "6");
}

TEST_F(TypedFunctionTest, BindsLambdasWithState)
{
    int calls = 0;
    bind(environment(), "count", [&calls] { ++calls; });

    run("count() count()");

    EXPECT_EQ(calls, 2);
    is("select('#', count())", "0");
}

TEST_F(TypedFunctionTest, BindsMembersTogetherWithAnObject)
{
    Counter counter;
    Namespace* const scope = environment().setNamespace("counter");
    bind<&Counter::add>(*scope, "add", counter);
    bind<&Counter::getSum>(*scope, "sum", counter);

    run("counter.add(4) counter.add(5)");

    EXPECT_EQ(counter.getSum(), 9);
    is("counter.sum()", "9");
}

TEST_F(TypedFunctionTest, ReportsTheFirstArgumentThatDoesNotFit)
{
    bind<&addAll>(environment(), "f");

    refuses("1, {}, 'x'", "int", "table");
    refuses("1", "int", "no value");
    refuses("nil, 2, 3", "int", "nil");
}

TEST_F(TypedFunctionTest, NumbersAreThoseOfDeclaredFunctions)
{
    bindEcho<int>();
    is("f(2.9)", "2");
    is("f(-2.9)", "-2");
    is("f('12')", "12");
    is("f(1e300)", "2147483647");
    is("f(0/0)", "0");
    refuses("'x'", "int", "string");

    bindEcho<float>();
    forgetLog();
    is("f(0.5)", "0.5");
    is("f(1e300) == math.huge", "true");
    refuses("true", "float", "boolean");
}

TEST_F(TypedFunctionTest, OtherIntegersAreCheckedForTheirRange)
{
    bindEcho<std::uint8_t>();
    is("f(255)", "255");
    is("f(0.9)", "0");
    refuses("256", "uint8", "number");
    refuses("-1", "uint8", "number");
    refuses("0/0", "uint8", "number");

    bindEcho<std::int64_t>();
    forgetLog();
    is("f(-9007199254740992) == -9007199254740992", "true");
    refuses("2^63", "int64", "number");

    bindEcho<std::uint32_t>();
    forgetLog();
    is("f(4294967295)", "4294967295");
    refuses("4294967296", "uint32", "number");
}

TEST_F(TypedFunctionTest, IntegersBeyondTheNumbersOfScriptsAreErrors)
{
    const std::string message =
        "Error while calling f. Its result is an integer that scripts can't represent.";
    bind(environment(), "f", [] { return std::numeric_limits<std::int64_t>::min(); });
    raises("f()", message);
    bind(environment(), "f", [] { return std::numeric_limits<std::uint64_t>::max(); });
    raises("f()", message);
    forgetLog();
}

TEST_F(TypedFunctionTest, StringsHaveAllTheirBytes)
{
    bindEcho<std::string>();
    is("#f('a\\0b')", "3");
    bind(environment(), "size", [](std::string_view text) { return text.size(); });
    is("size('a\\0b')", "3");
    bind(environment(), "first", [](const char* text) { return text; });
    is("first('ab\\0c')", "ab");
    is("f(12)", "12");
    refuses("nil", "string", "nil");
}

TEST_F(TypedFunctionTest, NullStringIsNil)
{
    bind(environment(), "f", []() -> const char* { return nullptr; });
    is("f()", "nil");
}

TEST_F(TypedFunctionTest, BooleansAreAnyValue)
{
    bindEcho<bool>();
    is("f(0)", "true");
    is("f(nil)", "false");
    is("f()", "false");
}

TEST_F(TypedFunctionTest, ExceptionsBecomeScriptErrors)
{
    bind(environment(), "text", [] { throw std::string("no tile"); });
    bind(environment(), "exception", [] { throw std::runtime_error("no unit"); });

    raises("text()", "no tile");
    raises("exception()", "no unit");
    expectLogged({{"no tile", "LuaFunction"}, {"no unit", "LuaFunction"}});
}

TEST_F(TypedFunctionTest, SetFunctionAndResetEndTheTypedBinding)
{
    Function* const function = bind<&halve>(environment(), "f");
    function->setFunction([](const Parameters&) { return 7; });
    is("f()", "7");

    typed::bindTo(function, {&typed::FunctionSignature<&halve>::SIGNATURE});
    is("f(4)", "2");

    function->reset();
    run("f(4)");
    expectLogCount(1); // unbound
}

TEST_F(TypedFunctionTest, CopiesCallTheSameCallable)
{
    const Function copy(*bind<&halve>(environment(), "f"));
    Function* const other = environment().setFunc("g");
    *other = copy;
    is("g(4)", "2");
}

TEST_F(TypedFunctionTest, RunningCallableMayReplaceItself)
{
    Environment& world = environment();
    const auto alive = std::make_shared<int>(5);
    const std::weak_ptr<int> watched = alive;
    bind(
        world,
        "f",
        [&world, kept = alive]
        {
            bind(world, "f", [] { return 1; });
            return *kept;
        });
    is("f()", "5");
    is("f()", "1");
    forgetLog(); // declared before
    EXPECT_EQ(watched.use_count(), 1);
}

TEST_F(TypedFunctionTest, CallableIsDestroyedWithTheEnvironment)
{
    const auto alive = std::make_shared<int>(5);
    bind(environment(), "f", [alive] { return *alive; });
    EXPECT_EQ(alive.use_count(), 2);
    destroyEnvironment();
    EXPECT_EQ(alive.use_count(), 1);
}

TEST_F(TypedFunctionTest, CallableThatCannotBeDeclaredIsDestroyed)
{
    const auto alive = std::make_shared<int>(5);
    {
        Environment without;
        EXPECT_EQ(bind(without, "f", [alive] { return *alive; }), nullptr);
        EXPECT_EQ(alive.use_count(), 1);
    }
    forgetLog();
}

TEST_F(TypedFunctionTest, IsDescribedForThoseWhoWriteScripts)
{
    Function* const halved = bind<&halve>(environment(), "halve");
    EXPECT_STREQ(typed::getText(*halved), "");
    EXPECT_EQ(describe(halved, "Half of a number.", {"number"}), halved);
    EXPECT_STREQ(typed::getText(*halved), "Half of a number.");
    EXPECT_STREQ(typed::getParameterName(*halved, 0), "number");
    EXPECT_EQ(typed::getParameterName(*halved, 1), nullptr);
    EXPECT_EQ(typed::getParameterName(*halved, -1), nullptr);

    halved->reset();
    EXPECT_EQ(describe(halved, "Not typed."), nullptr);
    EXPECT_EQ(typed::getText(*halved), nullptr);
    EXPECT_EQ(typed::getParameterName(*halved, 0), nullptr);
}

TEST_F(TypedFunctionTest, DefaultArgumentsStandForMissingOnesAndNil)
{
    bind(
        environment(),
        "f",
        [](int a, const std::string& b, double c)
        { return std::to_string(a) + b + std::to_string(c); },
        defaults("b", 2.5));

    is("f(1)", "1b2.500000");
    is("f(1, 'x')", "1x2.500000");
    is("f(1, nil, 3)", "1b3.000000");
    refuses("1, {}", "string", "table");
    refuses("", "int", "no value");
}

TEST_F(TypedFunctionTest, RestIsAllFurtherArguments)
{
    bind(
        environment(),
        "f",
        [](int first, typed::Rest rest)
        {
            double sum = first;
            for (int i = 0; i < rest.size(); ++i)
                sum += rest.is<double>(i) ? rest.get<double>(i) : 100;
            return sum;
        });

    is("f(1)", "1");
    is("f(1, 2, 3)", "6");
    is("f(1, 'x')", "101");
}

TEST_F(TypedFunctionTest, RestThatDoesNotFitIsRefused)
{
    bind(environment(), "f", [](typed::Rest rest) { return rest.get<double>(1); });
    refuses("1, 'x'", "double", "string");
    refuses("1", "double", "no value");
}

TEST_F(TypedFunctionTest, OverloadsAreChosenByTheArguments)
{
    bind(
        environment(),
        "f",
        overload(
            [](double) { return "number"; },
            [](const std::string&) { return "string"; },
            [](double, double) { return "two numbers"; },
            [](bool) { return "boolean"; }));

    is("f(1)", "number");
    is("f('1')", "string");
    is("f(1, 2)", "two numbers");
    is("f(true)", "boolean");
    is("f(1, '2')", "two numbers"); // none fits without conversion
    refuses("{}, 1, 2", "arguments of one of the overloads", "table");
}

TEST_F(TypedFunctionTest, OverloadsThatTakeTheSameAreReported)
{
    bind(environment(), "f", overload([](double) { return "double"; }, [](int) { return "int"; }));
    expectLogged(
        "An overload takes the same arguments as one before it. It is dropped.", "Function");
    is("f(1)", "double");
}

} // namespace tbScripts::test

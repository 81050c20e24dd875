#include "support/EnvironmentFixture.h"

#include <tbScripts/Bind.h>
#include <tbScripts/Namespace.h>
#include <tbScripts/UserType.h>

#include <stdexcept>
#include <string>
#include <string_view>

namespace tbScripts::test
{

namespace
{

constexpr const char* REFUSED =
    "A leaf function called the library, which it promised not to do. Call having no effect.";

struct Leafy
{
    double get() const { return value; }

    void set(double other) noexcept { value = other; }

    bool operator<(const Leafy& other) const { return value < other.value; }

    double value = 1;
    int count = 2;
    float weight = 0.5F;
    bool isOn = true;
    double elements[4] = {10, 11, 12, 13};
};

double elementOf(const Leafy& leafy, int index)
{
    return leafy.elements[index & 3];
}

void setElementOf(Leafy& leafy, int index, double value)
{
    leafy.elements[index & 3] = value;
}

double halve(double number)
{
    return number / 2;
}

std::string_view trimmed(std::string_view text)
{
    while (!text.empty() && text.front() == ' ')
        text.remove_prefix(1);
    return text;
}

std::string joined(const std::string& text, int number)
{
    return text + std::to_string(number);
}

double readValue(const Leafy* leafy)
{
    return leafy ? leafy->value : -1;
}

int sumOf(int a, float b, bool c, double d, const char* e)
{
    return a + static_cast<int>(b) + (c ? 1 : 0) + static_cast<int>(d) + static_cast<int>(e[0]);
}

Environment* breached = nullptr; // what the next leaves call

int breach(int number)
{
    return breached ? breached->getVar("present", number) : number;
}

int fail(int number)
{
    if (number > 0)
        throw std::runtime_error("no leaf");
    return number;
}

} // namespace

/// Leaves in loops that the interpreter compiles, and in those that it does not.
class TypedLeafTest : public EnvironmentFixture
{
protected:
    TypedLeafTest()
    {
        Environment& world = environment();
        bind(world, "halve", leaf<&halve>);
        bind(world, "trimmed", leaf<&trimmed>);
        bind(world, "joined", leaf<&joined>);
        bind(world, "valueOf", leaf<&readValue>); // before its type
        bind(world, "sumOf", leaf<&sumOf>);
        bindLeafy();
        run("object, other = Leafy.new(), Leafy.new()"
            " function hot(f, n) local last for i = 1, n or 300 do last = f(i) end return last "
            "end");
    }

    void bindLeafy()
    {
        bindType<Leafy>(environment(), "Leafy")
            .constructor<>()
            .method("get", leaf<&Leafy::get>)
            .method("set", leaf<&Leafy::set>)
            .op(BUILT_IN_FUNCTION::LT, leaf < &Leafy::operator<>)
            .index(leaf<&elementOf>, leaf<&setElementOf>)
            .field<&Leafy::value>("value")
            .field<&Leafy::count>("count")
            .field<&Leafy::weight>("weight")
            .field<&Leafy::isOn>("isOn");
    }

    // Expects `expression`, of `i`, to show as `shown` the 300th time, compiled and not.
    void isEachWay(const std::string& expression, const std::string& shown)
    {
        const std::string loop = "hot(function(i) return " + expression + " end)";
        is("tostring(" + loop + ")", shown);
        run("jit.off()");
        is("tostring(" + loop + ")", shown);
        run("jit.on()");
    }
};

TEST_F(TypedLeafTest, ResultsAreTheSameEachWay)
{
    isEachWay("halve(i)", "150");
    isEachWay("trimmed('  ' .. i)", "300");
    isEachWay("joined('n', i)", "n300");
    isEachWay("valueOf(object)", "1");
    isEachWay("valueOf(nil)", "-1");
    isEachWay("sumOf(i, 2.5, true, 4, 'A')", "372");
    isEachWay("object < other", "false");
    isEachWay("object[i]", "10");
    isEachWay("object.count + object.weight", "2.5");
    isEachWay("tostring(object.isOn)", "true");
}

TEST_F(TypedLeafTest, WritesArriveEachWay)
{
    const auto write = [this](const std::string& code, const std::string& read)
    {
        run("hot(function(i) " + code + " end)");
        is(read, "300");
    };
    write("object:set(i)", "object:get()");
    write("object.value = i", "object.value");
    write("object.count = i", "object.count");
    write("object.weight = i", "object.weight");
    write("object[1] = i", "object[1]");
    run("hot(function(i) object.isOn = i < 300 end)");
    is("tostring(object.isOn)", "false");
}

TEST_F(TypedLeafTest, MisfitsInHotLoopsHaveTheirMessages)
{
    raises(
        "hot(function(i) return halve(i < 300 and i or {}) end)",
        "Error l.1 while calling halve. Expected double, got table.");
    forgetLog();
    raises(
        "hot(function(i) object.count = i < 300 and i or 'x' end)",
        "Error l.1 while calling count. Expected int, got string.");
    isEachWay("halve(tostring(i))", "150");
    isEachWay("halve(i, i, i)", "150");
}

TEST_F(TypedLeafTest, AnotherCallableEndsTheLeafForScriptsThatKeptIt)
{
    Function* const function = bind(environment(), "f", leaf<&halve>);
    declareAction(
        "swap",
        [function]
        { function->setFunction([](const Parameters&) { return FunctionParameter(7); }); });
    function->addParameter(PARAM_TYPE_DOUBLE);
    is("(function() local f, last = f for i = 1, 600 do if i == 500 then swap() end last = f(i) end"
       " return last end)()",
       "7");

    bind(environment(), "f", leaf<&halve>);
    forgetLog(); // declared before
    is("hot(f)", "150");
    function->reset();
    run("hot(f, 1)");
    expectLogCount(1); // unbound
}

TEST_F(TypedLeafTest, ClearedTypeHasNoLeaves)
{
    run("function read() return object.value end  hot(read)"
        " function element(i) return object[i] end  hot(element)");
    environment().getUserType("Leafy")->clear();
    is("tostring(hot(read))", "nil");
    is("tostring(hot(element))", "nil");
}

TEST_F(TypedLeafTest, OtherDeclarationsReplaceLeaves)
{
    run("function read() return object.value end  hot(read)"
        " function element(i) return object[i] end  hot(element)");
    UserType* const type = environment().getUserType("Leafy");
    UserTypeFieldDescriptor value;
    value.name = "value";
    value.getter = [](void*) { return 99; };
    type->setField(value);
    UserTypeArrayDescriptor elements;
    elements.read = [](const Parameters& arguments) { return arguments[1].getInt() * 2; };
    type->setArrayAccess(elements);
    forgetLog(); // declared before
    is("hot(read)", "99");
    is("hot(element)", "600");
}

TEST_F(TypedLeafTest, InstancesOfAReleasedTypeAreRefused)
{
    Namespace* const scope = environment().setNamespace("scope");
    bindType<Leafy>(*scope, "Other").constructor<>().field<&Leafy::value>("value");
    bind(environment(), "valueOf", leaf<&readValue>);
    forgetLog();
    run("old = scope.Other.new() hot(function() return valueOf(old) end)");
    environment().getNamespace("scope")->release();
    raises(
        "return hot(function() return valueOf(old) end)",
        "Error l.1 while calling valueOf. Expected a user type that is not declared, got "
        "userdata.");
    forgetLog();
}

TEST_F(TypedLeafTest, LibraryIsRefusedInsideEachWay)
{
    bind(environment(), "breach", leaf<&breach>);
    run("present = 4");
    is("hot(breach)", "300");
    breached = &environment();
    is("breach(5)", "5");
    expectLogged(REFUSED, "LuaEnvironment");
    run("function f(i) return breach(i) end");
    breached = nullptr;
    run("hot(f)");
    breached = &environment();
    is("hot(f, 400)", "400");
    breached = nullptr;
    forgetLog();
    EXPECT_EQ(environment().getVar("present", 0), 4);
}

TEST_F(TypedLeafTest, LeavesAreNoValuesAsBytes)
{
    const ScriptObjectReference function = environment().getScriptFunction("halve");
    EXPECT_EQ(environment().serializeScriptObject(function, false).size(), 0U);
}

TEST_F(TypedLeafTest, ThrownExceptionsAreReported)
{
    bind(environment(), "fail", leaf<&fail>);
    raises("fail(1)", "no leaf"); // uncompiled
    forgetLog();
    run("function f(i) return fail(i > 299 and 1 or 0) end");
    run("result = select(2, pcall(hot, f))");
    is("result == 0 or result == 'no leaf'", "true");
    forgetLog();
}

TEST_F(TypedLeafTest, LeavesWorkInAnotherInterpreterOfTheEnvironment)
{
    restart();
    bind(environment(), "halve", leaf<&halve>);
    forgetLog();
    run("function hot(f) local last for i = 1, 300 do last = f(i) end return last end");
    is("hot(halve)", "150");
}

} // namespace tbScripts::test

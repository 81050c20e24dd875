#include "support/EnvironmentFixture.h"

#include <tbScripts/Bind.h>
#include <tbScripts/ScriptFunction.h>

#include <array>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <tuple>
#include <utility>
#include <variant>
#include <vector>

namespace tbScripts::test
{

namespace
{

struct Tracked
{
    explicit Tracked(int number)
        : value(number)
    {
        ++living;
    }

    Tracked(const Tracked& other)
        : value(other.value)
    {
        ++living;
    }

    ~Tracked() { --living; }

    int value;
    static int living;
};

int Tracked::living = 0;

enum class COLOR : unsigned char
{
    RED = 1,
    BLUE = 4
};

} // namespace

class TypedValuesTest : public EnvironmentFixture
{
protected:
    void bindTracked()
    {
        bindType<Tracked>(environment(), "Tracked").field<&Tracked::value>("value");
    }

    void refuses(const std::string& code, const std::string& expected, const std::string& got)
    {
        const std::string message =
            "Error l.1 while calling f. Expected " + expected + ", got " + got + ".";
        raises(code, message);
        forgetLog();
    }
};

TEST_F(TypedValuesTest, SeveralResults)
{
    bind(environment(), "f", [] { return std::make_tuple(1, std::string("two"), true); });
    bind(environment(), "g", [] { return std::make_pair(0.5, nullptr); });
    is("select('#', f())", "3");
    is("table.concat({f(), (select(2, f()))}, ' ')", "1 two");
    is("tostring(select(3, f()))", "true");
    is("select('#', g())", "2");
}

TEST_F(TypedValuesTest, Optional)
{
    bind(environment(), "f", [](std::optional<int> number) { return number; });
    is("f(3)", "3");
    is("f()", "nil");
    is("f(nil)", "nil");
    refuses("f('x')", "int", "string");
}

TEST_F(TypedValuesTest, Vector)
{
    bind(environment(), "f", [](const std::vector<double>& numbers) { return numbers; });
    is("table.concat(f({1, 2.5, 3}), ' ')", "1 2.5 3");
    is("#f({})", "0");
    refuses("f(1)", "table", "number");
    refuses("f({1, 'x'})", "double", "string");

    bind(environment(), "f", [](std::vector<std::vector<bool>> table) { return table; });
    forgetLog();
    is("tostring(f({{true, false}, {false}})[1][2])", "false");
    is("#f({{true, false}, {false}})[2]", "1");
}

TEST_F(TypedValuesTest, Array)
{
    bind(environment(), "f", [](std::array<int, 2> pair) { return pair; });
    is("table.concat(f({4, 5}), ' ')", "4 5");
    refuses("f({4})", "table of the array's length", "table");
    refuses("f({4, 'x'})", "int", "string");
}

TEST_F(TypedValuesTest, Map)
{
    bind(environment(), "f", [](std::map<std::string, int> map) { return map; });
    is("f({a = 1, b = 2}).b", "2");
    refuses("f({'one'})", "a key of the map", "number");
    refuses("f({a = {}})", "int", "table");

    bind(environment(), "f", [](std::map<int, std::string> map) { return map.size(); });
    forgetLog();
    is("f({'a', 'b', [10] = 'c'})", "3");
}

TEST_F(TypedValuesTest, Variant)
{
    bindTracked();
    Tracked object(3);
    environment().setObject("object", "Tracked", &object);
    bind(
        environment(),
        "f",
        [](std::variant<bool, int, std::string, Tracked*> value)
        { return std::make_pair(static_cast<int>(value.index()), value); });

    is("(f(true))", "0");
    is("select(2, f(7))", "7");
    is("(f('7'))", "2");
    is("(f(object))", "3");
    is("select(2, f(object)).value", "3");
    refuses("f({})", "one of the types of the variant", "table");
}

TEST_F(TypedValuesTest, Enumeration)
{
    bind(environment(), "f", [](COLOR color) { return color; });
    is("f(3)", "3"); // until its values are declared
    refuses("f(256)", "enum", "number");

    EXPECT_TRUE(
        bindEnum<COLOR>(environment(), "Color", {{"RED", COLOR::RED}, {"BLUE", COLOR::BLUE}}));
    is("Color.RED", "1");
    is("Color[4]", "BLUE");
    is("f(Color.BLUE)", "4");
    refuses("f(3)", "enum", "number");
}

TEST_F(TypedValuesTest, ObjectsByValueBelongToTheScript)
{
    bindTracked();
    bind(environment(), "make", [](int number) { return Tracked(number); });
    bind(environment(), "copied", [](Tracked object) { return object.value; });

    run("object = make(4)");
    EXPECT_EQ(Tracked::living, 1);
    is("object.value", "4");
    is("copied(object)", "4");
    run("object = nil");
    collect();
    EXPECT_EQ(Tracked::living, 0);
}

TEST_F(TypedValuesTest, ObjectsByReferenceStayTheHosts)
{
    bindTracked();
    Tracked object(3);
    bind(environment(), "get", [&object]() -> Tracked& { return object; });
    bind(environment(), "none", []() -> Tracked* { return nullptr; });

    run("get().value = 8");
    EXPECT_EQ(object.value, 8);
    is("none()", "nil");
    collect();
    EXPECT_EQ(Tracked::living, 1);
}

TEST_F(TypedValuesTest, PointersTakeNilAndReferencesDoNot)
{
    bindTracked();
    bind(environment(), "f", [](const Tracked* object) { return object == nullptr; });
    is("tostring(f(nil))", "true");
    refuses("f()", "Tracked", "no value");
    bind(environment(), "f", [](const Tracked& object) { return object.value; });
    forgetLog();
    refuses("f(nil)", "Tracked", "nil");
    refuses("f(io.stdout)", "Tracked", "userdata");
}

TEST_F(TypedValuesTest, UniquePointersTakeTheObjectAway)
{
    bindTracked();
    std::unique_ptr<Tracked> kept;
    bind(environment(), "make", [] { return std::make_unique<Tracked>(5); });
    bind(
        environment(),
        "f",
        [&kept](std::unique_ptr<Tracked> object, int) { kept = std::move(object); });

    run("object = make() f(object, 1)");
    ASSERT_NE(kept, nullptr);
    EXPECT_EQ(kept->value, 5);
    refuses("f(object, 1)", "Tracked", "userdata");
    run("object = make()");
    refuses("f(object, 'x')", "int", "string");
    is("object.value", "5"); // still the script's
    environment().setObject("shown", "Tracked", kept.get());
    refuses("f(shown, 1)", "object that the script owns", "userdata");
    run("object = nil");
    collect();
    EXPECT_EQ(Tracked::living, 1);
    kept.reset();
    EXPECT_EQ(Tracked::living, 0);
}

TEST_F(TypedValuesTest, SharedPointersAreShared)
{
    bindTracked();
    const auto object = std::make_shared<Tracked>(6);
    std::shared_ptr<Tracked> kept;
    bind(environment(), "get", [&object] { return object; });
    bind(
        environment(), "f", [&kept](std::shared_ptr<Tracked> shared) { kept = std::move(shared); });
    bind(environment(), "make", [] { return Tracked(1); });

    run("object = get()");
    EXPECT_EQ(object.use_count(), 2);
    run("f(object)");
    EXPECT_EQ(kept, object);
    run("object:enableGc() f(nil)");
    EXPECT_EQ(kept, nullptr);
    refuses("f(make())", "object that is shared", "userdata");
    run("object = nil");
    collect();
    EXPECT_EQ(object.use_count(), 1);
    EXPECT_EQ(Tracked::living, 1);
}

TEST_F(TypedValuesTest, SharesEndWithTheEnvironment)
{
    bindTracked();
    const auto object = std::make_shared<Tracked>(6);
    bind(environment(), "get", [&object] { return object; });
    run("object = get() other = get()");
    EXPECT_EQ(object.use_count(), 3);
    destroyEnvironment();
    EXPECT_EQ(object.use_count(), 1);
}

TEST_F(TypedValuesTest, ResultOfATypeThatIsNotDeclaredIsAnError)
{
    bind(environment(), "f", [] { return Tracked(1); });
    raises(
        "f()",
        "Error while calling f. The type of its result is no user type of this environment.");
    forgetLog();
    EXPECT_EQ(Tracked::living, 0);
    bind(environment(), "f", [](Tracked&) {});
    forgetLog();
    refuses("f(1)", "a user type that is not declared", "number");
}

TEST_F(TypedValuesTest, ReferencesKeepFunctionsAndTables)
{
    ScriptObjectReference kept;
    bind(environment(), "f", [&kept](ScriptObjectReference value) { kept = value; });
    bind(environment(), "get", [&kept] { return kept; });
    run("f({7})");
    is("get()[1]", "7");
    run("f(function() return 8 end)");
    is("get()()", "8");
    EXPECT_EQ(kept.getType(), PARAM_TYPE_SCRIPT_FUNCTION);
    refuses("f(1)", "lua object", "number");
}

TEST_F(TypedValuesTest, ScriptFunctionsAreArguments)
{
    ScriptFunction<int(int)> kept;
    bind(environment(), "f", [&kept](ScriptFunction<int(int)> callback) { kept = callback; });
    run("f(function(n) return n * 2 end)");
    EXPECT_EQ(kept(21), 42);
    refuses("f({})", "lua function", "table");
}

} // namespace tbScripts::test

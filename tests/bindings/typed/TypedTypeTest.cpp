#include "support/EnvironmentFixture.h"

#include <tbScripts/Bind.h>
#include <tbScripts/Namespace.h>
#include <tbScripts/UserType.h>

#include <gmock/gmock.h>

#include <string>
#include <string_view>
#include <vector>

namespace tbScripts::test
{

namespace
{

struct Vec
{
    Vec() = default;

    Vec(double first, double second)
        : x(first)
        , y(second)
    {
    }

    bool operator<(const Vec& other) const { return x < other.x; }

    double x = 0;
    double y = 0;
};

Vec sum(const Vec& one, const Vec& other)
{
    return {one.x + other.x, one.y + other.y};
}

Vec scaled(const Vec& vec, double factor)
{
    return {vec.x * factor, vec.y * factor};
}

Vec scaledBy(double factor, const Vec& vec)
{
    return scaled(vec, factor);
}

struct Named
{
    virtual ~Named() = default;

    std::string getName() const { return name; }

    void setName(const std::string& other) { name = other; }

    std::string name = "nobody";
};

struct Entity
{
    virtual ~Entity() = default;

    int getId() const { return id; }

    int id = 7;
    bool isVisible = true;
    float weight = 0.5F;
};

struct Unit : Named, Entity
{
    explicit Unit(std::string unitName, int unitHealth)
        : health(unitHealth)
    {
        name = std::move(unitName);
        ++living;
    }

    Unit(const Unit&) = delete;
    Unit& operator=(const Unit&) = delete;

    ~Unit() override { --living; }

    Unit& hurt(int damage)
    {
        health -= damage;
        return *this;
    }

    int getSlot(int number) const { return slots.at(static_cast<std::size_t>(number)); }

    void setSlot(int number, int value) { slots.at(static_cast<std::size_t>(number)) = value; }

    int countSlots() const { return static_cast<int>(slots.size()); }

    std::vector<int> listSlots() const { return slots; }

    int health;
    Vec place;
    const int rank = 3;
    std::vector<int> slots{10, 20, 30};
    static int living;
};

int Unit::living = 0;

int healthOf(const Unit& unit)
{
    return unit.health;
}

} // namespace

class TypedTypeTest : public EnvironmentFixture
{
protected:
    TypedTypeTest()
    {
        Environment& world = environment();
        bindType<Vec>(world, "Vec")
                .constructor<double, double>()
                .field<&Vec::x>("x")
                .field<&Vec::y>("y")
                .op<&sum>(BUILT_IN_FUNCTION::ADD)
                .op<&scaled, &scaledBy>(BUILT_IN_FUNCTION::MUL)
                .op < &Vec::operator<>(BUILT_IN_FUNCTION::LT);
        bindType<Named>(world, "Named").property<&Named::getName, &Named::setName>("name");
        bindType<Entity>(world, "Entity")
            .field<&Entity::id>("id")
            .field<&Entity::isVisible>("isVisible")
            .field<&Entity::weight>("weight")
            .method<&Entity::getId>("getId")
            .method("describe", [](const Entity& entity) { return entity.id; });
        bindType<Unit>(world, "game::Unit")
            .base<Named>()
            .base<Entity>()
            .constructor<std::string, int>()
            .method<&Unit::hurt>("hurt")
            .method<&healthOf>("healthOf")
            .function("count", [] { return Unit::living; })
            .field<&Unit::health>("health")
            .field<&Unit::place>("place")
            .field<&Unit::rank>("rank")
            .readOnly<&Unit::health>("shownHealth")
            .index<&Unit::getSlot, &Unit::setSlot>()
            .length<&Unit::countSlots>()
            .iteration<&Unit::listSlots>()
            .names([](const Unit&, std::string_view name) { return "no " + std::string(name); });
        bind(world, "idOf", [](const Entity& entity) { return entity.id; });
        bind(world, "nameOf", [](const Named* named) { return named->name; });
    }

    void runWithUnit(const std::string& sources)
    {
        run("unit = game.Unit.new('bob', 10) " + sources);
    }
};

TEST_F(TypedTypeTest, ConstructorTakesArguments)
{
    runWithUnit("");
    is("unit.health", "10");
    is("unit.name", "bob");
    raises(
        "game.Unit.new({}, 1)", "Error l.1 while calling game::Unit. Expected string, got table.");
    forgetLog();
    EXPECT_EQ(Unit::living, 1);
}

TEST_F(TypedTypeTest, ObjectsOfScriptsAreDestroyedOnce)
{
    runWithUnit("unit = nil");
    collect();
    EXPECT_EQ(Unit::living, 0);
    runWithUnit("");
    destroyEnvironment();
    EXPECT_EQ(Unit::living, 0);
}

TEST_F(TypedTypeTest, MethodsAndFunctions)
{
    runWithUnit("unit:hurt(3)");
    is("unit:healthOf()", "7");
    is("game.Unit.count()", "1");
    raises("unit.hurt(1, 2)", "Error l.1 while calling hurt. Expected game::Unit, got number.");
    raises("unit:hurt()", "Error l.1 while calling hurt. Expected int, got no value.");
    forgetLog();
    EXPECT_NE(environment().getUserType("game::Unit")->getMethod("hurt"), nullptr);
}

TEST_F(TypedTypeTest, MethodThatReturnsItsInstanceReturnsTheSameValue)
{
    runWithUnit("same = rawequal(unit:hurt(1):hurt(1), unit)");
    is("tostring(same)", "true");
    is("unit.health", "8");
}

TEST_F(TypedTypeTest, FieldsOfAllKinds)
{
    runWithUnit("unit.health = 5.9 unit.isVisible = false unit.weight = 0.25 unit.id = '12'");
    is("unit.health", "5");
    is("tostring(unit.isVisible)", "false");
    is("unit.weight", "0.25");
    is("unit.id", "12");
    raises("unit.health = 'x'", "Error l.1 while calling health. Expected int, got string.");
    raises("unit.weight = nil", "Error l.1 while calling weight. Expected float, got nil.");
}

TEST_F(TypedTypeTest, ReadOnlyFieldsIgnoreWrites)
{
    runWithUnit("unit.rank = 9 unit.shownHealth = 9");
    is("unit.rank", "3");
    is("unit.shownHealth", "10");
}

TEST_F(TypedTypeTest, ObjectsThatAreMembersAreShownInPlaceAndKeepTheirInstance)
{
    runWithUnit("place = unit.place place.x = 4");
    is("unit.place.x", "4");
    run("unit.place = Vec.new(1, 2)");
    is("place.y", "2");
    run("unit = nil");
    collect();
    EXPECT_EQ(Unit::living, 1);
    run("place = nil");
    collect();
    collect();
    EXPECT_EQ(Unit::living, 0);
}

TEST_F(TypedTypeTest, BaseClassesGiveFieldsMethodsAndPlaceAsArgument)
{
    runWithUnit("unit.id = 11 unit.name = 'zed'");
    is("unit:getId()", "11");
    is("unit:describe()", "11");
    is("unit.name", "zed");
    is("idOf(unit)", "11");
    is("nameOf(unit)", "zed");
    raises("idOf(Vec.new(1, 2))", "Error l.1 while calling idOf. Expected Entity, got userdata.");
    forgetLog();
}

TEST_F(TypedTypeTest, BaseClassThatIsNotBoundIsReported)
{
    struct Further : Unit
    {
        using Unit::Unit;
    };

    struct Unknown
    {
    };

    struct Odd : Unknown
    {
    };

    bindType<Odd>(environment(), "Odd").base<Unknown>();
    expectLogged(
        "User type 'Odd' can't have a base class that is no user type of this environment "
        "yet.",
        "LuaUserType");
    bindType<Further>(environment(), "Further").base<Unit>().constructor<std::string, int>();
    run("further = Further.new('al', 4)");
    is("idOf(further)", "7"); // by two steps
    is("further.health", "4");
    is("further[1]", "nil");
}

TEST_F(TypedTypeTest, OperatorsOfMixedOperands)
{
    run("v = Vec.new(1, 2)");
    is("(v + v).y", "4");
    is("(v * 3).x", "3");
    is("(3 * v).y", "6");
    is("tostring(v < Vec.new(2, 0))", "true");
    raises("return v + 1", "Error l.1 while calling __add. Expected Vec, got number.");
    raises(
        "return v * 'x'",
        "Error l.1 while calling __mul. Expected arguments of one of the overloads, got userdata.");
    forgetLog();
}

TEST_F(TypedTypeTest, OperatorsAreInherited)
{
    struct Place : Vec
    {
        using Vec::Vec;
    };

    bindType<Place>(environment(), "Place").base<Vec>().constructor<double, double>();
    is("(Place.new(1, 2) + Place.new(1, 2)).x", "2");
}

TEST_F(TypedTypeTest, ElementsLengthAndIteration)
{
    runWithUnit("unit[1] = 21");
    is("unit[1]", "21");
    is("#unit", "3");
    run("sum = 0 for number, slot in pairs(unit) do sum = sum + number * slot end");
    is("sum", "142");
    run("count = 0 for key in pairs({a = 1, 5}) do count = count + 1 end");
    is("count", "2");
    EXPECT_THAT(
        errorOf("pairs(3)"), ::testing::HasSubstr("bad argument #1 to 'pairs' (table expected"));
    raises(
        "return unit[5]", "vector::_M_range_check: __n (which is 5) >= this->size() (which is 3)");
}

TEST_F(TypedTypeTest, NamesThatAreNoMembers)
{
    runWithUnit("");
    is("unit.pet", "no pet");
    is("unit.health", "10");
}

TEST_F(TypedTypeTest, MethodsAreCalledAsFunctions)
{
    bindType<Vec>(environment(), "Vec").call([](const Vec& vec, double n) { return vec.x * n; });
    forgetLog();
    Vec vec(3, 0);
    environment().setObject("v", "Vec", &vec);
    is("v(4)", "12");
}

TEST_F(TypedTypeTest, ConstructorByCallable)
{
    bindType<Vec>(environment(), "Flat")
        .constructor([](double x) { return Vec(x, 0); })
        .field<&Vec::x>("x");
    is("Flat.new(3).x", "3");
}

TEST_F(TypedTypeTest, BothLayersDescribeOneType)
{
    UserType* const type = environment().getUserType("game::Unit");
    Function* const heal = type->setMethod("heal", false);
    heal->addParameter(PARAM_TYPE_INT);
    heal->setFunction(
        [](const Parameters& arguments)
        {
            static_cast<Unit*>(arguments[0].getUserTypeObject())->health += arguments[1].getInt();
            return FunctionParameter::VOID;
        });
    runWithUnit("unit:heal(5)");
    is("unit.health", "15");

    UserTypeFieldDescriptor health;
    health.name = "health";
    health.getter = [](void*) { return 99; };
    type->setField(health);
    is("unit.health", "99");
    type->clear();
    is("unit.health", "nil");
    is("unit.pet", "nil");
    is("unit.id", "nil");
}

} // namespace tbScripts::test

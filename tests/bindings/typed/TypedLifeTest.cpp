// What happens to typed bindings when their types end, change or come twice while instances,
// shares, inherited fields and calls of them live.

#include "support/EnvironmentFixture.h"

#include <tbScripts/Bind.h>
#include <tbScripts/Namespace.h>
#include <tbScripts/ScriptFunction.h>
#include <tbScripts/UserType.h>

#include <gmock/gmock.h>

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tbScripts::test
{

namespace
{

struct Padding
{
    virtual ~Padding() = default;

    double padding[4] = {};
};

struct Other
{
    virtual ~Other() = default;

    double other = 0;
};

struct Thing
{
    Thing() { ++living; }

    explicit Thing(int thingNumber)
        : number(thingNumber)
    {
        ++living;
    }

    Thing(const Thing& other)
        : number(other.number)
    {
        ++living;
    }

    Thing& operator=(const Thing&) = default;

    virtual ~Thing() { --living; }

    int getNumber() const { return number; }

    int number = 1;
    std::string label = "thing";
    static int living;
};

int Thing::living = 0;

struct Middle : Padding, Thing
{
    using Thing::Thing;
};

struct Leaf final : Other, Middle
{
    using Middle::Middle;
};

struct Unknown
{
    Unknown() { ++living; }

    Unknown(const Unknown&) { ++living; }

    ~Unknown() { --living; }

    static int living;
};

int Unknown::living = 0;

int numberOf(const Thing& thing)
{
    return thing.number;
}

} // namespace

class TypedLifeTest : public EnvironmentFixture
{
protected:
    TypedLifeTest()
    {
        bindThing("Thing");
        bind(environment(), "share", [this] { return m_shared; });
        bind(environment(), "take", [](std::unique_ptr<Thing> thing) { return thing->number; });
        bind<&numberOf>(environment(), "numberOf");
    }

    // Each in a namespace of its own, so that types can be released.
    template <typename T>
    TypeBinding<T> bindIn(const std::string& name)
    {
        TypeBinding<T> binding = bindType<T>(environment(), fullNameOf(name).c_str());
        run(name + " = of" + name + "." + name);
        return binding;
    }

    static std::string fullNameOf(const std::string& name) { return "of" + name + "::" + name; }

    UserType& typeOf(const std::string& name)
    {
        return *environment().getUserType(fullNameOf(name));
    }

    void endType(const std::string& name) { environment().getNamespace("of" + name)->release(); }

    TypeBinding<Thing> bindThing(const char* name)
    {
        return bindIn<Thing>(name)
            .constructor<int>()
            .field<&Thing::number>("number")
            .field<&Thing::label>("label")
            .method<&Thing::getNumber>("getNumber");
    }

    void bindDerived()
    {
        bindIn<Middle>("Middle").base<Thing>().constructor<int>();
        bindIn<Leaf>("Leaf").base<Middle>().constructor<int>();
    }

    std::shared_ptr<Thing> m_shared = std::make_shared<Thing>(5);
};

TEST_F(TypedLifeTest, InheritedFieldAfterTheTypeBetweenIsReleased)
{
    bindDerived();
    run("leaf = Leaf.new(3) read = function() return leaf.number end");
    is("read()", "3");
    run("leaf.number = 4");
    endType("Middle");
    EXPECT_NE(errorOf("return read()"), "");
    EXPECT_NE(errorOf("leaf.number = 9"), "");
    EXPECT_NE(errorOf("return numberOf(leaf)"), "");
    forgetLog();
}

TEST_F(TypedLifeTest, InheritedFieldAfterTheTypeBetweenIsBoundAgainWithoutBase)
{
    bindDerived();
    run("leaf = Leaf.new(3)");
    bindIn<Middle>("AnotherMiddle");
    EXPECT_NE(errorOf("return leaf.number"), "");
    EXPECT_NE(errorOf("leaf.number = 9"), "");
}

TEST_F(TypedLifeTest, InheritedFieldThatIsDescribedAnewGetsTheBaseObject)
{
    bindDerived();
    run("leaf = Leaf.new(3) leaf.number = leaf.number");
    UserTypeFieldDescriptor number;
    number.name = "number";
    number.type = PARAM_TYPE_INT;
    number.getter = [](void* object) { return static_cast<Thing*>(object)->number; };
    number.setter = [](const tbMemory::BufferView<FunctionParameter>& arguments)
    {
        static_cast<Thing*>(arguments[0].getUserTypeObject())->number = arguments[1].getInt();
        return FunctionParameter::VOID;
    };
    typeOf("Thing").setField(number);
    is("leaf.number", "3");
    run("leaf.number = 8");
    is("numberOf(leaf)", "8");
}

TEST_F(TypedLifeTest, MemberOfAnInstanceWithoutObject)
{
    typeOf("Thing").setConstructor(
        [](const tbMemory::BufferView<FunctionParameter>&) -> void* { return nullptr; });
    typeOf("Thing").setDestructor([](void*) {});
    run("none = Thing.new()");
    EXPECT_NE(errorOf("return none.number"), "");
    EXPECT_NE(errorOf("none.number = 3"), "");
    EXPECT_NE(errorOf("return none.label"), "");
    EXPECT_NE(errorOf("return none:getNumber()"), "");
    forgetLog();
}

TEST_F(TypedLifeTest, ConstructorWithTooFewArguments)
{
    raises("Thing.new()", "Error l.1 while calling ofThing::Thing. Expected int, got no value.");

    struct Choosy
    {
        Choosy(bool first, std::optional<int> second)
            : isFirst(first)
            , number(second.value_or(7))
        {
        }

        bool isFirst;
        int number;
    };

    bindIn<Choosy>("Choosy")
        .constructor<bool, std::optional<int>>()
        .field<&Choosy::isFirst>("isFirst")
        .field<&Choosy::number>("number");
    is("Choosy.new(true).number", "7");
    is("tostring(Choosy.new().isFirst)", "false");

    struct Counter
    {
        explicit Counter(typed::Rest rest)
            : count(rest.size())
        {
        }

        int count;
    };

    bindIn<Counter>("Counter").constructor<typed::Rest>().field<&Counter::count>("count");
    is("Counter.new().count", "0");
    is("Counter.new(1, nil).count", "2");

    struct Listed
    {
        explicit Listed(const std::vector<int>& list)
            : size(static_cast<int>(list.size()))
        {
        }

        int size;
    };

    bindIn<Listed>("Listed").constructor<std::vector<int>>();
    raises(
        "Listed.new()", "Error l.1 while calling ofListed::Listed. Expected table, got no value.");
    forgetLog();
}

TEST_F(TypedLifeTest, TwoTypesOfOneNameShareTheShares)
{
    Environment copy(environment());
    run("thing = share()");
    m_shared.reset();
    bindType<Thing>(copy, "ofThing::Thing").field<&Thing::number>("number");
    is("thing.number", "5");
    EXPECT_NE(errorOf("take(thing)"), "");
    run("thing:enableGc() thing = nil");
    collect();
    EXPECT_EQ(Thing::living, 0);
    forgetLog();
}

TEST_F(TypedLifeTest, TypeOfAnotherClassTakesOverNoInstances)
{
    Environment copy(environment());
    run("thing = Thing.new(3)");
    bindType<Unknown>(copy, "ofThing::Thing").method("end", [](const Unknown&) { return 1; });
    bind(copy, "takeUnknown", [](const Unknown&) { return 1; });
    EXPECT_NE(errorOf("return takeUnknown(thing)"), "");
    EXPECT_NE(errorOf("return ofThing.Thing['end'](thing)"), "");
    run("thing = nil");
    collect();
    collect();
    EXPECT_EQ(Thing::living, 1);
    forgetLog();
}

TEST_F(TypedLifeTest, SharesOfInstancesWithoutFinaliserAreGivenUp)
{
    const std::weak_ptr<Thing> watched = m_shared;
    run("for i = 1, 200 do debug.setmetatable(share(), nil) if i % 10 == 0 then "
        "collectgarbage() end end");
    m_shared.reset();
    destroyEnvironment();
    EXPECT_TRUE(watched.expired());
}

TEST_F(TypedLifeTest, SharesThatScriptsFinaliseThemselves)
{
    run("thing = share() local finalise = getmetatable(thing).__gc finalise(thing) "
        "finalise(thing) ok, message = pcall(thing.getNumber, thing)");
    is("tostring(ok)", "false");
    EXPECT_EQ(m_shared.use_count(), 1);
    run("thing = share() thing:enableGc() thing:disableGc() thing:enableGc() thing = nil");
    collect();
    EXPECT_EQ(m_shared.use_count(), 1);
    EXPECT_NE(errorOf("take(share())"), "");
    forgetLog();
}

TEST_F(TypedLifeTest, ArgumentsStayWithTheScriptIfAnotherCannotBeTaken)
{
    bind(environment(), "takeBoth", [](std::unique_ptr<Thing>, std::unique_ptr<Thing>) {});
    run("mine = Thing.new(3) yours = Thing.new(4) yours:disableGc()");
    EXPECT_NE(errorOf("takeBoth(mine, yours)"), "");
    EXPECT_NE(errorOf("takeBoth(yours, mine)"), "");
    forgetLog();
    is("mine.number", "3");
    run("yours:enableGc()");
}

TEST_F(TypedLifeTest, TypeThatEndsInItsConstructor)
{
    bind(environment(), "release", [this] { endType("Thing"); });
    bindThing("Thing").constructor(
        [this](int number)
        {
            endType("Thing");
            return Thing(number);
        });
    forgetLog();
    run("pcall(Thing.new, 3)");
    collect();
    bindThing("Thing").constructor(
        [this]
        {
            endType("Thing");
            return std::make_shared<Thing>(3);
        });
    run("pcall(Thing.new)");
    collect();
    destroyEnvironment();
    forgetLog();
    EXPECT_EQ(Thing::living, 1);
}

TEST_F(TypedLifeTest, TypeThatEndsInAccesses)
{
    const char* const accesses[] = {
        "return thing.field",
        "thing.field = 3",
        "return thing[1]",
        "thing[1] = 3",
        "return thing.unknown",
        "thing.unknown = 3",
        "return thing:method()",
        "return #thing",
        "return thing + thing",
        "for key in pairs(thing) do end",
        "return thing.inherited"};
    for (const char* const access : accesses)
    {
        for (const bool isBoundAgain : {false, true})
        {
            auto end = [this, isBoundAgain](const Thing& thing)
            {
                endType("Thing");
                collect();
                if (isBoundAgain)
                    bindThing("Thing");
                return thing.number;
            };
            bindThing("Thing")
                .property("field", end, [end](const Thing& thing, int) { end(thing); })
                .index(
                    [end](const Thing& thing, int) { return end(thing); },
                    [end](const Thing& thing, int, int) { end(thing); })
                .names(
                    [end](const Thing& thing, std::string_view) { return end(thing); },
                    [end](const Thing& thing, std::string_view, int) { end(thing); })
                .method("method", end)
                .method("__len", end)
                .op(BUILT_IN_FUNCTION::ADD, end);
            typed::bindIteration(
                typeOf("Thing"),
                typed::boundCallable([end](const Thing& thing)
                                     { return std::vector<int>(3, end(thing)); }));
            run("thing = Thing.new(4) pcall(function() " + std::string(access) + " end)");
            run("thing = nil");
            collect();
        }
    }
    forgetLog();
    destroyEnvironment();
    forgetLog();
    EXPECT_EQ(Thing::living, 1);
}

TEST_F(TypedLifeTest, EnvironmentThatEndsInCalls)
{
    for (const char* const code :
         {"destroy()",
          "Ender.new()",
          "return thing.number + thing.ending",
          "thing.ending = 3",
          "for key in pairs(thing) do end"})
    {
        auto world = std::make_unique<Environment>();
        world->setEnvironmentFor(INTERPRETER_LUA);
        auto end = [&world](const Thing& thing)
        {
            world.reset();
            return thing.number;
        };
        bind(*world, "destroy", [&world] { world.reset(); });
        bindType<Thing>(*world, "Thing")
            .constructor<int>()
            .field<&Thing::number>("number")
            .property("ending", end, [end](const Thing& thing, int) { end(thing); });
        typed::bindIteration(
            *world->getUserType("Thing"),
            typed::boundCallable(
                [end](const Thing& thing) {
                    return std::map<int, int>{{1, end(thing)}};
                }));
        bindType<Leaf>(*world, "Ender")
            .constructor(
                [&world]
                {
                    world.reset();
                    return std::make_unique<Leaf>(3);
                });
        runScript(*world, "thing = Thing.new(3) leaf = Ender " + std::string(code));
        world.reset();
    }
    forgetLog();
    EXPECT_EQ(Thing::living, 1);
}

TEST_F(TypedLifeTest, ResultsOfTypesThatAreNotDeclaredLeakNothing)
{
    bind(environment(), "byValue", [] { return Unknown(); });
    bind(environment(), "byUnique", [] { return std::make_unique<Unknown>(); });
    bind(environment(), "byShared", [] { return std::make_shared<Unknown>(); });
    bind(environment(), "byList", [] { return std::vector<Unknown>(3); });
    for (const char* const name : {"byValue", "byUnique", "byShared", "byList"})
    {
        EXPECT_NE(errorOf(std::string("return ") + name + "()"), "");
        EXPECT_EQ(Unknown::living, 0) << name;
    }
    forgetLog();
}

TEST_F(TypedLifeTest, TypeUnderTwoNames)
{
    bindThing("Other");
    run("one = Thing.new(3) two = Other.new(4)");
    is("numberOf(one) + numberOf(two)", "7");
    endType("Other");
    is("numberOf(one)", "3");
    EXPECT_NE(errorOf("return numberOf(two)"), "");
    forgetLog();
}

TEST_F(TypedLifeTest, InheritanceThroughDeclarationsInPlaceOfOthersEnds)
{
    bindDerived();
    run("leaf = Leaf.new(3)");
    bindIn<Leaf>("Thing").base<Middle>().constructor<int>();
    forgetLog();
    is("numberOf(Thing.new(2)) + numberOf(leaf)", "5");
    run("x = leaf.nothing, Thing.new(3).nothing");
    forgetLog();
}

TEST_F(TypedLifeTest, InheritedFieldsOfAClearedTypeThatAScriptKept)
{
    bindDerived();
    run("middle = Middle.new(3) x = middle.number kept = {} for i = 1, 9 do local name, value = "
        "debug.getupvalue(getmetatable(middle).__index, i) if name == 'readers' then kept = "
        "value.number end end");
    is("kept(middle)", "3");
    typeOf("Middle").clear();
    endType("Thing");
    run("Thing = nil ofThing = nil");
    collect();
    collect();
    EXPECT_NE(errorOf("return kept(middle)"), "");
}

TEST_F(TypedLifeTest, InheritedFieldAfterTheTypeBetweenIsCleared)
{
    bindDerived();
    run("leaf = Leaf.new(3) x = leaf.number");
    typeOf("Middle").clear();
    EXPECT_NE(errorOf("return leaf.number"), "");
}

TEST_F(TypedLifeTest, NameThatIsBoundToAnotherClassLeavesItsInstancesBehind)
{
    struct Large
    {
        int getLast() const { return numbers[99]; }

        int numbers[100] = {};
    };

    bindType<Thing>(environment(), "Changing").constructor<int>().field<&Thing::number>("number");
    run("thing = Changing.new(3)");
    bindType<Large>(environment(), "Changing").constructor<>().method<&Large::getLast>("getLast");
    forgetLog();
    EXPECT_NE(errorOf("return Changing.getLast(thing)"), "");
    EXPECT_NE(errorOf("return thing.number"), "");
    is("Changing.new():getLast()", "0");
    run("thing = nil");
    collect();
    collect();
    EXPECT_EQ(Thing::living, 1);
    forgetLog();
}

TEST_F(TypedLifeTest, NameThatIsBoundToAnotherClassWhoseConstructorEndsTheNamespace)
{
    auto end = std::shared_ptr<int>(
        new int(3),
        [this](const int* number)
        {
            delete number;
            endType("Thing");
        });
    bindThing("Thing").constructor([end] { return Thing(*end); });
    forgetLog();
    end.reset();
    EXPECT_EQ(bindType<Unknown>(environment(), "ofThing::Thing").get(), nullptr);
    forgetLog();
}

TEST_F(TypedLifeTest, BaseThatIsBoundToADerivedClassIsNoCircle)
{
    bindType<Thing>(environment(), "One").constructor<int>();
    bindType<Middle>(environment(), "Two").base<Thing>().constructor<int>();
    run("two = Two.new(3)");
    bindType<Leaf>(environment(), "One").base<Middle>().constructor<int>();
    forgetLog();
    run("x = One.new(3).nothing x = two.nothing");
}

TEST_F(TypedLifeTest, InterpreterThatIsReplaced)
{
    bindDerived();
    ScriptFunction<int(Thing&)> read;
    run("function read(thing) return thing.number end leaf = Leaf.new(3) thing = share()");
    read = ScriptFunction<int(Thing&)>(environment(), "read");
    Thing thing(9);
    EXPECT_EQ(read(thing), 9);
    restart();
    EXPECT_EQ(read(thing), 0);
    forgetLog();
    bindThing("Thing");
    bind<&numberOf>(environment(), "numberOf");
    forgetLog();
    is("numberOf(Thing.new(3))", "3");
}

TEST_F(TypedLifeTest, EndlessCallsBetweenHostAndScript)
{
    struct Again
    {
        int operator()(const ScriptFunction<int(int)>& function) const { return function(1) + 1; }
    };

    bind(environment(), "again", Again());
    run("function deep(n) return again(deep) end pcall(deep, 1)");
    run("co = coroutine.wrap(function() return pcall(deep, 1) end) co()");
    forgetLog();
}

TEST_F(TypedLifeTest, CallablesThatThrowAnything)
{
    bind(environment(), "throwInt", [] { throw 3; });
    bind(environment(), "throwText", [] { throw std::string("text"); });
    run("for i = 1, 3 do pcall(throwInt) pcall(throwText) end");
    bindThing("Thing")
        .property("number", [](const Thing&) -> int { throw 3; })
        .constructor([]() -> Thing { throw 4; })
        .names([](const Thing&, std::string_view) -> int { throw 4; });
    Thing thing;
    environment().setObject("thing", fullNameOf("Thing"), &thing);
    run("pcall(Thing.new) pcall(function() return thing.number end) pcall(function() return "
        "thing.some end)");
    forgetLog();
}

TEST_F(TypedLifeTest, NestedContainersAndHugeTables)
{
    using Deep = std::vector<std::vector<std::vector<std::map<std::string, std::vector<int>>>>>;
    bind(environment(), "deep", [](const Deep& deep) { return deep; });
    is("deep({{{{a = {1, 2}}}}})[1][1][1].a[2]", "2");
    bind(environment(), "sum", [](const std::vector<double>& list) { return list.size(); });
    run("t = {} for i = 1, 300000 do t[i] = i end");
    is("sum(t)", "300000");
    run("nest = {} for i = 1, 100000 do nest = {nest} end");
    EXPECT_NE(errorOf("deep(nest)"), "");
    bind(environment(), "things", [](const std::vector<Thing*>& list) { return list; });
    run("t = {Thing.new(1), nil, Thing.new(2)}");
    is("things({Thing.new(1), Thing.new(2)})[2].number", "2");
    forgetLog();
}

} // namespace tbScripts::test

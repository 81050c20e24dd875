#include "support/RowName.h"
#include "support/UserTypeSteps.h"

#include <tbScripts/Namespace.h>

#include <type_traits>

namespace tbScripts::test
{

namespace
{

struct TableEntry
{
    const char* row;
    const char* key;
    const char* type = "function";
};

struct ReservedName
{
    const char* row;
    const char* name;
};

// The part that hosts may derive from, without an interpreter.
class PlainUserType : public UserType
{
public:
    using UserType::UserType;

    Function* getMethod(const tbMemory::StringView&) const override { return nullptr; }

    Function* getStaticMethod(const tbMemory::StringView&) const override { return nullptr; }

    void setConstructor(Constructor) override {}

    void setDestructor(Destructor) override {}

    Function* setMethod(const tbMemory::StringView&, bool) override { return nullptr; }

    Function* setStaticMethod(const tbMemory::StringView&) override { return nullptr; }

    Function* setOperator(BUILT_IN_FUNCTION) override { return nullptr; }

    void setField(UserTypeFieldDescriptor) override {}

    void setArrayAccess(UserTypeArrayDescriptor) override {}

    void clear() override {}

    void rename(const char* fullName) { setFullName(fullName); }
};

static_assert(std::has_virtual_destructor_v<UserType>);
static_assert(std::is_abstract_v<UserType>);

void expectNames(const UserType& type, const char* name, const char* fullName)
{
    EXPECT_EQ(type.getName(), name);
    EXPECT_EQ(type.getFullName(), fullName);
}

class UserTypeNamesTest : public ::testing::Test
{
protected:
    UserTypeNamesTest() { m_type.rename("math::Vec"); }

    PlainUserType m_type{"Vec"};
};

TEST_F(UserTypeNamesTest, BothAreTheOneGiven)
{
    expectNames(PlainUserType("Vec"), "Vec", "Vec");
}

TEST_F(UserTypeNamesTest, AreCopied)
{
    const PlainUserType copy(m_type);
    expectNames(copy, "Vec", "math::Vec");
}

TEST_F(UserTypeNamesTest, AreAssigned)
{
    PlainUserType other("Enemy");
    other = m_type;
    expectNames(other, "Vec", "math::Vec");
}

TEST_F(UserTypeNamesTest, StayThroughSelfAssignment)
{
    const PlainUserType& alias = m_type;
    m_type = alias;
    expectNames(m_type, "Vec", "math::Vec");
}

using UserTypeTest = UserTypeFixture;

TEST_F(UserTypeTest, GlobalTypeHasItsNameAsFullName)
{
    expectNames(vec(), "Vec", "Vec");
}

TEST_F(UserTypeTest, TypeInNamespacesHasTheirNamesBefore)
{
    expectNames(declareType("outer::inner::Vec"), "Vec", "outer::inner::Vec");
}

TEST_F(UserTypeTest, FactoryGivesTheConstructorNoParameters)
{
    std::size_t size = 99;
    bool hasData = true;
    vec().setConstructor(
        [&](const Parameters& parameters)
        {
            size = parameters.size();
            hasData = parameters.data() != nullptr;
            return &m_hostObject;
        });
    run("Vec.new(1, 2, 3)");
    EXPECT_EQ(size, 0U);
    EXPECT_FALSE(hasData);
}

TEST_F(UserTypeTest, NewDestructorServesInstancesMadeBefore)
{
    run("v = Vec.new()");
    std::vector<void*> destroyed;
    vec().setDestructor([&destroyed](void* object) { destroyed.push_back(object); });
    run("v = nil");
    collect();
    EXPECT_THAT(destroyed, ::testing::ElementsAre(&m_made[0]));
    isDestroyed({});
}

TEST_F(UserTypeTest, DeclaredAgainIsTheSameObjectAndTable)
{
    UserType* const first = &vec();
    run("before = Vec");
    EXPECT_EQ(environment().setUserType("Vec"), first);
    is("before == Vec", "true");
    expectLogged(
        "User type 'Vec' already existant. Resetting its state before returning it. This might "
        "hold unexpected results.",
        "Environment");
}

TEST_F(UserTypeTest, EmptyNameIsAName)
{
    UserType* const type = environment().setUserType("");
    ASSERT_NE(type, nullptr);
    setMaker(*type);
    is("getmetatable(_G[''].new()) == _G['']", "true");
}

TypeStep bareType()
{
    return [](auto& test) { test.environment().setUserType("Bare"); };
}

// Has `new` give the host's object.
TypeStep hostConstructor()
{
    return [](auto& test)
    { test.vec().setConstructor([&test](const Parameters&) { return &test.m_hostObject; }); };
}

TypeStep maker()
{
    return [](auto& test) { test.setMaker(test.vec()); };
}

const Facts<UserTypeTest> FACTS(
    "UserTypeTest",
    {
        {"TypeInANamespaceIsAFieldOfIt",
         {type("math::Vec"),
          is("math.Vec.__name", "math::Vec"),
          is("rawget(_G, 'math::Vec')", "nil")}},
        {"TypesOfOneNameInTwoScopesAreTwo",
         {type("math::Vec"),
          run("a = Vec.new()  b = math.Vec.new()"),
          is("getmetatable(a) == Vec", "true"),
          is("getmetatable(b) == math.Vec", "true"),
          is("Vec == math.Vec", "false")}},
        {"TypeIsTheMetatableOfItsInstances", {is("getmetatable(Vec.new()) == Vec", "true")}},
        {"InstanceIsUserdata", {is("type(Vec.new())", "userdata")}},
        {"TableHasNothingButItsEntries",
         {run("names = {} for name in pairs(Vec) do names[#names + 1] = name end "
              "table.sort(names)"),
          is("table.concat(names, ' ')", "__gc __index __name __newindex disableGc enableGc new")}},
        {"TableWithoutConstructorHasNoFactory", {bareType(), is("Bare.new", "nil")}},
        {"TableWithoutDestructorHasAFinaliserAllTheSame",
         {bareType(), is("type(Bare.__gc)", "function")}},
        {"ArrayWriteIsNoEntry", {arrayAccess(), is("rawget(Vec, '__arrayWrite')", "nil")}},
        {"FieldIsNoEntry", {field("x"), is("rawget(Vec, 'x')", "nil")}},
        {"FactoryGivesOneResult", {is("select('#', Vec.new(1, 2, 3))", "1")}},
        {"FactoryBoxesWhatTheConstructorReturns",
         {hostConstructor(), run("v = Vec.new()  v:disableGc()"), isObject("v", HOST_OBJECT)}},
        {"FactoryBoxesANullObjectToo",
         {[](auto& test) { test.vec().setConstructor([](const Parameters&) { return nullptr; }); },
          [](auto& test) { test.vec().setDestructor([](void*) {}); },
          run("v = Vec.new()"),
          is("getmetatable(v) == Vec", "true"),
          isObject("v", NO_OBJECT)}},
        {"NewConstructorServesFactoriesThatScriptsKept",
         {run("make = Vec.new"),
          hostConstructor(),
          run("v = make()  v:disableGc()"),
          isObject("v", HOST_OBJECT)}},
        {"NewConstructorGivesTheTableItsFactoryAgain",
         {run("Vec.new = nil"), maker(), is("type(Vec.new)", "function")}},
        {"DeclaredAgainLeavesWhatAScriptPutInItsPlace",
         {run("Vec = 'mine'"), declareAgain(), is("Vec", "mine")}},
        {"DeclaredAgainKeepsConstructorAndDestructor",
         {declareAgain(), run("Vec.new()"), collect(), isDestroyed({0})}},
        {"DeclaredAgainDropsMethodsAndFields",
         {field("x"),
          method("length", 1),
          declareAgain(),
          is("Vec.new().x", "nil"),
          is("Vec.new().length", "nil"),
          [](auto& test) { EXPECT_EQ(test.vec().getMethod("length"), nullptr); }}},
        {"WorksWithAnyName",
         {[](auto& test)
          {
              UserType& type = test.declareType("a name, with blanks");
              type.setStaticMethod("f")->setFunction(returning(7));
          },
          is("_G['a name, with blanks'].f()", "7"),
          is("_G['a name, with blanks'].__name", "a name, with blanks")}},
        {"SharesTheTableOfANamespaceOfItsName",
         {[](auto& test) { test.environment().setNamespace("Vec")->setVar("dimensions", 2); },
          is("Vec.new().dimensions", "2")}},
    });

class UserTypeEntryTest : public OnRows<UserTypeFixture, TableEntry>
{
protected:
    UserTypeEntryTest()
    {
        vec().setMethod("length", false);
        vec().setStaticMethod("origin");
        vec().setOperator(BUILT_IN_FUNCTION::ADD);
        vec().setOperator(BUILT_IN_FUNCTION::TOSTRING);
        declareArrayAccess();
    }

    const std::string m_key = GetParam().key;
};

TEST_P(UserTypeEntryTest, IsInTheTable)
{
    is("type(rawget(Vec, '" + m_key + "'))", GetParam().type);
}

TEST_P(UserTypeEntryTest, IsFoundOnInstances)
{
    is("Vec.new()." + m_key + " == rawget(Vec, '" + m_key + "')", "true");
}

ROWS(
    UserTypeEntryTest,
    {"Read", "__index"},
    {"Write", "__newindex"},
    {"Name", "__name", "string"},
    {"Finaliser", "__gc"},
    {"EnableGc", "enableGc"},
    {"DisableGc", "disableGc"},
    {"New", "new"},
    {"Method", "length"},
    {"StaticMethod", "origin"},
    {"BinaryOperator", "__add"},
    {"TextOperator", "__tostring"},
    {"ArrayRead", "__arrayRead"});

using UserTypeReservedNameTest = OnRows<UserTypeFixture, ReservedName>;

TEST_P(UserTypeReservedNameTest, CannotBeDeclaredAndLeavesTheInterpretersOwnAlone)
{
    const std::string name(GetParam().name);
    EXPECT_EQ(environment().setUserType(name), nullptr);
    EXPECT_EQ(environment().getUserType(name), nullptr);
    expectLogged(
        "The interpreter uses the name '" + name + "' itself. It can't be declared.",
        "LuaUserType");
    is("rawget(_G, '" + name + "')", "nil");
    is("io.type(io.stdout)", "file");
    is("require('math') == math", "true");
}

ROWS(UserTypeReservedNameTest, {"FileHandles", "FILE*"}, {"LoadedModules", "_LOADED"});

} // namespace

} // namespace tbScripts::test

#include "support/RowName.h"
#include "support/UserTypeFixture.h"

#include <tbScripts/Namespace.h>

#include <ostream>
#include <type_traits>

namespace tbScripts::test
{

using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace
{

struct TableEntry
{
    const char* row;
    const char* key;
    const char* type;
};

std::ostream& operator<<(std::ostream& stream, const TableEntry& entry)
{
    return stream << entry.row;
}

struct ReservedName
{
    const char* row;
    const char* name;
};

std::ostream& operator<<(std::ostream& stream, const ReservedName& reserved)
{
    return stream << reserved.row;
}

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

} // namespace

class UserTypeTest : public UserTypeFixture
{
};

TEST(UserTypeNamesTest, BothAreTheOneGiven)
{
    const PlainUserType type("Vec");

    EXPECT_EQ(type.getName(), "Vec");
    EXPECT_EQ(type.getFullName(), "Vec");
}

TEST(UserTypeNamesTest, AreCopied)
{
    PlainUserType type("Vec");
    type.rename("math::Vec");

    const PlainUserType copy(type);

    EXPECT_EQ(copy.getName(), "Vec");
    EXPECT_EQ(copy.getFullName(), "math::Vec");
}

TEST(UserTypeNamesTest, AreAssigned)
{
    PlainUserType type("Vec");
    type.rename("math::Vec");
    PlainUserType other("Enemy");

    other = type;

    EXPECT_EQ(other.getName(), "Vec");
    EXPECT_EQ(other.getFullName(), "math::Vec");
}

TEST(UserTypeNamesTest, StayThroughSelfAssignment)
{
    PlainUserType type("Vec");
    type.rename("math::Vec");
    const PlainUserType& alias = type;

    type = alias;

    EXPECT_EQ(type.getName(), "Vec");
    EXPECT_EQ(type.getFullName(), "math::Vec");
}

TEST_F(UserTypeTest, GlobalTypeHasItsNameAsFullName)
{
    EXPECT_EQ(vec().getName(), "Vec");
    EXPECT_EQ(vec().getFullName(), "Vec");
}

TEST_F(UserTypeTest, TypeInNamespacesHasTheirNamesBefore)
{
    UserType& type = declareType("outer::inner::Vec");

    EXPECT_EQ(type.getName(), "Vec");
    EXPECT_EQ(type.getFullName(), "outer::inner::Vec");
}

TEST_F(UserTypeTest, TypeInANamespaceIsAFieldOfIt)
{
    declareType("math::Vec");

    EXPECT_EQ(evaluate("math.Vec.__name"), "math::Vec");
    EXPECT_EQ(evaluate("rawget(_G, 'math::Vec')"), "nil");
}

TEST_F(UserTypeTest, TypesOfOneNameInTwoScopesAreTwo)
{
    declareType("math::Vec");
    run("a = Vec.new()  b = math.Vec.new()");

    EXPECT_EQ(evaluate("getmetatable(a) == Vec"), "true");
    EXPECT_EQ(evaluate("getmetatable(b) == math.Vec"), "true");
    EXPECT_EQ(evaluate("Vec == math.Vec"), "false");
}

TEST_F(UserTypeTest, TypeIsTheMetatableOfItsInstances)
{
    EXPECT_EQ(evaluate("getmetatable(Vec.new()) == Vec"), "true");
}

TEST_F(UserTypeTest, InstanceIsUserdata)
{
    EXPECT_EQ(evaluate("type(Vec.new())"), "userdata");
}

TEST_F(UserTypeTest, TableHasNothingButItsEntries)
{
    run("names = {} for name in pairs(Vec) do names[#names + 1] = name end table.sort(names)");

    EXPECT_EQ(
        evaluate("table.concat(names, ' ')"),
        "__gc __index __name __newindex disableGc enableGc new");
}

TEST_F(UserTypeTest, TableWithoutConstructorHasNoFactory)
{
    environment().setUserType("Bare");

    EXPECT_EQ(evaluate("Bare.new"), "nil");
}

TEST_F(UserTypeTest, TableWithoutDestructorHasAFinaliserAllTheSame)
{
    environment().setUserType("Bare");

    EXPECT_EQ(evaluate("type(Bare.__gc)"), "function");
}

class UserTypeEntryTest : public UserTypeFixture, public ::testing::WithParamInterface<TableEntry>
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
};

TEST_P(UserTypeEntryTest, IsInTheTable)
{
    EXPECT_EQ(
        evaluate(std::string("type(rawget(Vec, '") + GetParam().key + "'))"), GetParam().type);
}

TEST_P(UserTypeEntryTest, IsFoundOnInstances)
{
    const std::string key(GetParam().key);

    EXPECT_EQ(evaluate("Vec.new()." + key + " == rawget(Vec, '" + key + "')"), "true");
}

INSTANTIATE_TEST_SUITE_P(
    Keys,
    UserTypeEntryTest,
    ::testing::Values(
        TableEntry{"Read", "__index", "function"},
        TableEntry{"Write", "__newindex", "function"},
        TableEntry{"Name", "__name", "string"},
        TableEntry{"Finaliser", "__gc", "function"},
        TableEntry{"EnableGc", "enableGc", "function"},
        TableEntry{"DisableGc", "disableGc", "function"},
        TableEntry{"New", "new", "function"},
        TableEntry{"Method", "length", "function"},
        TableEntry{"StaticMethod", "origin", "function"},
        TableEntry{"BinaryOperator", "__add", "function"},
        TableEntry{"TextOperator", "__tostring", "function"},
        TableEntry{"ArrayRead", "__arrayRead", "function"}),
    RowName());

TEST_F(UserTypeTest, ArrayWriteIsNoEntry)
{
    declareArrayAccess();

    EXPECT_EQ(evaluate("rawget(Vec, '__arrayWrite')"), "nil");
}

TEST_F(UserTypeTest, FieldIsNoEntry)
{
    declareField("x", &Vec::x);

    EXPECT_EQ(evaluate("rawget(Vec, 'x')"), "nil");
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

TEST_F(UserTypeTest, FactoryGivesOneResult)
{
    EXPECT_EQ(evaluate("select('#', Vec.new(1, 2, 3))"), "1");
}

TEST_F(UserTypeTest, FactoryBoxesWhatTheConstructorReturns)
{
    vec().setConstructor([this](const Parameters&) { return &m_hostObject; });

    run("v = Vec.new()  v:disableGc()");

    EXPECT_EQ(environment().getObject("v", "Vec"), &m_hostObject);
}

TEST_F(UserTypeTest, FactoryBoxesANullObjectToo)
{
    vec().setConstructor([](const Parameters&) { return nullptr; });
    vec().setDestructor([](void*) {});

    run("v = Vec.new()");

    EXPECT_EQ(evaluate("getmetatable(v) == Vec"), "true");
    EXPECT_EQ(environment().getObject("v", "Vec"), nullptr);
}

TEST_F(UserTypeTest, NewConstructorServesFactoriesThatScriptsKept)
{
    run("make = Vec.new");
    vec().setConstructor([this](const Parameters&) { return &m_hostObject; });

    run("v = make()  v:disableGc()");

    EXPECT_EQ(environment().getObject("v", "Vec"), &m_hostObject);
}

TEST_F(UserTypeTest, NewConstructorGivesTheTableItsFactoryAgain)
{
    run("Vec.new = nil");

    setMaker(vec());

    EXPECT_EQ(evaluate("type(Vec.new)"), "function");
}

TEST_F(UserTypeTest, NewDestructorServesInstancesMadeBefore)
{
    run("v = Vec.new()");
    std::vector<void*> destroyed;
    vec().setDestructor([&destroyed](void* object) { destroyed.push_back(object); });

    run("v = nil");
    collect();

    EXPECT_THAT(destroyed, ElementsAre(&m_made[0]));
    EXPECT_THAT(m_destroyed, IsEmpty());
}

TEST_F(UserTypeTest, DeclaredAgainIsTheSameObjectAndTable)
{
    UserType* const first = &vec();
    run("before = Vec");

    UserType* const second = environment().setUserType("Vec");

    EXPECT_EQ(second, first);
    EXPECT_EQ(evaluate("before == Vec"), "true");
    EXPECT_THAT(
        m_log.takeEntries(),
        ElementsAre(LogEntry{
            "User type 'Vec' already existant. Resetting its state before returning it. This "
            "might hold unexpected results.",
            "Environment"}));
}

TEST_F(UserTypeTest, DeclaredAgainLeavesWhatAScriptPutInItsPlace)
{
    run("Vec = 'mine'");

    environment().setUserType("Vec");
    m_log.takeEntries(); // that it was declared already

    EXPECT_EQ(evaluate("Vec"), "mine");
}

TEST_F(UserTypeTest, DeclaredAgainKeepsConstructorAndDestructor)
{
    environment().setUserType("Vec");
    m_log.takeEntries(); // that it was declared already

    run("Vec.new()");
    collect();

    EXPECT_THAT(m_destroyed, ElementsAre(&m_made[0]));
}

TEST_F(UserTypeTest, DeclaredAgainDropsMethodsAndFields)
{
    declareField("x", &Vec::x);
    declareMethod("length", {}, [](const Parameters&) { return 1; });

    environment().setUserType("Vec");
    m_log.takeEntries(); // that it was declared already

    EXPECT_EQ(evaluate("Vec.new().x"), "nil");
    EXPECT_EQ(evaluate("Vec.new().length"), "nil");
    EXPECT_EQ(vec().getMethod("length"), nullptr);
}

class UserTypeReservedNameTest : public UserTypeFixture,
                                 public ::testing::WithParamInterface<ReservedName>
{
};

TEST_P(UserTypeReservedNameTest, CannotBeDeclared)
{
    const std::string name(GetParam().name);

    UserType* const type = environment().setUserType(name);

    EXPECT_EQ(type, nullptr);
    EXPECT_EQ(environment().getUserType(name), nullptr);
    EXPECT_THAT(
        m_log.takeEntries(),
        ElementsAre(LogEntry{
            "The interpreter uses the name '" + name + "' itself. It can't be declared.",
            "LuaUserType"}));
}

TEST_P(UserTypeReservedNameTest, LeavesTheInterpretersOwnAlone)
{
    environment().setUserType(GetParam().name);
    m_log.takeEntries(); // that it cannot be declared

    EXPECT_EQ(evaluate(std::string("rawget(_G, '") + GetParam().name + "')"), "nil");
    EXPECT_EQ(evaluate("io.type(io.stdout)"), "file");
    EXPECT_EQ(evaluate("require('math') == math"), "true");
}

INSTANTIATE_TEST_SUITE_P(
    Names,
    UserTypeReservedNameTest,
    ::testing::Values(
        ReservedName{"FileHandles", "FILE*"}, ReservedName{"LoadedModules", "_LOADED"}),
    RowName());

TEST_F(UserTypeTest, WorksWithAnyName)
{
    UserType& type = declareType("a name, with blanks");
    type.setStaticMethod("f")->setFunction([](const Parameters&) { return 7; });

    EXPECT_EQ(evaluate("_G['a name, with blanks'].f()"), "7");
    EXPECT_EQ(evaluate("_G['a name, with blanks'].__name"), "a name, with blanks");
}

TEST_F(UserTypeTest, EmptyNameIsAName)
{
    UserType* const type = environment().setUserType("");

    ASSERT_NE(type, nullptr);
    setMaker(*type);
    EXPECT_EQ(evaluate("getmetatable(_G[''].new()) == _G['']"), "true");
}

TEST_F(UserTypeTest, SharesTheTableOfANamespaceOfItsName)
{
    Namespace* const scope = environment().setNamespace("Vec");

    scope->setVar("dimensions", 2);

    EXPECT_EQ(evaluate("Vec.new().dimensions"), "2");
}

} // namespace tbScripts::test

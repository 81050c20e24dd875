// Namespaces in the registry of an environment.

#include "support/CountedObject.h"
#include "support/NamespaceFixture.h"
#include "support/RowName.h"

namespace tbScripts::test
{

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class EnvironmentNamespacesTest : public NamespaceFixture
{
protected:
    static LogEntry alreadyExistant(const std::string& name)
    {
        return {
            "Namespace '" + name +
                "' already existant. Returning it as-is, this might hold unexpected results.",
            "Environment"};
    }

    static LogEntry withoutInterpreter()
    {
        return {
            "Requesting a namespace in environment 'world', which has no InterpreterType. This "
            "will have no effect, returning nullptr.",
            "Environment"};
    }

    void TearDown() override
    {
        EXPECT_THAT(m_log.takeEntries(), IsEmpty());
        destroyEnvironment();
        if (m_isDisabled)
            m_log.takeEntries(); // without interpreter the teardown warns
        NamespaceFixture::TearDown();
    }

    // Leaves the environment without interpreter and without unread entries.
    void disable()
    {
        environment().setEnvironmentFor(INTERPRETER_UNKNOWN);
        m_log.takeEntries();
        m_isDisabled = true;
    }

    // Starts the interpreter anew; what was declared is inert then.
    void restart() { environment().setEnvironmentFor(INTERPRETER_LUA); }

    bool m_isDisabled = false;
};

TEST_F(EnvironmentNamespacesTest, DeclaredNamespaceIsFound)
{
    EXPECT_TRUE(environment().isNamespaceSet("a"));
    EXPECT_EQ(environment().getNamespace("a"), &scope());
}

TEST_F(EnvironmentNamespacesTest, UnknownNamespaceIsNotFound)
{
    EXPECT_FALSE(environment().isNamespaceSet("b"));
    EXPECT_EQ(environment().getNamespace("b"), nullptr);
    EXPECT_FALSE(environment().isVarSet("b"));
}

TEST_F(EnvironmentNamespacesTest, TablesOfScriptsAreNoDeclaredNamespaces)
{
    run("b = {}");

    EXPECT_FALSE(environment().isNamespaceSet("b"));
    EXPECT_EQ(environment().getNamespace("b"), nullptr);
}

TEST_F(EnvironmentNamespacesTest, GlobalRemovedByAScriptStaysDeclared)
{
    run("a = nil");

    EXPECT_EQ(environment().getNamespace("a"), &scope());
}

TEST_F(EnvironmentNamespacesTest, NamespaceWithoutItsGlobalCanStillBeFilled)
{
    run("kept = a a = nil");

    scope().setVar("v", 5);

    run("assert(kept.v == 5)");
}

TEST_F(EnvironmentNamespacesTest, RepeatedDeclarationGivesTheSameWithAWarning)
{
    Namespace* const second = environment().setNamespace("a");

    EXPECT_EQ(second, &scope());
    EXPECT_THAT(m_log.takeEntries(), ElementsAre(alreadyExistant("a")));
}

TEST_F(EnvironmentNamespacesTest, RepeatedDeclarationResetsNothing)
{
    scope().setVar("v", 5);
    bindAnswer(scope().setFunction("f"), 42);

    environment().setNamespace("a");

    run("assert(a.v == 5 and a.f() == 42)");
    m_log.takeEntries();
}

// Only a change of interpreter publishes again.
TEST_F(EnvironmentNamespacesTest, RepeatedDeclarationKeepsAScriptsOwnValue)
{
    run("a = 5");

    environment().setNamespace("a");

    EXPECT_EQ(environment().getVar("a", 0), 5);
    m_log.takeEntries();
}

TEST_F(EnvironmentNamespacesTest, HundredNamespacesKeepTheirPointers)
{
    std::vector<Namespace*> declared;
    for (int i = 0; i < 100; ++i)
        declared.push_back(environment().setNamespace("n" + std::to_string(i)));

    for (int i = 0; i < 100; ++i)
        EXPECT_EQ(
            environment().getNamespace("n" + std::to_string(i)),
            declared.at(static_cast<std::size_t>(i)));
}

TEST_F(EnvironmentNamespacesTest, NamesWithNulBytesAreApart)
{
    const tbMemory::StringView name("a\0b", 3);

    Namespace* const other = environment().setNamespace(name);

    EXPECT_NE(other, &scope());
    EXPECT_EQ(environment().getNamespace(name), other);
    EXPECT_EQ(environment().getNamespace("a"), &scope());
}

// They share what scripts see.
TEST_F(EnvironmentNamespacesTest, UserTypeOfTheSameNameSharesTheTable)
{
    scope().setVar("v", 5);

    makeCounted(environment().setUserType("a"));

    run("assert(a.v == 5 and a.new())");
    EXPECT_THAT(m_log.takeEntries(), IsEmpty());
}

TEST_F(EnvironmentNamespacesTest, NamespaceOfATypesNameSharesTheTable)
{
    makeCounted(environment().setUserType("T"));

    environment().setNamespace("T")->setVar("v", 5);

    run("assert(T.v == 5 and T.new())");
    EXPECT_THAT(m_log.takeEntries(), IsEmpty());
}

TEST_F(EnvironmentNamespacesTest, ClearingTakesTheEntriesOfATypeOfTheSameNameButItsFinaliser)
{
    int object = 0;
    int destroyed = 0;
    UserType* const type = environment().setUserType("a");
    type->setConstructor([&object](const Parameters&) { return &object; });
    type->setDestructor([&destroyed](void*) { ++destroyed; });
    run("t = a.new()");

    scope().clear();

    run("assert(next(a) == '__gc' and next(a, '__gc') == nil)");
    run("t = nil collectgarbage()");
    EXPECT_EQ(destroyed, 1);
}

TEST_F(EnvironmentNamespacesTest, InnerUserTypeOfTheSameNameSharesTheTable)
{
    scope().setNamespace("b")->setVar("v", 5);

    makeCounted(scope().setUserType("b"));

    run("assert(a.b.v == 5 and a.b.new())");
}

TEST_F(EnvironmentNamespacesTest, SharedTablesEndInSilence)
{
    makeCounted(environment().setUserType("a"));
    makeCounted(scope().setUserType("b"));
    scope().setNamespace("b")->setFunction("f");
    run("first = a.new() second = a.b.new()");

    destroyEnvironment();

    EXPECT_EQ(CountedObject::getLiving(), 0);
    EXPECT_THAT(m_log.takeEntries(), IsEmpty());
}

// Declared under no interpreter: the entry is null, and there.

TEST_F(EnvironmentNamespacesTest, DeclarationWithoutInterpreterIsNull)
{
    disable();

    Namespace* const declared = environment().setNamespace("b");

    EXPECT_EQ(declared, nullptr);
    EXPECT_THAT(m_log.takeEntries(), ElementsAre(withoutInterpreter()));
}

TEST_F(EnvironmentNamespacesTest, NullEntryCountsAsDeclared)
{
    disable();

    environment().setNamespace("b");

    EXPECT_TRUE(environment().isNamespaceSet("b"));
    EXPECT_EQ(environment().getNamespace("b"), nullptr);
    m_log.takeEntries();
}

TEST_F(EnvironmentNamespacesTest, NullEntryDeclaredAgainAsksAgain)
{
    disable();
    environment().setNamespace("b");
    m_log.takeEntries();

    Namespace* const declared = environment().setNamespace("b");

    EXPECT_EQ(declared, nullptr);
    EXPECT_THAT(m_log.takeEntries(), ElementsAre(alreadyExistant("b"), withoutInterpreter()));
}

TEST_F(EnvironmentNamespacesTest, NullEntryDeclaredAgainUnderLuaBecomesANamespace)
{
    disable();
    environment().setNamespace("b");
    restart();
    m_log.takeEntries();

    Namespace* const declared = environment().setNamespace("b");

    ASSERT_NE(declared, nullptr);
    EXPECT_EQ(environment().getNamespace("b"), declared);
    EXPECT_THAT(m_log.takeEntries(), ElementsAre(alreadyExistant("b")));
    run("assert(type(b) == 'table')");
}

TEST_F(EnvironmentNamespacesTest, NullEntriesEndWithTheEnvironment)
{
    disable();
    environment().setNamespace("b");
    restart();
    m_log.takeEntries();

    destroyEnvironment();

    EXPECT_THAT(m_log.takeEntries(), IsEmpty());
}

// A global that cannot be set gives null too.

TEST_F(EnvironmentNamespacesTest, RefusedGlobalIsLoggedAndGivesNull)
{
    run("setmetatable(_G, {__newindex = function() error('strict', 0) end})");

    Namespace* const declared = environment().setNamespace("b");

    EXPECT_EQ(declared, nullptr);
    EXPECT_TRUE(environment().isNamespaceSet("b"));
    EXPECT_THAT(m_log.takeEntries(), ElementsAre(LogEntry{"strict", "LuaEnvironment"}));
    run("setmetatable(_G, nil)");
}

TEST_F(EnvironmentNamespacesTest, RefusedGlobalMayBeDeclaredAgain)
{
    run("setmetatable(_G, {__newindex = function() error('strict', 0) end})");
    environment().setNamespace("b");
    run("setmetatable(_G, nil)");
    m_log.takeEntries();

    Namespace* const declared = environment().setNamespace("b");

    EXPECT_NE(declared, nullptr);
    EXPECT_THAT(m_log.takeEntries(), ElementsAre(alreadyExistant("b")));
    run("assert(type(b) == 'table')");
}

TEST_F(EnvironmentNamespacesTest, RaisingReadsOfGlobalsDisturbNoDeclaration)
{
    run("setmetatable(_G, {__index = function() error('strict', 0) end})");

    EXPECT_NE(environment().setNamespace("b"), nullptr);

    EXPECT_THAT(m_log.takeEntries(), IsEmpty());
}

// Copies.

TEST_F(EnvironmentNamespacesTest, CopyKnowsTheNamespaces)
{
    const Environment copy(environment());

    EXPECT_TRUE(copy.isNamespaceSet("a"));
    EXPECT_EQ(copy.getNamespace("a"), &scope());
}

TEST_F(EnvironmentNamespacesTest, CopyDoesNotKnowWhatIsDeclaredLater)
{
    const Environment copy(environment());

    Namespace* const inner = scope().setNamespace("b");
    environment().setNamespace("later");

    EXPECT_FALSE(copy.isNamespaceSet("later"));
    EXPECT_EQ(copy.getNamespace("a::b"), inner); // that one the namespace knows
}

TEST_F(EnvironmentNamespacesTest, NamespaceLivesAsLongAsTheLastCopy)
{
    Environment copy(environment());
    bindAnswer(scope().setFunction("f"), 42);

    destroyEnvironment();

    EXPECT_TRUE(runScript(copy, "assert(a.f() == 42)"));
    EXPECT_NE(copy.getNamespace("a")->setFunction("g"), nullptr);
}

namespace
{

/// A key of the interpreter's registry.
struct ReservedNameRow
{
    const char* row;
    const char* name;
};

std::ostream& operator<<(std::ostream& stream, const ReservedNameRow& row)
{
    return stream << row.row;
}

} // namespace

class ReservedNamespaceTest : public NamespaceFixture,
                              public ::testing::WithParamInterface<ReservedNameRow>
{
protected:
    static LogEntry reserved()
    {
        return {
            "The interpreter uses the name '" + std::string(GetParam().name) +
                "' itself. It can't be declared.",
            "LuaNamespace"};
    }
};

INSTANTIATE_TEST_SUITE_P(
    Names,
    ReservedNamespaceTest,
    ::testing::Values(
        ReservedNameRow{"LoadedModules", "_LOADED"},
        ReservedNameRow{"PreloadedModules", "_PRELOAD"},
        ReservedNameRow{"Files", "FILE*"}),
    RowName());

TEST_P(ReservedNamespaceTest, IsRefused)
{
    Namespace* const declared = environment().setNamespace(GetParam().name);

    EXPECT_EQ(declared, nullptr);
    EXPECT_THAT(m_log.takeEntries(), ElementsAre(reserved()));
}

TEST_P(ReservedNamespaceTest, IsRefusedOnTheWayOfAQualifiedName)
{
    UserType* const type = environment().setUserType(std::string(GetParam().name) + "::T");

    EXPECT_EQ(type, nullptr);
    EXPECT_THAT(m_log.takeEntries(), ElementsAre(reserved()));
}

TEST_P(ReservedNamespaceTest, LeavesTheInterpreterAsItWas)
{
    environment().setNamespace(GetParam().name);

    EXPECT_FALSE(environment().isVarSet(GetParam().name));
    run("assert(require('string') == string and tostring(io.stdout):find('file'))");
    m_log.takeEntries();
}

TEST_P(ReservedNamespaceTest, CountsAsDeclaredAllTheSame)
{
    environment().setNamespace(GetParam().name);

    EXPECT_TRUE(environment().isNamespaceSet(GetParam().name));
    EXPECT_EQ(environment().getNamespace(GetParam().name), nullptr);
    m_log.takeEntries();
}

TEST_P(ReservedNamespaceTest, IsFreeInsideAnotherNamespace)
{
    Namespace* const inner = scope().setNamespace(GetParam().name);

    ASSERT_NE(inner, nullptr);
    inner->setVar("v", 5);
    run("assert(a['" + std::string(GetParam().name) + "'].v == 5)");
}

} // namespace tbScripts::test

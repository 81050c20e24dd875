// User types in the registry of an environment, and what a change of interpreter makes of them.

#include "support/CountedObject.h"
#include "support/NamespaceFixture.h"

namespace tbScripts::test
{

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class EnvironmentUserTypesTest : public NamespaceFixture
{
protected:
    static LogEntry alreadyExistant(const std::string& name)
    {
        return {
            "User type '" + name +
                "' already existant. Resetting its state before returning it. This might hold "
                "unexpected results.",
            "Environment"};
    }

    static LogEntry withoutInterpreter()
    {
        return {
            "Requesting a user type in environment 'world', which has no InterpreterType. This "
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

    // Gives `type` a method, a static method, a field and array access.
    static void fill(UserType* type)
    {
        const auto give = [](const Parameters&) { return FunctionParameter(42); };
        type->setMethod("method", false)->setFunction(give);
        type->setStaticMethod("make")->setFunction(give);
        UserTypeFieldDescriptor field;
        field.name = "field";
        field.getter = [](void*) { return FunctionParameter(42); };
        type->setField(field);
        UserTypeArrayDescriptor array;
        array.read = give;
        type->setArrayAccess(array);
    }

    bool m_isDisabled = false;
};

TEST_F(EnvironmentUserTypesTest, DeclaredTypeHasItsNames)
{
    UserType* const type = environment().setUserType("T");

    ASSERT_NE(type, nullptr);
    EXPECT_EQ(type->getName(), "T");
    EXPECT_EQ(type->getFullName(), "T");
    EXPECT_THAT(m_log.takeEntries(), IsEmpty());
}

TEST_F(EnvironmentUserTypesTest, DeclaredTypeIsAGlobal)
{
    environment().setVar("T", 5);

    makeCounted(environment().setUserType("T"));

    run("assert(getmetatable(T.new()) == T)");
}

TEST_F(EnvironmentUserTypesTest, DeclaredTypeIsFound)
{
    UserType* const type = environment().setUserType("T");

    EXPECT_TRUE(environment().isUserTypeSet("T"));
    EXPECT_EQ(environment().getUserType("T"), type);
}

TEST_F(EnvironmentUserTypesTest, UnknownTypeIsNotFound)
{
    run("U = {}");

    EXPECT_FALSE(environment().isUserTypeSet("T"));
    EXPECT_EQ(environment().getUserType("T"), nullptr);
    EXPECT_FALSE(environment().isUserTypeSet("U"));
    EXPECT_FALSE(environment().isUserTypeSet("a"));
    EXPECT_FALSE(environment().isVarSet("T"));
}

TEST_F(EnvironmentUserTypesTest, TheThreeRegistriesAreApart)
{
    environment().setFunc("x");
    environment().setUserType("y");
    environment().setNamespace("z");

    EXPECT_FALSE(environment().isUserTypeSet("x") || environment().isNamespaceSet("x"));
    EXPECT_FALSE(environment().isFuncSet("y") || environment().isNamespaceSet("y"));
    EXPECT_FALSE(environment().isFuncSet("z") || environment().isUserTypeSet("z"));
}

TEST_F(EnvironmentUserTypesTest, RepeatedDeclarationGivesTheSameWithAWarning)
{
    UserType* const first = environment().setUserType("T");

    UserType* const second = environment().setUserType("T");

    EXPECT_EQ(first, second);
    EXPECT_THAT(m_log.takeEntries(), ElementsAre(alreadyExistant("T")));
}

TEST_F(EnvironmentUserTypesTest, RepeatedDeclarationDropsMethodsAndFields)
{
    UserType* const type = environment().setUserType("T");
    makeCounted(type);
    fill(type);
    run("t = T.new() assert(t.field == 42 and t:method() == 42 and T.make() == 42 and t[1] == 42)");

    environment().setUserType("T");

    run("assert(t.field == nil and t.method == nil and T.make == nil and t[1] == nil)");
    EXPECT_EQ(type->getMethod("method"), nullptr);
    m_log.takeEntries();
}

TEST_F(EnvironmentUserTypesTest, RepeatedDeclarationKeepsConstructorAndDestructor)
{
    makeCounted(environment().setUserType("T"));

    environment().setUserType("T");

    run("T.new() collectgarbage()");
    EXPECT_EQ(CountedObject::getMade(), 1);
    EXPECT_EQ(CountedObject::getLiving(), 0);
    m_log.takeEntries();
}

// Only a change of interpreter publishes again.
TEST_F(EnvironmentUserTypesTest, RepeatedDeclarationKeepsAScriptsOwnValue)
{
    environment().setUserType("T");
    run("T = 5");

    environment().setUserType("T");

    EXPECT_EQ(environment().getVar("T", 0), 5);
    m_log.takeEntries();
}

// Declared under no interpreter: the entry is null, and there.

TEST_F(EnvironmentUserTypesTest, DeclarationWithoutInterpreterIsNull)
{
    disable();

    UserType* const type = environment().setUserType("T");

    EXPECT_EQ(type, nullptr);
    EXPECT_THAT(m_log.takeEntries(), ElementsAre(withoutInterpreter()));
}

TEST_F(EnvironmentUserTypesTest, NullEntryCountsAsDeclared)
{
    disable();

    environment().setUserType("T");

    EXPECT_TRUE(environment().isUserTypeSet("T"));
    EXPECT_EQ(environment().getUserType("T"), nullptr);
    m_log.takeEntries();
}

TEST_F(EnvironmentUserTypesTest, NullEntryDeclaredAgainAsksAgain)
{
    disable();
    environment().setUserType("T");
    m_log.takeEntries();

    UserType* const type = environment().setUserType("T");

    EXPECT_EQ(type, nullptr);
    EXPECT_THAT(m_log.takeEntries(), ElementsAre(alreadyExistant("T"), withoutInterpreter()));
}

TEST_F(EnvironmentUserTypesTest, NullEntryDeclaredAgainUnderLuaBecomesAType)
{
    disable();
    environment().setUserType("T");
    restart();
    m_log.takeEntries();

    UserType* const type = environment().setUserType("T");

    ASSERT_NE(type, nullptr);
    EXPECT_EQ(environment().getUserType("T"), type);
    EXPECT_THAT(m_log.takeEntries(), ElementsAre(alreadyExistant("T")));
    run("assert(type(T) == 'table')");
}

TEST_F(EnvironmentUserTypesTest, NullEntriesEndWithTheEnvironment)
{
    disable();
    environment().setUserType("T");
    restart();
    m_log.takeEntries();

    destroyEnvironment();

    EXPECT_THAT(m_log.takeEntries(), IsEmpty());
}

// A global that cannot be set gives null too.

TEST_F(EnvironmentUserTypesTest, RefusedGlobalIsLoggedAndGivesNull)
{
    run("setmetatable(_G, {__newindex = function() error('strict', 0) end})");

    UserType* const type = environment().setUserType("T");

    EXPECT_EQ(type, nullptr);
    EXPECT_TRUE(environment().isUserTypeSet("T"));
    EXPECT_THAT(m_log.takeEntries(), ElementsAre(LogEntry{"strict", "LuaEnvironment"}));
    run("setmetatable(_G, nil)");
}

TEST_F(EnvironmentUserTypesTest, RefusedGlobalMayBeDeclaredAgain)
{
    run("setmetatable(_G, {__newindex = function() error('strict', 0) end})");
    environment().setUserType("T");
    run("setmetatable(_G, nil)");
    m_log.takeEntries();

    UserType* const type = environment().setUserType("T");

    EXPECT_NE(type, nullptr);
    EXPECT_THAT(m_log.takeEntries(), ElementsAre(alreadyExistant("T")));
    run("assert(type(T) == 'table')");
}

// Types that were made for an earlier interpreter.

TEST_F(EnvironmentUserTypesTest, TypeStaysRegisteredOverASwitch)
{
    UserType* const type = environment().setUserType("T");

    restart();

    EXPECT_TRUE(environment().isUserTypeSet("T"));
    EXPECT_EQ(environment().getUserType("T"), type);
    EXPECT_FALSE(environment().isVarSet("T"));
}

TEST_F(EnvironmentUserTypesTest, InertTypeDeclaresNothing)
{
    UserType* const type = environment().setUserType("T");
    restart();

    EXPECT_EQ(type->setMethod("m", false), nullptr);
    EXPECT_EQ(type->setStaticMethod("s"), nullptr);
    makeCounted(type);
    type->clear();

    EXPECT_FALSE(environment().isVarSet("T"));
    EXPECT_THAT(m_log.takeEntries(), IsEmpty());
}

TEST_F(EnvironmentUserTypesTest, InertTypeStillGivesItsMethods)
{
    UserType* const type = environment().setUserType("T");
    Function* const method = type->setMethod("m", false);

    restart();

    EXPECT_EQ(type->getMethod("m"), method);
}

TEST_F(EnvironmentUserTypesTest, InertTypeDeclaredAgainIsTheSameAndPublished)
{
    UserType* const before = environment().setUserType("T");
    restart();

    UserType* const after = environment().setUserType("T");

    EXPECT_EQ(before, after);
    EXPECT_THAT(m_log.takeEntries(), ElementsAre(alreadyExistant("T")));
    run("assert(type(T) == 'table')");
}

TEST_F(EnvironmentUserTypesTest, InertTypeDeclaredAgainHasConstructorAndDestructorOnly)
{
    UserType* const type = environment().setUserType("T");
    makeCounted(type);
    fill(type);
    restart();

    environment().setUserType("T");

    run("t = T.new() assert(t.field == nil and t.method == nil and T.make == nil and t[1] == nil)");
    run("t = nil collectgarbage()");
    EXPECT_EQ(CountedObject::getMade(), 1);
    EXPECT_EQ(CountedObject::getLiving(), 0);
    m_log.takeEntries();
}

TEST_F(EnvironmentUserTypesTest, InertTypeDeclaredAgainCanBeFilled)
{
    UserType* const type = environment().setUserType("T");
    makeCounted(type);
    fill(type);
    restart();

    fill(environment().setUserType("T"));

    run("t = T.new() assert(t.field == 42 and t:method() == 42 and T.make() == 42 and t[1] == 42)");
    m_log.takeEntries();
}

TEST_F(EnvironmentUserTypesTest, InertTypeDeclaredTwiceIsPublishedOnce)
{
    environment().setUserType("T");
    restart();
    environment().setUserType("T");
    run("T = 5");

    environment().setUserType("T");

    EXPECT_EQ(environment().getVar("T", 0), 5);
    m_log.takeEntries();
}

TEST_F(EnvironmentUserTypesTest, InertTypeDeclaredAgainWithoutInterpreterIsTheSame)
{
    UserType* const before = environment().setUserType("T");
    disable();

    UserType* const after = environment().setUserType("T");

    EXPECT_EQ(before, after);
    EXPECT_THAT(m_log.takeEntries(), ElementsAre(alreadyExistant("T")));
}

TEST_F(EnvironmentUserTypesTest, InertTypeEndsWithTheEnvironment)
{
    UserType* const type = environment().setUserType("T");
    fill(type);
    type->setDestructor([counted = CountedObject()](void*) {});
    restart();
    ASSERT_EQ(CountedObject::getLiving(), 1);

    destroyEnvironment();

    EXPECT_EQ(CountedObject::getLiving(), 0);
    EXPECT_THAT(m_log.takeEntries(), IsEmpty());
}

// Copies.

TEST_F(EnvironmentUserTypesTest, CopyKnowsTheTypes)
{
    UserType* const type = environment().setUserType("T");

    const Environment copy(environment());

    EXPECT_TRUE(copy.isUserTypeSet("T"));
    EXPECT_EQ(copy.getUserType("T"), type);
}

TEST_F(EnvironmentUserTypesTest, CopyDoesNotKnowWhatIsDeclaredLater)
{
    const Environment copy(environment());

    environment().setUserType("T");

    EXPECT_FALSE(copy.isUserTypeSet("T"));
}

TEST_F(EnvironmentUserTypesTest, TypeLivesAsLongAsTheLastCopy)
{
    Environment copy(environment());
    makeCounted(environment().setUserType("T"));

    destroyEnvironment();

    EXPECT_TRUE(runScript(copy, "t = T.new()"));
    EXPECT_EQ(CountedObject::getLiving(), 1);
}

} // namespace tbScripts::test

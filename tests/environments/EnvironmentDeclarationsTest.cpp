// What functions, user types and namespaces have in common in the registry of an environment: how
// they are declared, found, declared again, and what a change of interpreter makes of them.

#include "support/NamespaceFixture.h"

#include <map>
#include <string>
#include <type_traits>

namespace tbScripts::test
{

namespace
{

struct Functions
{
    static auto* declare(Environment& owner, const tbMemory::StringView& name)
    {
        return owner.setFunc(name);
    }

    static auto* find(const Environment& owner, const tbMemory::StringView& name)
    {
        return owner.getFunc(name);
    }

    static bool isSet(const Environment& owner, const char* name) { return owner.isFuncSet(name); }

    static constexpr const char* scriptType = "function";
    static constexpr const char* requested = "a function";
    static constexpr const char* repeated =
        "Function 'x' already existant. Resetting its state before returning it. This might break "
        "previous usage of the function.";
};

struct UserTypes
{
    static auto* declare(Environment& owner, const tbMemory::StringView& name)
    {
        return owner.setUserType(name);
    }

    static auto* find(const Environment& owner, const tbMemory::StringView& name)
    {
        return owner.getUserType(name);
    }

    static bool isSet(const Environment& owner, const char* name)
    {
        return owner.isUserTypeSet(name);
    }

    static constexpr const char* scriptType = "table";
    static constexpr const char* requested = "a user type";
    static constexpr const char* repeated =
        "User type 'x' already existant. Resetting its state before returning it. This might hold "
        "unexpected results.";
};

struct Namespaces
{
    static auto* declare(Environment& owner, const tbMemory::StringView& name)
    {
        return owner.setNamespace(name);
    }

    static auto* find(const Environment& owner, const tbMemory::StringView& name)
    {
        return owner.getNamespace(name);
    }

    static bool isSet(const Environment& owner, const char* name)
    {
        return owner.isNamespaceSet(name);
    }

    static constexpr const char* scriptType = "table";
    static constexpr const char* requested = "a namespace";
    static constexpr const char* repeated =
        "Namespace 'x' already existant. Returning it as-is, this might hold unexpected results.";
};

struct KindName
{
    template <typename Kind>
    static std::string GetName(int)
    {
        return std::is_same_v<Kind, Functions>   ? "Functions"
               : std::is_same_v<Kind, UserTypes> ? "UserTypes"
                                                 : "Namespaces";
    }
};

} // namespace

// Everything is called "x".
template <typename Kind>
class EnvironmentDeclarationsTest : public NamespaceFixture
{
protected:
    void TearDown() override
    {
        expectLogged({});
        destroyEnvironment();
        if (m_isDisabled)
            forgetLog(); // without interpreter the teardown warns
        NamespaceFixture::TearDown();
    }

    // Leaves the environment without interpreter and without unread entries.
    void disable()
    {
        environment().setEnvironmentFor(INTERPRETER_UNKNOWN);
        forgetLog();
        m_isDisabled = true;
    }

    auto* declare(const tbMemory::StringView& name = "x")
    {
        return Kind::declare(environment(), name);
    }

    auto* find(const tbMemory::StringView& name = "x") { return Kind::find(environment(), name); }

    bool isSet() { return Kind::isSet(environment(), "x"); }

    void isPublished() { is("type(x)", Kind::scriptType); }

    void logsRepetition() { expectLogged(Kind::repeated, "Environment"); }

    // Has every new global refused.
    void lockGlobals()
    {
        run("setmetatable(_G, {__newindex = function() error('strict', 0) end})");
    }

    static LogEntry withoutInterpreter()
    {
        return {
            std::string("Requesting ") + Kind::requested +
                " in environment 'world', which has no InterpreterType. This will have no effect, "
                "returning nullptr.",
            "Environment"};
    }

    bool m_isDisabled = false;
};

using Kinds = ::testing::Types<Functions, UserTypes, Namespaces>;
TYPED_TEST_SUITE(EnvironmentDeclarationsTest, Kinds, KindName);

TYPED_TEST(EnvironmentDeclarationsTest, DeclaredOneIsFound)
{
    auto* const declared = this->declare();
    ASSERT_NE(declared, nullptr);
    EXPECT_EQ(declared->getName(), "x");
    EXPECT_TRUE(this->isSet());
    EXPECT_EQ(this->find(), declared);
}

TYPED_TEST(EnvironmentDeclarationsTest, FirstDeclarationReplacesAGlobalInSilence)
{
    this->environment().setVar("x", 5);
    this->declare();
    this->expectLogged({});
    this->isPublished();
}

TYPED_TEST(EnvironmentDeclarationsTest, UnknownOneIsNotFound)
{
    EXPECT_FALSE(this->isSet());
    EXPECT_EQ(this->find(), nullptr);
    EXPECT_FALSE(this->environment().isVarSet("x"));
}

TYPED_TEST(EnvironmentDeclarationsTest, GlobalsOfScriptsAreNotDeclared)
{
    for (const char* const code : {"x = {}", "function x() end"})
    {
        this->run(code);
        EXPECT_FALSE(this->isSet());
        EXPECT_EQ(this->find(), nullptr);
    }
}

TYPED_TEST(EnvironmentDeclarationsTest, GlobalRemovedByAScriptStaysDeclared)
{
    auto* const declared = this->declare();
    this->run("x = nil");
    EXPECT_EQ(this->find(), declared);
}

TYPED_TEST(EnvironmentDeclarationsTest, NamesWithNulBytesAreApart)
{
    const tbMemory::StringView name("x\0b", 3);
    auto* const first = this->declare();
    auto* const other = this->declare(name);
    EXPECT_NE(other, first);
    EXPECT_EQ(this->find(name), other);
    EXPECT_EQ(this->find(), first);
}

TYPED_TEST(EnvironmentDeclarationsTest, ManyKeepTheirPointers)
{
    std::map<std::string, const void*> declared;
    for (int i = 0; i < 1000; ++i)
        declared["n" + std::to_string(i)] = this->declare("n" + std::to_string(i));
    for (const auto& [name, pointer] : declared)
        ASSERT_EQ(this->find(name), pointer);
}

TYPED_TEST(EnvironmentDeclarationsTest, RepeatedDeclarationGivesTheSameWithAWarning)
{
    auto* const first = this->declare();
    EXPECT_EQ(this->declare(), first);
    this->logsRepetition();
}

// A script keeps what it wrote over a global: only a change of interpreter publishes again.
TYPED_TEST(EnvironmentDeclarationsTest, RepeatedDeclarationKeepsAScriptsOwnValue)
{
    this->declare();
    this->run("x = 5");
    this->declare();
    this->is("x", "5");
    this->logsRepetition();
}

TYPED_TEST(EnvironmentDeclarationsTest, RepeatedDeclarationLeavesARemovedGlobalRemoved)
{
    this->declare();
    this->run("x = nil");
    this->declare();
    EXPECT_FALSE(this->environment().isVarSet("x"));
    this->logsRepetition();
}

// Declared under no interpreter: the entry is null, and there.

TYPED_TEST(EnvironmentDeclarationsTest, DeclarationWithoutInterpreterIsANullEntry)
{
    this->disable();
    EXPECT_EQ(this->declare(), nullptr);
    this->expectLogged({this->withoutInterpreter()});
    EXPECT_TRUE(this->isSet());
    EXPECT_EQ(this->find(), nullptr);
}

TYPED_TEST(EnvironmentDeclarationsTest, NullEntryDeclaredAgainAsksAgain)
{
    this->disable();
    this->declare();
    this->forgetLog();
    EXPECT_EQ(this->declare(), nullptr);
    EXPECT_TRUE(this->isSet());
    this->expectLogged({{TypeParam::repeated, "Environment"}, this->withoutInterpreter()});
}

TYPED_TEST(EnvironmentDeclarationsTest, NullEntryDeclaredAgainUnderLuaIsThere)
{
    this->disable();
    this->declare();
    this->restart();
    this->forgetLog();
    auto* const declared = this->declare();
    ASSERT_NE(declared, nullptr);
    EXPECT_EQ(this->find(), declared);
    this->logsRepetition();
    this->isPublished();
}

TYPED_TEST(EnvironmentDeclarationsTest, NullEntriesAreDestroyedInSilence)
{
    this->disable();
    this->declare();
    this->restart();
    this->forgetLog();
    this->destroyEnvironment();
    this->expectLogged({});
}

// A global that cannot be set gives null too.

TYPED_TEST(EnvironmentDeclarationsTest, RefusedGlobalIsLoggedAndGivesNull)
{
    this->lockGlobals();
    EXPECT_EQ(this->declare(), nullptr);
    EXPECT_TRUE(this->isSet());
    this->expectLogged("strict", "LuaEnvironment");
    this->run("setmetatable(_G, nil)");
}

TYPED_TEST(EnvironmentDeclarationsTest, RefusedGlobalMayBeDeclaredAgain)
{
    this->lockGlobals();
    this->declare();
    this->run("setmetatable(_G, nil)");
    this->forgetLog();
    EXPECT_NE(this->declare(), nullptr);
    this->logsRepetition();
    this->isPublished();
}

TYPED_TEST(EnvironmentDeclarationsTest, RaisingReadsOfGlobalsDisturbNoDeclaration)
{
    this->run("setmetatable(_G, {__index = function() error('strict', 0) end})");
    EXPECT_NE(this->declare(), nullptr);
    this->expectLogged({});
}

// Those that were declared for an earlier interpreter.

TYPED_TEST(EnvironmentDeclarationsTest, StaysRegisteredOverASwitchUnpublished)
{
    auto* const declared = this->declare();
    this->restart();
    EXPECT_TRUE(this->isSet());
    EXPECT_EQ(this->find(), declared);
    EXPECT_FALSE(this->environment().isVarSet("x"));
}

TYPED_TEST(EnvironmentDeclarationsTest, StaysRegisteredOverSwitchesToNoneAndBack)
{
    auto* const declared = this->declare();
    this->disable();
    this->restart();
    EXPECT_TRUE(this->isSet());
    EXPECT_EQ(this->find(), declared);
}

TYPED_TEST(EnvironmentDeclarationsTest, InertOneDeclaredAgainIsTheSameAndPublished)
{
    auto* const before = this->declare();
    this->restart();
    this->environment().setVar("x", 5);
    EXPECT_EQ(this->declare(), before);
    this->logsRepetition();
    this->isPublished();
}

TYPED_TEST(EnvironmentDeclarationsTest, InertOneDeclaredTwiceIsPublishedOnce)
{
    this->declare();
    this->restart();
    this->declare();
    this->run("x = 5");
    this->declare();
    this->is("x", "5");
    this->expectLogCount(2);
}

TYPED_TEST(EnvironmentDeclarationsTest, InertOneDeclaredAgainWithoutInterpreterIsTheSame)
{
    auto* const before = this->declare();
    this->disable();
    EXPECT_EQ(this->declare(), before);
    this->logsRepetition();
}

TYPED_TEST(EnvironmentDeclarationsTest, InertOneThatFailedToBePublishedIsByDeclaringAgain)
{
    auto* const declared = this->declare();
    this->restart();
    this->lockGlobals();
    this->declare();
    this->run("setmetatable(_G, nil)");
    this->declare();
    EXPECT_EQ(this->find(), declared);
    this->expectLogged(
        {{TypeParam::repeated, "Environment"},
         {"strict", "LuaEnvironment"},
         {TypeParam::repeated, "Environment"}});
    this->isPublished();
}

TYPED_TEST(EnvironmentDeclarationsTest, CopyKnowsThemButNotWhatIsDeclaredLater)
{
    auto* const declared = this->declare();
    const Environment copy(this->environment());
    this->declare("later");
    EXPECT_TRUE(TypeParam::isSet(copy, "x"));
    EXPECT_EQ(TypeParam::find(copy, "x"), declared);
    EXPECT_FALSE(TypeParam::isSet(copy, "later"));
}

} // namespace tbScripts::test

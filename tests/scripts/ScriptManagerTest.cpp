// The process's scripts by name.

#include "support/EnvironmentFixture.h"
#include "support/LogFixture.h"

#include <tbScripts/Environment.h>
#include <tbScripts/Script.h>
#include <tbScripts/ScriptManager.h>

#include <functional>
#include <limits>
#include <memory>
#include <set>
#include <string>
#include <utility>

namespace tbScripts::test
{

using tbMemory::StringView;

namespace
{

ScriptManager& manager()
{
    return ScriptManager::getInstanceRef();
}

void killManager()
{
    if (ScriptManager* const existing = ScriptManager::getInstanceIfExisting())
        existing->kill();
}

// Files a script that is ready to run.
Script* makeLua(const StringView& name, const StringView& sources)
{
    Script* const script = manager().createOrRetrieve(name);
    script->setTargetInterpreter(INTERPRETER_LUA);
    script->setSources(sources);
    script->load();
    return script;
}

// A second manager. Nobody can end one but the class itself, so it stays, and is emptied.
ScriptManager& copy()
{
    static ScriptManager* const copy = new ScriptManager(manager());
    return *copy;
}

// The scripts that the indices reach.
std::set<Script*> reachAll(const ScriptManager& scripts)
{
    std::set<Script*> reached;
    for (unsigned int i = 0; i < scripts.getCount(); ++i)
        reached.insert(scripts.getByIndex(i));
    return reached;
}

} // namespace

class ScriptManagerTest : public EnvironmentFixture
{
protected:
    ~ScriptManagerTest() override
    {
        killManager();
        copy() = manager();
        killManager();
    }
};

TEST_F(ScriptManagerTest, NewScriptHasItsNameAndNothingElse)
{
    const Script* const script = manager().createOrRetrieve("a");

    EXPECT_EQ(script->getName(), "a");
    EXPECT_EQ(script->getSources(), "");
    EXPECT_EQ(script->getTargetInterpreter(), 0U);
    EXPECT_TRUE(script->getLastCompilationResult().success);
}

TEST_F(ScriptManagerTest, SameNameGivesTheSameScriptAsItIsAndOneEntry)
{
    Script* const script = makeLua("a", "x = 3");

    EXPECT_EQ(manager().createOrRetrieve("a"), script);
    EXPECT_EQ(manager().get("a"), script);
    EXPECT_EQ(manager().get("b"), nullptr);
    EXPECT_EQ(manager().getCount(), 1U);
    EXPECT_EQ(script->getSources(), "x = 3");
    EXPECT_EQ(script->getTargetInterpreter(), 1U);
    EXPECT_TRUE(environment().execute(*script));
}

TEST_F(ScriptManagerTest, NamesInOtherLettersAreOtherScripts)
{
    Script* const script = manager().createOrRetrieve("a");

    EXPECT_EQ(manager().get("A"), nullptr);
    EXPECT_NE(manager().createOrRetrieve("A"), script);
}

TEST_F(ScriptManagerTest, EmptyNameIsAName)
{
    Script* const script = manager().createOrRetrieve("");

    EXPECT_EQ(manager().get(StringView()), script);
    EXPECT_EQ(script->getName(), "");
    EXPECT_EQ(manager().getCount(), 1U);
}

TEST_F(ScriptManagerTest, NamesGoOnBehindANul)
{
    Script* const script = manager().createOrRetrieve(StringView("a\0b", 3));

    EXPECT_EQ(manager().get("a"), nullptr);
    EXPECT_EQ(manager().get(StringView("a\0c", 3)), nullptr);
    EXPECT_EQ(manager().get(StringView("a\0b", 3)), script);
    EXPECT_EQ(script->getName(), StringView("a\0b", 3));
}

TEST_F(ScriptManagerTest, NameNeedNotEndWithAZero)
{
    EXPECT_EQ(
        manager().createOrRetrieve(StringView("patrolling", 6)),
        manager().createOrRetrieve("patrol"));
}

TEST_F(ScriptManagerTest, IndicesReachEveryScriptOnce)
{
    std::set<Script*> made;
    for (int i = 0; i < 100; ++i)
        made.insert(manager().createOrRetrieve(std::to_string(i)));

    EXPECT_EQ(manager().getCount(), 100U);
    EXPECT_EQ(reachAll(manager()), made);
}

TEST_F(ScriptManagerTest, OrderStaysWhileNothingChanges)
{
    for (int i = 0; i < 20; ++i)
        manager().createOrRetrieve(std::to_string(i));
    Script* const seventh = manager().getByIndex(7);

    manager().createOrRetrieve("3");
    manager().get("4");

    EXPECT_EQ(manager().getByIndex(7), seventh);
}

TEST_F(ScriptManagerTest, IndexFromTheCountOnGivesNothing)
{
    manager().createOrRetrieve("a");

    EXPECT_NE(manager().getByIndex(0), nullptr);
    EXPECT_EQ(manager().getByIndex(1), nullptr);
    EXPECT_EQ(manager().getByIndex(std::numeric_limits<unsigned int>::max()), nullptr);
}

TEST_F(ScriptManagerTest, EmptyManagerHasNoFirstScript)
{
    EXPECT_EQ(manager().getCount(), 0U);
    EXPECT_EQ(manager().getByIndex(0), nullptr);
}

TEST_F(ScriptManagerTest, EraseDestroysTheScriptAndItsEntry)
{
    manager().createOrRetrieve("a");
    Script* const other = manager().createOrRetrieve("b");

    manager().erase("a"); // the leak checker sees whether it is destroyed

    EXPECT_EQ(manager().get("a"), nullptr);
    EXPECT_EQ(manager().getCount(), 1U);
    EXPECT_EQ(manager().getByIndex(0), other);
}

TEST_F(ScriptManagerTest, EraseOfAnUnknownNameChangesNothing)
{
    Script* const script = manager().createOrRetrieve("a");

    manager().erase("b");

    EXPECT_EQ(manager().get("a"), script);
    EXPECT_EQ(manager().getCount(), 1U);
}

TEST_F(ScriptManagerTest, EraseTakesTheNameOfTheScriptItselfWhichIsFreeThen)
{
    const std::string name(100, 'a');
    const Script* const script = makeLua(name, "x = 3");

    manager().erase(script->getName());

    EXPECT_EQ(manager().getCount(), 0U);
    EXPECT_EQ(manager().createOrRetrieve(name)->getSources(), "");
}

TEST_F(ScriptManagerTest, ScriptErasedWhileItRunsGoesOnAndReportsWithItsName)
{
    declareAction("erase", [] { manager().erase("a"); });
    Script* script = makeLua("a", "x = 1 erase() collectgarbage() x = 2");
    EXPECT_TRUE(environment().execute(*script));
    EXPECT_EQ(environment().getVar("x", -1), 2);
    EXPECT_EQ(manager().get("a"), nullptr);
    script = makeLua("a", "erase() error('late', 0)");

    EXPECT_FALSE(environment().execute(*script));

    expectLogged("Error while executing script 'a' : late", "LuaEnvironment");
}

TEST_F(ScriptManagerTest, ManagerKilledByARunningScriptLetsItGoOn)
{
    declareAction("quit", [] { killManager(); });
    Script* const script = makeLua("a", "quit() collectgarbage() x = 2");

    EXPECT_TRUE(environment().execute(*script));

    EXPECT_EQ(environment().getVar("x", -1), 2);
}

TEST_F(ScriptManagerTest, IsMadeOnFirstUse)
{
    EXPECT_EQ(ScriptManager::getInstanceIfExisting(), nullptr);

    ScriptManager* const made = ScriptManager::getInstance();

    EXPECT_EQ(ScriptManager::getInstanceIfExisting(), made);
}

TEST_F(ScriptManagerTest, ManagerAfterAKillIsEmpty)
{
    manager().createOrRetrieve("a");

    killManager();

    EXPECT_EQ(ScriptManager::getInstanceIfExisting(), nullptr);
    EXPECT_EQ(manager().getCount(), 0U);
}

TEST_F(ScriptManagerTest, CopySharesTheScriptsSoFarAndHasEntriesOfItsOwn)
{
    Script* const script = manager().createOrRetrieve("a");

    copy() = manager();
    manager().createOrRetrieve("later");

    EXPECT_EQ(copy().get("a"), script);
    EXPECT_EQ(copy().get("later"), nullptr);
    copy().erase("a");
    EXPECT_EQ(copy().get("a"), nullptr);
    EXPECT_EQ(manager().get("a"), script);
}

TEST_F(ScriptManagerTest, ScriptsLiveAsLongAsTheLastManagerThatHasThem)
{
    Script* const script = makeLua("a", "x = 3");
    copy() = manager();

    killManager();

    ASSERT_EQ(copy().get("a"), script);
    EXPECT_TRUE(environment().execute(*script));
}

TEST_F(ScriptManagerTest, SelfAssignmentChangesNothing)
{
    Script* const script = manager().createOrRetrieve("a");
    const ScriptManager& same = manager();

    manager() = same;

    EXPECT_EQ(manager().get("a"), script);
}

// Filing a script under another name.
class ScriptRenameTest : public LogFixture
{
protected:
    ScriptRenameTest()
        : m_manager(ScriptManager::getInstanceRef())
        , m_script(m_manager.createOrRetrieve("a"))
    {
        m_script->setTargetInterpreter(INTERPRETER_LUA);
        m_script->setSources("x = 3");
        m_script->load();
    }

    ~ScriptRenameTest() override
    {
        if (ScriptManager* const existing = ScriptManager::getInstanceIfExisting())
            existing->kill();
    }

    // Renames a script over another one, which gives it to the caller.
    std::unique_ptr<Script> collide()
    {
        m_other = m_manager.createOrRetrieve("b");
        m_manager.rename("a", "b");
        return std::unique_ptr<Script>(m_script);
    }

    ScriptManager& m_manager;
    Script* m_script;
    Script* m_other = nullptr;
};

TEST_F(ScriptRenameTest, FilesTheSameObjectUnderItsNewNameWithWhatIsCompiled)
{
    m_manager.rename("a", "b");

    EXPECT_EQ(m_manager.get("b"), m_script);
    EXPECT_EQ(m_manager.get("a"), nullptr);
    EXPECT_EQ(m_script->getName(), "b");
    EXPECT_EQ(m_manager.getCount(), 1U);
    EXPECT_EQ(m_manager.getByIndex(0), m_script);
    Environment environment;
    environment.setEnvironmentFor(INTERPRETER_LUA);
    EXPECT_TRUE(environment.execute(*m_script));
    EXPECT_NE(m_manager.createOrRetrieve("a"), m_script); // the old name is free
    EXPECT_EQ(m_manager.getCount(), 2U);
}

TEST_F(ScriptRenameTest, OfAnUnknownNameOrToTheSameNameChangesNothing)
{
    m_manager.rename("unknown", "b");
    m_manager.rename("unknown", "a");
    m_manager.rename("a", "a");

    EXPECT_EQ(m_manager.get("a"), m_script);
    EXPECT_EQ(m_manager.get("b"), nullptr);
    EXPECT_EQ(m_script->getName(), "a");
    EXPECT_EQ(m_manager.getCount(), 1U);
}

TEST_F(ScriptRenameTest, TakesViewsOfTheScriptsOwnNameOrAPartOfIt)
{
    const std::string longName = std::string(100, 'n') + "tail";
    m_manager.rename("a", longName);

    m_manager.rename(m_script->getName(), m_script->getName());
    EXPECT_EQ(m_manager.get(longName), m_script);
    EXPECT_EQ(m_script->getName(), StringView(longName));
    m_manager.rename(m_script->getName(), StringView(m_script->getName().data() + 100, 4));

    EXPECT_EQ(m_manager.get("tail"), m_script);
    EXPECT_EQ(m_script->getName(), "tail");
}

TEST_F(ScriptRenameTest, TakesAllBytesOfBothNames)
{
    m_manager.rename("a", StringView("a\0b", 3));
    EXPECT_EQ(m_manager.get(StringView("a\0b", 3)), m_script);

    m_manager.rename(StringView("a\0b", 3), "");

    EXPECT_EQ(m_manager.get(""), m_script);
    EXPECT_EQ(m_script->getName(), "");
}

TEST_F(ScriptRenameTest, OverAnotherScriptLeavesThatOneFiledAndGivesTheScriptToTheCaller)
{
    const std::unique_ptr<Script> script = collide(); // deletes it in the end

    EXPECT_EQ(m_manager.get("b"), m_other);
    EXPECT_EQ(m_manager.get("a"), nullptr);
    EXPECT_EQ(m_other->getName(), "b");
    EXPECT_EQ(m_manager.getCount(), 1U);
    EXPECT_EQ(m_manager.getByIndex(0), m_other);
    EXPECT_EQ(script->getName(), "b");
    EXPECT_EQ(script->getSources(), "x = 3");
    m_manager.rename("b", "c");
    EXPECT_EQ(m_manager.get("c"), m_other);
    EXPECT_EQ(script->getName(), "b");
    m_manager.kill();
    Environment environment;
    environment.setEnvironmentFor(INTERPRETER_LUA);
    EXPECT_TRUE(environment.execute(*script));
}

TEST_F(ScriptRenameTest, GoesByTheFiledNameNotByTheScriptsOwn)
{
    m_script->setName("other");

    m_manager.rename("other", "b");
    EXPECT_EQ(m_manager.get("a"), m_script);

    m_manager.rename("a", "b");
    EXPECT_EQ(m_manager.get("b"), m_script);
    EXPECT_EQ(m_script->getName(), "b");
}

} // namespace tbScripts::test

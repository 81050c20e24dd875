// Filing a script under another name.

#include "support/LogFixture.h"

#include <tbScripts/Environment.h>
#include <tbScripts/Script.h>
#include <tbScripts/ScriptManager.h>

#include <memory>
#include <string>

namespace tbScripts::test
{

using tbMemory::StringView;

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

TEST_F(ScriptRenameTest, FilesTheSameObjectUnderItsNewName)
{
    m_manager.rename("a", "b");

    EXPECT_EQ(m_manager.get("b"), m_script);
    EXPECT_EQ(m_manager.get("a"), nullptr);
    EXPECT_EQ(m_script->getName(), "b");
    EXPECT_EQ(m_manager.getCount(), 1U);
    EXPECT_EQ(m_manager.getByIndex(0), m_script);
}

TEST_F(ScriptRenameTest, KeepsWhatIsCompiled)
{
    m_manager.rename("a", "b");

    Environment environment;
    environment.setEnvironmentFor(INTERPRETER_LUA);
    EXPECT_TRUE(environment.execute(*m_script));
}

TEST_F(ScriptRenameTest, OldNameIsFree)
{
    m_manager.rename("a", "b");

    EXPECT_NE(m_manager.createOrRetrieve("a"), m_script);
    EXPECT_EQ(m_manager.getCount(), 2U);
}

TEST_F(ScriptRenameTest, OfAnUnknownNameChangesNothing)
{
    m_manager.rename("unknown", "b");

    EXPECT_EQ(m_manager.get("a"), m_script);
    EXPECT_EQ(m_manager.get("b"), nullptr);
    EXPECT_EQ(m_script->getName(), "a");
    EXPECT_EQ(m_manager.getCount(), 1U);
}

TEST_F(ScriptRenameTest, OfAnUnknownNameToAFiledOneChangesNothing)
{
    m_manager.rename("unknown", "a");

    EXPECT_EQ(m_manager.get("a"), m_script);
    EXPECT_EQ(m_manager.getCount(), 1U);
}

TEST_F(ScriptRenameTest, ToTheSameNameKeepsTheScriptFiled)
{
    m_manager.rename("a", "a");

    EXPECT_EQ(m_manager.get("a"), m_script);
    EXPECT_EQ(m_script->getName(), "a");
    EXPECT_EQ(m_manager.getCount(), 1U);
}

TEST_F(ScriptRenameTest, TakesViewsOfTheScriptsOwnName)
{
    const std::string longName(100, 'n');
    m_manager.rename("a", longName);

    m_manager.rename(m_script->getName(), m_script->getName());

    EXPECT_EQ(m_manager.get(longName), m_script);
    EXPECT_EQ(m_script->getName(), StringView(longName));
}

TEST_F(ScriptRenameTest, TakesAPartOfTheScriptsOwnName)
{
    m_manager.rename("a", std::string(100, 'n') + "tail");

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

TEST_F(ScriptRenameTest, OverAnotherScriptLeavesThatOneFiled)
{
    const std::unique_ptr<Script> script = collide();

    EXPECT_EQ(m_manager.get("b"), m_other);
    EXPECT_EQ(m_manager.get("a"), nullptr);
    EXPECT_EQ(m_other->getName(), "b");
    EXPECT_EQ(m_manager.getCount(), 1U);
    EXPECT_EQ(m_manager.getByIndex(0), m_other);
}

TEST_F(ScriptRenameTest, OverAnotherScriptGivesTheScriptTheNameAllTheSame)
{
    const std::unique_ptr<Script> script = collide();

    EXPECT_EQ(script->getName(), "b");
    EXPECT_EQ(script->getSources(), "x = 3");
}

TEST_F(ScriptRenameTest, OverAnotherScriptGivesTheScriptToTheCaller)
{
    const std::unique_ptr<Script> script = collide(); // deletes it in the end

    m_manager.kill();

    Environment environment;
    environment.setEnvironmentFor(INTERPRETER_LUA);
    EXPECT_TRUE(environment.execute(*script));
}

TEST_F(ScriptRenameTest, ScriptThatLostItsPlaceIsNotRenamedAgain)
{
    const std::unique_ptr<Script> script = collide();

    m_manager.rename("b", "c");

    EXPECT_EQ(m_manager.get("c"), m_other);
    EXPECT_EQ(script->getName(), "b");
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

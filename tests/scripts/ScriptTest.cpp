// Scripts: their names, sources and interpreters. How they compile is tested beside this.

#include "support/ScriptFixture.h"

#include <tbExport/Exportable.h>

#include <string>
#include <type_traits>
#include <vector>

namespace tbScripts::test
{

using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace
{

const LogEntry SCRIPT_WAS_DISABLED = {
    "Script type requested unknown. This will disable the Script.", "Script"};

} // namespace

class ScriptTest : public ScriptFixture
{
};

TEST_F(ScriptTest, NewOneHasNoNameSourcesOrInterpreter)
{
    const Script script;

    EXPECT_EQ(script.getName(), "");
    EXPECT_EQ(script.getSources(), "");
    EXPECT_EQ(script.getTargetInterpreter(), 0U);
}

TEST_F(ScriptTest, NewOneReportsSuccess)
{
    const Script script;

    EXPECT_TRUE(script.getLastCompilationResult().success);
    EXPECT_EQ(script.getLastCompilationResult().errorCode, 0U);
    EXPECT_EQ(script.getLastCompilationResult().message, "");
}

TEST_F(ScriptTest, FreshResultIsASuccess)
{
    const CompilationResult result;

    EXPECT_TRUE(result.success);
    EXPECT_EQ(result.errorCode, 0U);
    EXPECT_EQ(result.message, "");
}

TEST_F(ScriptTest, IsExportable)
{
    EXPECT_TRUE((std::is_base_of_v<tbExport::Exportable, Script>));
    EXPECT_TRUE(std::has_virtual_destructor_v<Script>);
}

TEST_F(ScriptTest, LoadWithoutInterpreterFailsWithoutALogEntry)
{
    Script script;

    EXPECT_FALSE(script.load());

    EXPECT_FALSE(script.getLastCompilationResult().success);
    EXPECT_EQ(script.getLastCompilationResult().errorCode, 2U);
    EXPECT_EQ(
        script.getLastCompilationResult().message,
        "Can't load if the InterpreterType has not been set.");
}

TEST_F(ScriptTest, LoadWithoutInterpreterFailsTheSameWayAgain)
{
    Script script;
    script.load();

    EXPECT_FALSE(script.load());

    EXPECT_EQ(script.getLastCompilationResult().errorCode, 2U);
    EXPECT_EQ(
        script.getLastCompilationResult().message,
        "Can't load if the InterpreterType has not been set.");
}

TEST_F(ScriptTest, UnloadWithoutInterpreterChangesNothing)
{
    Script script;
    script.load();

    script.unload();

    EXPECT_EQ(script.getLastCompilationResult().errorCode, 2U);
}

TEST_F(ScriptTest, KeepsAllBytesOfItsName)
{
    const std::vector<char> unterminated = {'a', '\0', 'b'};

    m_script.setName(tbMemory::StringView(unterminated.data(), unterminated.size()));

    EXPECT_EQ(m_script.getName(), tbMemory::StringView("a\0b", 3));
}

TEST_F(ScriptTest, NullNameIsTheEmptyName)
{
    m_script.setName(tbMemory::StringView());

    EXPECT_EQ(m_script.getName(), "");
    EXPECT_FALSE(m_script.getName().isNull());
}

TEST_F(ScriptTest, NameMayBeAPartOfTheOldName)
{
    m_script.setName("scripts/a name that does not fit into the object itself");

    m_script.setName(tbMemory::StringView(m_script.getName().data() + 8, 6));

    EXPECT_EQ(m_script.getName(), "a name");
}

TEST_F(ScriptTest, KeepsAllBytesOfItsSources)
{
    const std::vector<char> unterminated = {'x', '=', '1', '\0', '\xff'};

    m_script.setSources(tbMemory::StringView(unterminated.data(), unterminated.size()));

    EXPECT_EQ(m_script.getSources(), tbMemory::StringView("x=1\0\xff", 5));
}

TEST_F(ScriptTest, SettingSourcesCompilesNothing)
{
    m_script.setSources("x = = 1");

    EXPECT_TRUE(m_script.getLastCompilationResult().success);
    EXPECT_FALSE(hasBytecode(m_script));
}

TEST_F(ScriptTest, SettingSourcesKeepsTheCompiledForm)
{
    load("x = 1");

    m_script.setSources("x = 2");

    EXPECT_EQ(run(m_script), 1);
}

TEST_F(ScriptTest, SettingLuaIsStoredWithoutALogEntry)
{
    Script script;

    script.setTargetInterpreter(INTERPRETER_LUA);

    EXPECT_EQ(script.getTargetInterpreter(), 1U);
    EXPECT_TRUE(script.getLastCompilationResult().success);
}

TEST_F(ScriptTest, SettingLuaAgainDropsTheCompiledForm)
{
    load("x = 1");

    m_script.setTargetInterpreter(INTERPRETER_LUA);

    EXPECT_FALSE(hasBytecode(m_script));
    EXPECT_EQ(m_script.getSources(), "x = 1");
}

TEST_F(ScriptTest, SettingLuaAgainResetsTheResult)
{
    loadExpectingError("x = = 1");

    m_script.setTargetInterpreter(INTERPRETER_LUA);

    EXPECT_TRUE(m_script.getLastCompilationResult().success);
    EXPECT_EQ(m_script.getLastCompilationResult().errorCode, 0U);
    EXPECT_EQ(m_script.getLastCompilationResult().message, "");
}

TEST_F(ScriptTest, SettingNoInterpreterOnANewOneIsLogged)
{
    Script script;

    script.setTargetInterpreter(INTERPRETER_UNKNOWN);

    EXPECT_THAT(m_log.takeEntries(), ElementsAre(SCRIPT_WAS_DISABLED));
    EXPECT_EQ(script.getTargetInterpreter(), 0U);
}

TEST_F(ScriptTest, DisabledOneCanBeEnabledAgain)
{
    m_script.setTargetInterpreter(INTERPRETER_UNKNOWN);
    m_log.takeEntries();

    m_script.setTargetInterpreter(INTERPRETER_LUA);

    EXPECT_TRUE(load("x = 3"));
    EXPECT_EQ(run(m_script), 3);
}

class ScriptUnknownInterpreterTest : public ScriptFixture,
                                     public ::testing::WithParamInterface<unsigned>
{
protected:
    void disable()
    {
        m_script.setTargetInterpreter(static_cast<INTERPRETER>(GetParam()));
        EXPECT_THAT(m_log.takeEntries(), ElementsAre(SCRIPT_WAS_DISABLED));
    }
};

INSTANTIATE_TEST_SUITE_P(
    Numbers,
    ScriptUnknownInterpreterTest,
    ::testing::Values(0U, 2U, 255U, 4294967295U),
    ::testing::PrintToStringParamName());

TEST_P(ScriptUnknownInterpreterTest, KeepsTheStoredInterpreter)
{
    disable();

    EXPECT_EQ(m_script.getTargetInterpreter(), 1U);
}

TEST_P(ScriptUnknownInterpreterTest, DropsTheCompiledForm)
{
    load("x = 1");

    disable();

    EXPECT_FALSE(hasBytecode(m_script));
}

TEST_P(ScriptUnknownInterpreterTest, ResetsTheResult)
{
    loadExpectingError("x = = 1");

    disable();

    EXPECT_TRUE(m_script.getLastCompilationResult().success);
    EXPECT_EQ(m_script.getLastCompilationResult().message, "");
}

TEST_P(ScriptUnknownInterpreterTest, MakesLoadFail)
{
    disable();

    EXPECT_FALSE(load("x = 1"));

    EXPECT_EQ(m_script.getLastCompilationResult().errorCode, 2U);
    EXPECT_EQ(
        m_script.getLastCompilationResult().message,
        "Can't load if the InterpreterType has not been set.");
}

} // namespace tbScripts::test

// Scripts write themselves into a tree and read themselves back.

#include "support/RowName.h"
#include "support/ScriptFixture.h"

#include <tbExport/Node.h>

#include <string>

namespace tbScripts::test
{

namespace
{

using tbExport::Node;
using tbMemory::StringView;

const LogEntry SCRIPT_WAS_DISABLED = {
    "Script type requested unknown. This will disable the Script.", "Script"};

Node makeObject()
{
    Node node;
    node.setObject();
    return node;
}

// A declaration with the member "type" and nothing else.
Node declareType(StringView type)
{
    Node node = makeObject();
    node.addMember("type")->setString(type);
    return node;
}

Node declareSources(StringView sources)
{
    Node node = makeObject();
    node.addMember("sources")->setString(sources);
    return node;
}

using ScriptDeclarationTest = ScriptFixture;

TEST_F(ScriptDeclarationTest, ExportOfANewScriptHasEmptyTextsAndNoInterpreter)
{
    Script script;
    Node node = makeObject();

    script.exportClassToTree(&node);

    ASSERT_EQ(node.getSize(), 3U);
    EXPECT_TRUE(node.getMember("name")->isString());
    EXPECT_EQ(node.getMember("name")->getString(), "");
    EXPECT_EQ(node.getMember("type")->getString(), "UNKNOWN");
    EXPECT_TRUE(node.getMember("sources")->isString());
    EXPECT_EQ(node.getMember("sources")->getString(), "");
}

TEST_F(ScriptDeclarationTest, ExportWritesNameTypeAndSourcesInThisOrder)
{
    m_script.setSources("x = 1");
    Node node = makeObject();

    m_script.exportClassToTree(&node);

    EXPECT_EQ(node.getMemberName(0), "name");
    EXPECT_EQ(node.getMemberName(1), "type");
    EXPECT_EQ(node.getMemberName(2), "sources");
    EXPECT_EQ(node.getMember("name")->getString(), "x");
    EXPECT_EQ(node.getMember("type")->getString(), "lua");
    EXPECT_EQ(node.getMember("sources")->getString(), "x = 1");
}

TEST_F(ScriptDeclarationTest, ExportOfADisabledScriptWritesTheStoredInterpreter)
{
    m_script.setTargetInterpreter(INTERPRETER_UNKNOWN);
    m_log.takeEntries();
    Node node = makeObject();

    m_script.exportClassToTree(&node);

    EXPECT_EQ(node.getMember("type")->getString(), "lua");
}

TEST_F(ScriptDeclarationTest, ExportWritesAllBytes)
{
    m_script.setName(StringView("a\0b", 3));
    m_script.setSources(StringView("x = '\0\xff'\r\n", 10));
    Node node = makeObject();

    m_script.exportClassToTree(&node);

    EXPECT_EQ(node.getMember("name")->getString(), StringView("a\0b", 3));
    EXPECT_EQ(node.getMember("sources")->getString(), StringView("x = '\0\xff'\r\n", 10));
}

TEST_F(ScriptDeclarationTest, ExportLeavesOtherMembers)
{
    Node node = makeObject();
    node.addMember("author")->setString("somebody");

    m_script.exportClassToTree(&node);

    EXPECT_EQ(node.getSize(), 4U);
    EXPECT_EQ(node.getMember("author")->getString(), "somebody");
}

TEST_F(ScriptDeclarationTest, ExportAndImportWithoutAnObjectDoNothing)
{
    load("x = 1");
    Node array;
    array.setArray();
    Node string;
    string.setString("sources");
    Node empty = makeObject();

    m_script.exportClassToTree(&array);
    m_script.exportClassToTree(nullptr);
    for (Node* node : {&array, &string, &empty, static_cast<Node*>(nullptr)})
        m_script.importClassFromTree(node);

    EXPECT_TRUE(array.isArray());
    EXPECT_EQ(array.getSize(), 0U);
    EXPECT_EQ(m_script.getSources(), "x = 1");
    EXPECT_EQ(m_script.getTargetInterpreter(), 1U);
    EXPECT_EQ(run(m_script), 1);
}

TEST_F(ScriptDeclarationTest, ImportTakesInterpreterAndSources)
{
    Script script;
    Node node = declareType("lua");
    node.addMember("sources")->setString("x = 8");

    script.importClassFromTree(&node);

    EXPECT_EQ(script.getTargetInterpreter(), 1U);
    EXPECT_EQ(script.getSources(), "x = 8");
    EXPECT_TRUE(script.load());
    EXPECT_EQ(run(script), 8);
}

TEST_F(ScriptDeclarationTest, ImportTakesAllBytesOfTheSourcesAndEmptyOnesToo)
{
    for (const StringView& sources : {StringView("x = '\0\xff'\r\n", 10), StringView("")})
    {
        Node node = declareSources(sources);

        m_script.importClassFromTree(&node);

        EXPECT_EQ(m_script.getSources(), sources);
    }
}

TEST_F(ScriptDeclarationTest, ImportNeverChangesTheNameAndNeverCompiles)
{
    Node node = declareType("lua");
    node.addMember("name")->setString("declared");
    node.addMember("sources")->setString("x = = 1");

    m_script.importClassFromTree(&node);

    EXPECT_EQ(m_script.getName(), "x");
    EXPECT_TRUE(m_script.getLastCompilationResult().success);
    EXPECT_FALSE(hasBytecode(m_script));
}

TEST_F(ScriptDeclarationTest, ImportOfSourcesAloneKeepsTheCompiledForm)
{
    load("x = 1");
    Node node = declareSources("x = 2");

    m_script.importClassFromTree(&node);

    EXPECT_EQ(m_script.getTargetInterpreter(), 1U);
    EXPECT_EQ(run(m_script), 1);
}

TEST_F(ScriptDeclarationTest, ImportOfTheSameTypeDropsTheCompiledForm)
{
    load("x = 1");
    Node node = declareType("lua");

    m_script.importClassFromTree(&node);

    EXPECT_FALSE(hasBytecode(m_script));
}

TEST_F(ScriptDeclarationTest, ImportUndoesExportButForTheName)
{
    m_script.setSources("x = 9");
    Node node = makeObject();
    m_script.exportClassToTree(&node);
    Script script;

    script.importClassFromTree(&node);

    EXPECT_EQ(script.getName(), "");
    EXPECT_EQ(script.getTargetInterpreter(), 1U);
    EXPECT_EQ(script.getSources(), "x = 9");
}

struct UnknownType
{
    const char* row;
    const char* text;
};

using ScriptDeclarationUnknownTypeTest = OnRows<ScriptFixture, UnknownType>;

ROWS(
    ScriptDeclarationUnknownTypeTest,
    {"CapitalLetter", "Lua"},
    {"CapitalLetters", "LUA"},
    {"Empty", ""},
    {"Unknown", "UNKNOWN"},
    {"BlankBehind", "lua "},
    {"Number", "1"});

TEST_P(ScriptDeclarationUnknownTypeTest, DisablesTheScriptIsLoggedAndLeavesTheSourcesToBeTaken)
{
    Node node = declareType(GetParam().text);
    node.addMember("sources")->setString("x = 1");

    m_script.importClassFromTree(&node);

    expectLogged({SCRIPT_WAS_DISABLED});
    EXPECT_EQ(m_script.getSources(), "x = 1");
    EXPECT_FALSE(m_script.load());
    EXPECT_EQ(m_script.getLastCompilationResult().errorCode, 2U);
}

struct NoText
{
    const char* row;
    void (*set)(Node& node);
};

using ScriptDeclarationNoTextTest = OnRows<ScriptFixture, NoText>;

ROWS(
    ScriptDeclarationNoTextTest,
    {"Null", [](Node& node) { node.setNull(); }},
    {"Bool", [](Node& node) { node.setBool(true); }},
    {"Number", [](Node& node) { node.setNumber(1); }},
    {"Array", [](Node& node) { node.setArray(); }},
    {"Object", [](Node& node) { node.setObject(); }});

TEST_P(ScriptDeclarationNoTextTest, IsIgnoredAsTypeAndSources)
{
    load("x = 1");
    Node node = makeObject();
    GetParam().set(*node.addMember("type"));
    GetParam().set(*node.addMember("sources"));

    m_script.importClassFromTree(&node);

    EXPECT_EQ(m_script.getTargetInterpreter(), 1U);
    EXPECT_EQ(m_script.getSources(), "x = 1");
    EXPECT_EQ(run(m_script), 1);
}

} // namespace

} // namespace tbScripts::test
